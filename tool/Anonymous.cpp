// Leaves out of a text what tells of people and their machines. Tested by tests/tool/ReportTest.cpp.

#include "Anonymous.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <string_view>
#include <utility>

namespace ScrivelTool
{

namespace
{

constexpr std::string_view separators = "/\\";

/// A byte beyond ASCII is of one.
bool IsLetter(char c)
{
    return std::isalpha(static_cast<unsigned char>(c)) != 0 || static_cast<unsigned char>(c) >= 0x80;
}

bool HasLetter(std::string_view text)
{
    return std::any_of(text.begin(), text.end(), IsLetter);
}

bool BeginsWith(std::string_view text, std::string_view with)
{
    return text.substr(0, with.size()) == with;
}

bool IsOfWord(char c)
{
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_';
}

/// Whole words only: a host may bear the name of anything.
void Replace(std::string& text, const std::string& what, std::string_view by)
{
    if (what.empty())
        return;
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at)) {
        const std::size_t end = at + what.size();
        const bool isWord =
            (at == 0 || !IsOfWord(text[at - 1])) && (end == text.size() || !IsOfWord(text[end]));
        if (isWord)
            text.replace(at, what.size(), by);
        at += isWord ? by.size() : 1;
    }
}

bool IsOfPath(char c)
{
    return IsOfWord(c) || IsLetter(c) ||
           std::string_view("/\\._-+~@%#$^!").find(c) != std::string_view::npos;
}

/// How long the run of a path's characters is that begins there; an ampersand is one as XML has it.
std::size_t RunAt(std::string_view text, std::size_t at)
{
    constexpr std::string_view ampersand = "&amp;";
    std::size_t end = at;
    while (end < text.size()) {
        if (IsOfPath(text[end]))
            ++end;
        else if (end != at && BeginsWith(text.substr(end), ampersand))
            end += ampersand.size();
        else
            break;
    }
    return end - at;
}

/// Without the dots that end a sentence, or tell that more was left out.
std::string_view WithoutDots(std::string_view word)
{
    const std::size_t last = word.find_last_not_of('.');
    return word.substr(0, last == std::string_view::npos ? 0 : last + 1);
}

bool HasRoot(std::string_view word)
{
    if (BeginsWith(word, "/") || BeginsWith(word, "\\\\"))
        return HasLetter(word);
    for (const std::string_view root : {"./", "../", ".\\", "..\\"})
        if (BeginsWith(word, root))
            return true;
    return BeginsWith(word, "~") && word.find_first_of(separators) != std::string_view::npos;
}

/// model.so, but not 2.5
bool HasEnding(std::string_view name)
{
    const std::size_t dot = name.rfind('.');
    return dot != std::string_view::npos && dot != 0 && HasLetter(name.substr(dot + 1));
}

/// models/secret, which has no root.
bool IsRelative(std::string_view word)
{
    const std::size_t last = word.find_last_of(separators);
    if (last == std::string_view::npos || !HasLetter(word))
        return false;
    return std::count(word.begin(), word.end(), '/') >= 2 || HasEnding(word.substr(last + 1));
}

/// Reads a text word by word and writes it without its paths.
class Hiding
{
public:
    Hiding(std::string_view itsText, std::string_view itsFolder) : text(itsText), folder(itsFolder) {}

    std::string Hidden()
    {
        while (at < text.size()) {
            if (const std::size_t run = RunAt(text, at); run == 0)
                kept += text[at++];
            else
                TakeWord(text.substr(at, run));
        }
        return std::move(kept);
    }

private:
    void TakeWord(std::string_view word)
    {
        const std::size_t end = at + word.size();
        const std::string_view rest = text.substr(end);
        const std::string_view bare = WithoutDots(word);
        const std::size_t option = OptionBefore(word);
        if (BeginsWith(rest, "://") && word.size() > 1 && word.find('/') == std::string_view::npos) {
            TakeAddress(word);
        } else if (IsDrive(word, option) && (BeginsWith(rest, ":\\") || BeginsWith(rest, ":/"))) {
            Keep(word.size() - 1);
            Leave(RootedEnd(end + 1 + RunAt(text, end + 1)));
        } else if (IsTag(word)) {
            Keep(word.size());
        } else if (HasRoot(word.substr(option))) {
            Keep(option);
            Leave(RootedEnd(end));
        } else if (IsRelative(bare) || (!folder.empty() && BeginsWith(word, folder))) {
            Leave(at + bare.size());
        } else {
            Keep(word.size());
        }
    }

    /// How long an option or a sign is that a path may follow without a blank: -L/home, @/home
    static std::size_t OptionBefore(std::string_view word)
    {
        if (std::string_view("@%#$^!+").find(word[0]) != std::string_view::npos)
            return 1;
        std::size_t end = 1;
        while (end < word.size() && IsLetter(word[end]))
            ++end;
        return word[0] == '-' && end > 1 ? end : 0;
    }

    /// C of C:\ and -IC:\ too
    static bool IsDrive(std::string_view word, std::size_t option)
    {
        return IsLetter(word.back()) && (word.size() == 1 || option == word.size());
    }

    /// </file
    bool IsTag(std::string_view word) const
    {
        return at != 0 && text[at - 1] == '<' &&
               word.find_first_of(separators, 1) == std::string_view::npos;
    }

    /// Of the web, or of a file.
    void TakeAddress(std::string_view scheme)
    {
        const std::size_t end = std::min(text.find_first_of(" \t\n\"'<>", at), text.size());
        if (scheme == "file")
            Leave(RootedEnd(end));
        else
            Keep(end - at);
    }

    /// Where a path ends whose first word ends there.
    std::size_t RootedEnd(std::size_t end) const
    {
        for (const std::string_view quote : {"\"", "'", "`", "&quot;", "&apos;"}) {
            const bool isQuoted = kept.size() >= quote.size() &&
                                  kept.compare(kept.size() - quote.size(), quote.size(), quote) == 0;
            const std::size_t closing = text.find(quote, end);
            if (isQuoted && closing < std::min(text.find_first_of("\n<", end), text.size()))
                return closing;
        }
        return WithNextWords(end);
    }

    /// A blank is of the path when the next word has a slash; of one with backslashes, when a later one
    /// has one: C:\Program Files (x86)\x
    std::size_t WithNextWords(std::size_t end) const
    {
        const bool hasBackslash = text.substr(at, end - at).find('\\') != std::string_view::npos;
        for (std::size_t from = end; from < text.size() && text[from] == ' ';) {
            const std::size_t next =
                std::min(text.find_first_of(" \t\n\"'`<>,;:|&=", from + 1), text.size());
            const std::string_view word = text.substr(from + 1, next - from - 1);
            const bool isDrive = BeginsWith(text.substr(next), ":");
            const std::size_t separator = word.find_first_of(hasBackslash ? "\\" : separators);
            const bool goesOn = separator != std::string_view::npos && separator != 0 && HasLetter(word);
            if (isDrive || HasRoot(word) || BeginsWith(word, "-") || (!goesOn && !hasBackslash))
                break;
            from = next;
            end = goesOn ? next : end;
        }
        return at + WithoutDots(text.substr(at, end - at)).size();
    }

    void Keep(std::size_t count)
    {
        kept += text.substr(at, count);
        at += count;
    }

    void Leave(std::size_t end)
    {
        kept += "path";
        at = end;
    }

    const std::string_view text;
    const std::string_view folder;
    std::size_t at = 0;
    std::string kept;
};

}  // namespace

Anonymous::Anonymous(std::string itsHost, std::string itsLog)
    : host(std::move(itsHost)), log(std::move(itsLog)), folder(log.substr(0, log.rfind('/') + 1))
{
    if (!HasLetter(folder))
        folder.clear();
}

std::string Anonymous::operator()(std::string text) const
{
    if (const std::string name = log.substr(log.rfind('/') + 1); name != log)
        Replace(text, log, name);
    Replace(text, host, "host");
    return Hiding(text, folder).Hidden();
}

}  // namespace ScrivelTool
