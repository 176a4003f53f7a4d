// Joins the elements of a log into calls, and takes up again after damage. Tested by
// tests/reader/LogReaderTest.cpp and tests/reader/DamageTest.cpp.

#include "scrivel/LogReader.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <map>
#include <unordered_map>
#include <utility>
#include <vector>

#include "format/LogWords.h"
#include "scrivel/XmlParser.h"

namespace ScrivelReader
{

namespace
{

namespace Words = Scrivel2::LogWords;

// After an error the bytes that the parser has already got are parsed again: not too many of them.
constexpr std::size_t pieceSize = 16 * 1024;
// What is kept of the element that is being read, to look for the next call in it when it is damaged.
constexpr std::size_t mostHeld = 1024 * 1024;
constexpr std::size_t longestBegin = 4 * 1024;  // of a line that begins a call
constexpr std::size_t mostParts = 4096;
constexpr std::size_t longestStatus = 256;
constexpr std::size_t mostOthers = 256;  // lines without a number in front of a call
constexpr std::size_t mostThreads = 64 * 1024;
constexpr std::size_t mostAncestors = 64;  // of one call; where no call returns they would be all
constexpr std::size_t mostAttempts = 64;   // to read on from a call, when all end at the same damage
constexpr std::size_t longestIndent = 64;

std::optional<std::uint64_t> ParseNumber(std::string_view text)
{
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (text.empty() || error != std::errc() || end != text.data() + text.size())
        return {};
    return number;
}

bool StartsWith(std::string_view text, std::string_view begin)
{
    return text.substr(0, begin.size()) == begin;
}

bool EndsWith(std::string_view text, std::string_view end)
{
    return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

std::string_view Trimmed(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(" \t\r\n");
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

bool IsStatus(std::string_view text)
{
    return StartsWith(text, Words::statusBegin) || StartsWith(text, Words::invalidReturnType);
}

bool IsMark(std::string_view comment)
{
    return StartsWith(comment, Words::continuingBegin) ||
           (StartsWith(comment, Words::interruptedBegin) && EndsWith(comment, Words::interruptedEnd));
}

/// Whether XML allows a name; characters beyond ASCII are not judged.
bool IsName(std::string_view name)
{
    return !name.empty() && std::string_view("-.0123456789").find(name[0]) == std::string_view::npos &&
           std::all_of(name.begin(), name.end(), [](unsigned char c) {
               return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                      c == '_' || c == '-' || c == '.' || c == ':' || c >= 0x80;
           });
}

/// The name in the last tag of the text, unless XML allows it or no one would take it for a name.
std::string_view IllegalName(std::string_view text)
{
    constexpr std::size_t longest = 128;
    const std::size_t tag = text.rfind('<');
    if (tag == std::string_view::npos) {
        return {};
    }
    std::string_view name = text.substr(tag + 1);
    name = name.substr(0, name.find_first_of(" \t\r\n>"));
    if (!name.empty() && name.back() == '/') {
        name.remove_suffix(1);
    }
    const bool isText = std::all_of(name.begin(), name.end(), [](char c) { return c > ' ' && c < 0x7f; });
    if (name.empty() || name.size() > longest || !isText || IsName(name) ||
        std::string_view("!?/").find(name[0]) != std::string_view::npos) {
        return {};
    }
    return name;
}

std::uint64_t Lines(std::string_view text)
{
    return std::uint64_t(std::count(text.begin(), text.end(), '\n'));
}

/// How often each number was given to a call. Numbers mostly rise by one, so they are kept as ranges.
class SeenNumbers
{
public:
    std::uint32_t Times(std::uint64_t number) const
    {
        const auto repeated = again.find(number);
        if (repeated != again.end())
            return repeated->second;
        const auto after = ranges.upper_bound(number);
        return after != ranges.begin() && std::prev(after)->second >= number ? 1 : 0;
    }

    void Add(std::uint64_t number)
    {
        if (const std::uint32_t times = Times(number); times != 0) {
            if (again.size() < mostKept)
                again[number] = times + 1;
            return;
        }
        auto after = ranges.upper_bound(number);
        if (after != ranges.begin() && std::prev(after)->second + 1 == number) {
            const auto range = std::prev(after);
            range->second = number;
            if (after != ranges.end() && after->first == number + 1) {
                range->second = after->second;
                ranges.erase(after);
            }
        } else if (after != ranges.end() && after->first == number + 1) {
            const std::uint64_t last = after->second;
            ranges.erase(after);
            ranges.emplace(number, last);
        } else if (ranges.size() < mostKept) {
            ranges.emplace(number, number);
        }
    }

private:
    static constexpr std::size_t mostKept = 64 * 1024;

    std::map<std::uint64_t, std::uint64_t> ranges;  // first -> last
    std::unordered_map<std::uint64_t, std::uint32_t> again;
};

}  // namespace

class [[gnu::visibility("hidden")]] LogReader::Impl final : private XmlEvents
{
public:
    Impl(LogHandler & itsHandler, const ReadOptions& itsOptions)
        : handler(itsHandler), options(itsOptions), received(itsOptions.offset),
          heldFrom(itsOptions.offset), heldLine(itsOptions.line)
    {
        if (options.startWithin) {
            state = State::Searching;
            resumed = true;
        } else {
            BeginParser(options.offset, options.line);
        }
    }

    void Feed(std::string_view bytes)
    {
        while (!bytes.empty()) {
            const std::string_view piece = bytes.substr(0, pieceSize);
            received += piece.size();
            end.empty = end.empty && Trimmed(piece).empty();
            TakeIn(piece);
            bytes.remove_prefix(piece.size());
        }
    }

    LogEnd Finish(std::string_view cutOff)
    {
        while (state == State::Parsing) {
            if (parser->Finish())
                break;
            current = {};
            currentFrom = received;
            Hold({});
            FoundDamage(cutOff.empty() ? std::string_view(parser->Error()) : cutOff,
                        base + parser->ErrorPosition(), parser->ErrorLine());
            if (state == State::Over)
                break;
            Search(true);
            if (state == State::Parsing)
                ParseHeld();
        }
        if (!cutOff.empty())
            FoundCut(cutOff);
        CloseDamage(received);
        end.whole = judge == nullptr ? !damaged : judge->Finish();
        end.whole = end.whole && cutOff.empty();
        end.size = received;
        for (const auto& left : std::exchange(open, {}))
            handler.Ended(*left);
        return end;
    }

private:
    // Parsing     a parser has the bytes; Held() are those that it may have to be given again
    //   -> Searching   the document isn't well-formed here (FoundDamage)
    //   -> Over        what follows the root element is none of its business
    // Searching   for the next line that begins a call, in Held()
    //   -> Parsing     found: a new parser gets it, after a root element of our own (BeginParser)
    enum class State
    {
        Parsing,
        Searching,
        Over
    };

    // ---- Bytes ------------------------------------------------------------------------------------

    void TakeIn(std::string_view piece)
    {
        if (judge != nullptr)
            judge->Feed(piece.data(), piece.size());
        switch (state) {
        case State::Parsing:
            current = piece;
            currentFrom = received - piece.size();
            parser->Feed(piece.data(), piece.size());
            Hold(piece);
            current = {};
            AfterParsing();
            break;
        case State::Searching:
            held.append(piece);
            Search(false);
            if (state == State::Parsing)
                ParseHeld();
            break;
        case State::Over:
            // Where the log is cut off is told by its line.
            Forget(held.size());
            heldLine += Lines(piece);
            heldFrom += piece.size();
            break;
        }
    }

    /// Gives a new parser what is held. As long as it finds damage, another one begins further on.
    void ParseHeld()
    {
        while (state == State::Parsing) {
            const std::string again = std::exchange(held, {});
            current = again;
            currentFrom = heldFrom;
            parser->Feed(again.data(), again.size());
            Hold(again);
            current = {};
            if (!Stopped())
                return;
            AfterParsing(false);
        }
    }

    bool Stopped() const
    {
        return broken || !parser->Error().empty();
    }

    void AfterParsing(bool thenParse = true)
    {
        if (!Stopped())
            return;
        if (broken) {
            FoundDamage(depth == 0 ? "the start tag of the root element is missing"
                                   : "a call begins within another call's element",
                        brokenAt, brokenLine);
        } else {
            FoundDamage(parser->Error(), base + parser->ErrorPosition(), parser->ErrorLine());
        }
        if (state == State::Over)
            return;
        Search(false);
        if (thenParse && state == State::Parsing)
            ParseHeld();
    }

    /// Keeps of the bytes that the parser got now what may have to be parsed again.
    void Hold(std::string_view piece)
    {
        const std::uint64_t pieceFrom = currentFrom;
        if (restart >= pieceFrom) {
            const auto skip = std::min(std::size_t(restart - pieceFrom), piece.size());
            held.assign(piece.substr(skip));
            heldFrom = pieceFrom + skip;
            heldLine = restartLine;
        } else {
            if (restart > heldFrom) {
                held.erase(0, std::min(held.size(), std::size_t(restart - heldFrom)));
                heldFrom = restart;
                heldLine = restartLine;
            }
            held.append(piece);
            if (held.size() > mostHeld)
                Forget(held.size() - mostHeld / 2);
        }
    }

    void Forget(std::size_t size)
    {
        heldLine += Lines(std::string_view(held).substr(0, size));
        heldFrom += size;
        held.erase(0, size);
    }

    // ---- Damage -----------------------------------------------------------------------------------

    void FoundDamage(std::string_view what, std::uint64_t offset, std::uint64_t line)
    {
        const bool betweenCalls = depth <= 1;
        if (resumed && betweenCalls && AtRootEnd()) {
            state = State::Over;
            return;
        }
        // A document whose calls stand within each other may be well-formed all the same: the parser that
        // has read it so far goes on to its end, but for its judgement alone.
        if (broken && !resumed) {
            judge = std::move(parser);
            judge->Mute();
        }
        damaged = true;
        // Where nothing was read since the damage before, there is still that one.
        if (!hasDamage) {
            BeginDamage(what);
            if (const std::string_view name = NameAt(offset); !broken && !name.empty()) {
                damage.what = "\"" + std::string(name) + "\" is no name that XML allows";
            }
            damage.offset = std::min(offset, received);
            damage.line = broken ? line : parserLine + line - 1;
            damage.lostFrom = depth > 1 ? childBegin.offset : restart;
            if (depth > 1)
                TakeBackElement();
        }
        state = rootEnded ? State::Over : State::Searching;
        broken = false;
        resumed = true;
        depth = 0;
        PassOverHopeless(offset);
    }

    /// Where calls begin within each other and none ends, each of them leads to the same damage.
    void PassOverHopeless(std::uint64_t offset)
    {
        attempts = offset == attemptsEndAt ? attempts + 1 : 1;
        attemptsEndAt = offset;
        if (attempts > mostAttempts && offset > heldFrom)
            Forget(std::min(std::size_t(offset - heldFrom), held.size()));
    }

    void BeginDamage(std::string_view what)
    {
        hasDamage = true;
        damage = Damage{};
        damage.ordinal = ++end.damages;
        damage.what = what;
    }

    /// The log was cut off where it ends, unless that was seen as damage already.
    void FoundCut(std::string_view why)
    {
        end.empty = false;
        if (hasDamage && damage.what == why)
            return;
        CloseDamage(received);
        BeginDamage(why);
        damage.offset = damage.lostFrom = received;
        damage.line = heldLine + Lines(held);
    }

    /// A name that XML doesn't allow and that the parser met there.
    std::string_view NameAt(std::uint64_t offset) const
    {
        constexpr std::size_t nearby = 128;
        if (offset < heldFrom || offset - heldFrom >= held.size()) {
            return {};
        }
        const auto at = std::size_t(offset - heldFrom);
        const std::string_view text = held;
        const std::size_t tag = text.rfind('<', at);
        if (tag == std::string_view::npos || at - tag > nearby) {
            return {};
        }
        const std::size_t next = text.find('<', tag + 1);
        return IllegalName(text.substr(tag, std::min(next, text.size()) - tag));
    }

    /// Whether what follows the last call is the end tag of the root, whose name isn't known: the only
    /// one that begins a line without an indent.
    bool AtRootEnd() const
    {
        if (!rootName.empty() || restart < heldFrom || restart - heldFrom > held.size())
            return false;
        const std::string_view rest = std::string_view(held).substr(std::size_t(restart - heldFrom));
        const std::size_t tag = rest.find_first_not_of(" \t\r\n");
        return tag != std::string_view::npos && StartsWith(rest.substr(tag), "</") &&
               (tag == 0 || rest[tag - 1] == '\n');
    }

    void CloseDamage(std::uint64_t lostTo)
    {
        if (!hasDamage)
            return;
        hasDamage = false;
        damage.lostTo = std::max(lostTo, damage.lostFrom);
        handler.Damaged(damage);
    }

    /// Looks for a line that begins an element of a call:   \n    <Name call_num="
    void Search(bool last)
    {
        const std::string_view text = held;
        std::size_t from = 0;
        while (true) {
            const std::size_t attribute = text.find(" call_num=\"", from);
            if (attribute == std::string_view::npos)
                break;
            from = attribute + 1;
            const std::size_t lineEnd = text.rfind('\n', attribute);
            const std::size_t line = lineEnd == std::string_view::npos ? 0 : lineEnd + 1;
            if (lineEnd == std::string_view::npos && (heldFrom != 0 || triedStart))
                continue;
            triedStart = triedStart || lineEnd == std::string_view::npos;
            const std::size_t tag = text.find_first_not_of(" \t", line);
            if (tag >= attribute || text[tag] != '<' || text[tag + 1] == '/' || text[tag + 1] == '!' ||
                text[tag + 1] == '?' ||
                text.substr(tag, attribute - tag).find_first_of(" \t>\"") != std::string_view::npos)
                continue;
            Forget(tag);
            BeginParser(heldFrom, heldLine);
            return;
        }
        // A line that isn't whole may begin a call.
        if (!last && held.size() > longestBegin)
            Forget(held.size() - longestBegin);
    }

    void BeginParser(std::uint64_t offset, std::uint64_t line)
    {
        parser = MakeXmlParser(*this);
        textsCome = true;
        depth = 0;
        restart = offset;
        restartLine = line;
        parserLine = line;
        base = offset;
        state = State::Parsing;
        if (!resumed)
            return;
        const std::string root = "<" + (rootName.empty() ? std::string("log") : rootName) + ">";
        inOwnRoot = true;
        parser->Feed(root.data(), root.size());
        inOwnRoot = false;
        base -= root.size();  // wraps below zero and back
        restart = offset;
        restartLine = line;
    }

    void TakeBackElement()
    {
        if (child == Child::Call) {
            damage.call = call->number;
            damage.callName = call->name;
            if (callIsNew) {
                handler.TakenBack(*call);
                --end.calls;
                Recycle(open.size() - 1);
            } else {
                call->arguments.GoBack(argumentsMark);
                call->results.GoBack(resultsMark);
                call->returnTime.reset();
                call->status.clear();
            }
        }
        before.Clear();
        call = nullptr;
        contents = nullptr;
        child = Child::None;
    }

    // ---- Events -----------------------------------------------------------------------------------

    // Most elements stand within an argument or a result. For them this is short: the compiler shall not
    // put into it what is done for the others.

    void StartElement(std::string_view name, const XmlAttribute* attributes, std::size_t count) override
    {
        if (broken)
            return;
        ++depth;
        if (depth <= 3 || directIsLeaf || count != 0)
            BeginOuter(name, attributes, count);
        else if (contents != nullptr)
            contents->Begin(name, options.limits);
    }

    void EndElement() override
    {
        if (broken)
            return;
        --depth;
        if (depth <= 2)
            EndOuter();
        else if (contents != nullptr)
            contents->End(options.limits);
    }

    /// The root, a child of it, a child of a call's element or the first child of that; or any element
    /// with attributes.
    [[gnu::noinline]] void BeginOuter(std::string_view name, const XmlAttribute* attributes,
                                      std::size_t count)
    {
        if (depth == 1) {
            if (!inOwnRoot && IsCall(attributes, count)) {
                Break(parser->TagBegin());
            } else {
                Root(name, attributes, count);
            }
            AnnounceTexts();
        } else if (depth == 2) {
            BeginChild(name, attributes, count);
            AnnounceTexts();
        } else {
            if (count != 0 && IsMisplacedCall(attributes, count))
                return;
            if (depth == 3)
                BeginDirect(name);
            else if (directIsLeaf)
                BeginWithinDirect();
            if (contents != nullptr)
                contents->Begin(name, options.limits);
        }
    }

    [[gnu::noinline]] void EndOuter()
    {
        if (depth == 2) {
            if (contents != nullptr)
                contents->End(options.limits);
            EndDirect();
        } else if (depth == 1) {
            EndChild();
        } else {
            rootEnded = true;
            end.rootEnded = true;
            SetRestart(base + parser->Position());  // damage from here on loses nothing of the document
        }
    }

    /// Comes where AnnounceTexts() wants it.
    void Text(std::string_view text) override
    {
        if (ReadsDirect() && direct.size() <= longestStatus)
            direct.append(text.substr(0, longestStatus + 1));
        if (contents != nullptr)
            contents->AddText(text, options.limits);
    }

    /// Whether the text where the parser is may say when the call returned, or with what status.
    bool ReadsDirect() const
    {
        return depth == 3 && mayBeTimeOrStatus && directIsLeaf;
    }

    /// Where texts between elements are layout, and where none is kept, the parser passes them over.
    void AnnounceTexts()
    {
        const bool isInContents = contents != nullptr && depth >= (child == Child::Other ? 2U : 3U);
        const bool wanted = !broken && (isInContents || ReadsDirect());
        if (wanted != textsCome) {
            textsCome = wanted;
            parser->AnnounceTexts(wanted);
        }
    }

    void Comment(std::string_view text) override
    {
        if (depth != 1 || rootEnded || broken)
            return;
        const std::uint64_t position = base + parser->Position();
        SetRestart(position);
        const std::string_view trimmed = Trimmed(text);
        if (IsMark(trimmed))
            return;
        constexpr std::size_t markup = 7;  // <!-- and -->
        const Part place{position - text.size() - markup, position, restartLine - Lines(text)};
        end.lastComment.assign(trimmed.substr(0, longestBegin));
        end.lastCommentAt = place.begin;
        handler.Comment(text, place);
    }

    void SetRestart(std::uint64_t position)
    {
        restart = position;
        restartLine = parserLine + parser->Line() - 1;
    }

    void Root(std::string_view name, const XmlAttribute* attributes, std::size_t count)
    {
        if (inOwnRoot)
            return;
        const XmlParser::Place begin = parser->TagBegin();
        SetRestart(base + parser->Position());
        restart += ClosingAt(restart);
        end.isLog = true;
        LogHeader header;
        header.place = {base + begin.offset, restart, parserLine + begin.line - 1};
        header.root = name;
        header.name = name;
        rootName = name;
        if (const std::size_t hyphen = name.rfind('-'); hyphen != std::string_view::npos) {
            header.processId = ParseNumber(name.substr(hyphen + 1));
            if (header.processId)
                header.name = name.substr(0, hyphen);
        }
        for (std::size_t i = 0; i < count; ++i) {
            const auto& [key, value] = attributes[i];
            if (key == Words::time)
                header.time = value;
            else if (key == Words::cadiVersion)
                header.cadiVersion = value;
            else if (key == Words::hostName)
                header.hostName = value;
            else if (key == Words::operatingSystem)
                header.operatingSystem = value;
        }
        handler.Header(header);
    }

    /// A byte that is held or that the parser is being given; 0 for any other.
    char ByteAt(std::uint64_t offset) const
    {
        const bool isCurrent = offset >= currentFrom;
        const std::string_view text = isCurrent ? current : std::string_view(held);
        const std::uint64_t at = offset - (isCurrent ? currentFrom : heldFrom);
        return at < text.size() ? text[std::size_t(at)] : '\0';
    }

    /// How much of a start tag is left where the parser has read all but its > or />.
    std::uint64_t ClosingAt(std::uint64_t offset) const
    {
        const char next = ByteAt(offset);
        return next == '>' ? 1 : next == '/' ? 2 : 0;
    }

    /// An element with a number, as deep as the contents of another call, but in a call's place: the end
    /// tag of that other call is gone.
    bool IsMisplacedCall(const XmlAttribute* attributes, std::size_t count)
    {
        if (!IsCall(attributes, count))
            return false;
        const XmlParser::Place tag = parser->TagBegin();
        for (std::size_t i = 0; i < indent.size(); ++i)
            if (ByteAt(base + tag.offset - indent.size() + i) != indent[i])
                return false;
        Break(tag);
        return true;
    }

    /// Takes what is in front of a call's tag for the indent of all calls, if it stands in a line of its
    /// own.
    void LearnIndent(std::uint64_t tag)
    {
        std::string its;
        while (its.size() < longestIndent) {
            const char c = ByteAt(tag - its.size() - 1);
            if (c != ' ' && c != '\t' && c != '\n')
                return;
            its.insert(its.begin(), c);
            if (c == '\n')
                break;
        }
        knowsIndent = its.size() > 1;
        if (knowsIndent)
            indent = its;
    }

    static bool IsCall(const XmlAttribute* attributes, std::size_t count)
    {
        return std::any_of(attributes, attributes + count,
                           [](const XmlAttribute& a) { return a.name == Words::callNumber; });
    }

    /// Takes the start tag for damage: it may be XML, but is in no place of a log where it belongs.
    void Break(const XmlParser::Place& tag)
    {
        broken = true;
        brokenAt = base + tag.offset;
        brokenLine = parserLine + tag.line - 1;
        --depth;
        AnnounceTexts();
    }

    // ---- A child of the root ------------------------------------------------------------------------

    enum class Child
    {
        None,
        Call,
        Other
    };

    void BeginChild(std::string_view name, const XmlAttribute* attributes, std::size_t count)
    {
        childBegin = parser->TagBegin();
        childBegin.offset += base;
        childBegin.line += parserLine - 1;
        CloseDamage(childBegin.offset);
        restart = childBegin.offset + 1;  // the line of this tag is not looked at again
        restartLine = childBegin.line;

        std::optional<std::uint64_t> number;
        std::optional<std::uint64_t> threadId;
        const std::string_view* callTime = nullptr;
        std::string_view address;
        const std::string_view* numberText = nullptr;
        for (std::size_t i = 0; i < count; ++i) {
            const auto& [key, value] = attributes[i];
            if (key == Words::callNumber)
                numberText = &value;
            else if (key == Words::callTime)
                callTime = &value;
            else if (key == Words::threadId)
                threadId = ParseNumber(value);
            else if (key == Words::disassemblerAddress)
                address = value;
        }
        if (numberText != nullptr)
            number = ParseNumber(*numberText);
        if (!number) {
            child = Child::Other;
            misnumbered = numberText != nullptr;
            if (misnumbered) {
                otherName = name;
                otherNumber = *numberText;
            }
            call = nullptr;
            if (++othersBefore > mostOthers) {
                othersBefore = 0;
                before.Clear();
            }
            contents = options.contents ? &before : nullptr;
            if (contents != nullptr)
                contents->Begin(name, options.limits);
            return;
        }
        if (!knowsIndent)
            LearnIndent(childBegin.offset);
        end.isLog = true;
        child = Child::Call;
        call = callTime == nullptr ? FindOpen(*number, name) : nullptr;
        callIsNew = call == nullptr;
        if (callIsNew) {
            call = &AddCall(*number, name, threadId);
            call->disassemblerAddress = address;
            call->beginningLost = callTime == nullptr;
            if (callTime != nullptr)
                call->callTime = ParseTime(*callTime);
            std::swap(call->before, before);
            othersBefore = 0;
            handler.Entered(*call);
        }
        contents = !options.contents ? nullptr : call->Returned() ? &call->results : &call->arguments;
        argumentsMark = call->arguments.Here();
        resultsMark = call->results.Here();
    }

    Call* FindOpen(std::uint64_t number, std::string_view name)
    {
        const auto found = std::find_if(open.rbegin(), open.rend(), [&](const auto& candidate) {
            return candidate->number == number && candidate->name == name;
        });
        return found == open.rend() ? nullptr : found->get();
    }

    Call& AddCall(std::uint64_t number, std::string_view name, std::optional<std::uint64_t> threadId)
    {
        if (open.size() >= options.openCalls) {
            handler.Ended(*open.front());
            Recycle(0);
        }
        std::unique_ptr<Call> added;
        if (spare.empty()) {
            added = std::make_unique<Call>();
        } else {
            added = std::move(spare.back());
            spare.pop_back();
        }
        Renew(*added);
        added->number = number;
        added->name = name;
        added->occurrence = seen.Times(number) + 1;
        added->entry = end.calls++;
        added->threadId = threadId;
        if (threadId)
            added->thread = ThreadOf(*threadId);

        // In a log without threads any call that is open may have made this one.
        for (auto parent = open.rbegin(); parent != open.rend(); ++parent) {
            if (!threadId || (*parent)->threadId == threadId) {
                const std::vector<std::uint64_t>& outer = (*parent)->ancestors;
                added->ancestors.assign(outer.begin() + (outer.size() == mostAncestors ? 1 : 0),
                                        outer.end());
                added->ancestors.push_back((*parent)->number);
                break;
            }
        }
        open.push_back(std::move(added));
        return *open.back();
    }

    /// Makes a call one that knows nothing, but keeps its memory.
    static void Renew(Call & used)
    {
        used.name.clear();
        used.thread = 0;
        used.status.clear();
        used.disassemblerAddress.clear();
        used.ancestors.clear();
        used.before.Clear();
        used.arguments.Clear();
        used.results.Clear();
        used.parts.clear();
        used.callTime.reset();
        used.returnTime.reset();
        used.beginningLost = false;
        used.clockSetBack = false;
    }

    void Recycle(std::size_t index)
    {
        constexpr std::size_t mostSpare = 16;
        if (spare.size() < mostSpare)
            spare.push_back(std::move(open[index]));
        open.erase(open.begin() + std::ptrdiff_t(index));
    }

    std::uint32_t ThreadOf(std::uint64_t id)
    {
        const auto known = threads.find(id);
        if (known != threads.end())
            return known->second;
        const auto index = std::uint32_t(threads.size() + 1);
        if (threads.size() < mostThreads)
            threads.emplace(id, index);
        return index;
    }

    void EndChild()
    {
        SetRestart(base + parser->Position());
        if (child == Child::Other && contents != nullptr) {
            contents->End(options.limits);
        }
        if (child == Child::Call) {
            if (call->parts.size() == mostParts)
                call->parts.pop_back();
            call->parts.push_back({childBegin.offset, restart, childBegin.line});
            if (callIsNew)
                seen.Add(call->number);
            PassTimes();
            handler.Element(*call);
            if (call->Returned()) {
                handler.Ended(*call);
                const auto at = std::find_if(open.rbegin(), open.rend(), [&](const auto& candidate) {
                    return candidate.get() == call;
                });
                Recycle(std::size_t(open.rend() - at) - 1);
            }
        } else {
            const Part place{childBegin.offset, restart, childBegin.line};
            if (misnumbered)
                handler.Misnumbered(otherName, otherNumber, place);
            handler.Other(place);
        }
        call = nullptr;
        contents = nullptr;
        child = Child::None;
    }

    /// Times stand in the log in the order in which they were taken.
    void PassTimes()
    {
        if (callIsNew)
            Pass(call->callTime, call);
        Pass(call->returnTime, nullptr);
    }

    /// Across a clock that was set back no duration is right; a call that begins there is whole.
    void Pass(const std::optional<Time>& time, const Call* begun)
    {
        if (!time)
            return;
        if (latest && time->nanoseconds < *latest)
            for (const auto& each : open)
                each->clockSetBack = each->clockSetBack || each.get() != begun;
        latest = time->nanoseconds;
    }

    // ---- A child of a call's element ----------------------------------------------------------------

    void BeginDirect(std::string_view name)
    {
        direct.clear();
        directIsLeaf = true;
        mayBeTimeOrStatus = child == Child::Call && (call->Returned() || name == Words::returnTime);
        AnnounceTexts();
    }

    void BeginWithinDirect()
    {
        directIsLeaf = false;
        AnnounceTexts();
    }

    void EndDirect()
    {
        AnnounceTexts();
        if (!mayBeTimeOrStatus || !directIsLeaf)
            return;
        if (!call->Returned()) {
            const std::optional<Time> time = ParseTime(direct);
            if (!time)
                return;
            if (contents != nullptr) {
                contents->DropLast();
                contents = &call->results;
            }
            call->returnTime = time;
        } else if (direct.size() <= longestStatus && IsStatus(direct)) {
            call->status = direct;
        }
    }

    LogHandler& handler;
    const ReadOptions options;

    State state = State::Parsing;
    std::unique_ptr<XmlParser> parser;
    std::uint64_t base = 0;        // offset in the log of the parser's first byte
    std::uint64_t parserLine = 1;  // and its line
    std::uint64_t received;        // offset after the last byte that was fed

    std::string held;
    std::uint64_t heldFrom;
    std::uint64_t heldLine;
    std::string_view current;  // what the parser is being given
    std::uint64_t currentFrom = 0;
    std::uint64_t restart = 0;  // where to look for the next call after damage
    std::uint64_t restartLine = 1;

    bool triedStart = false;  // a log may be cut right before a call
    bool resumed = false;     // the parser stands in a root element of our own
    bool inOwnRoot = false;
    bool rootEnded = false;
    bool broken = false;  // a call begins within another one
    std::uint64_t brokenAt = 0;
    std::uint64_t brokenLine = 0;

    std::string indent = "\n    ";  // of calls, with the line end before it
    bool knowsIndent = false;

    std::size_t attempts = 0;  // to read on from a call, that all ended at the same place
    std::uint64_t attemptsEndAt = 0;

    bool damaged = false;
    bool hasDamage = false;
    Damage damage;
    std::unique_ptr<XmlParser> judge;

    std::size_t depth = 0;
    std::string rootName;
    Child child = Child::None;
    XmlParser::Place childBegin{};
    Call* call = nullptr;
    bool callIsNew = false;
    Tree* contents = nullptr;  // where what it holds belongs; null when it isn't kept
    Tree::Mark argumentsMark{};
    Tree::Mark resultsMark{};
    Tree before;
    std::size_t othersBefore = 0;
    bool misnumbered = false;  // the child, which is no call for that
    std::string otherName;
    std::string otherNumber;

    std::string direct;
    bool directIsLeaf = false;
    bool mayBeTimeOrStatus = false;
    bool textsCome = true;  // the parser announces them

    std::vector<std::unique_ptr<Call>> open;  // in order of entry
    std::vector<std::unique_ptr<Call>> spare;
    SeenNumbers seen;
    std::unordered_map<std::uint64_t, std::uint32_t> threads;
    std::optional<std::int64_t> latest;  // of the times, in nanoseconds
    LogEnd end{false, true, false, false, 0, 0, 0, {}, 0};
};

LogReader::LogReader(LogHandler& handler, const ReadOptions& options)
    : impl(std::make_unique<Impl>(handler, options))
{
}

LogReader::~LogReader() = default;

void LogReader::Feed(std::string_view bytes)
{
    impl->Feed(bytes);
}

LogEnd LogReader::Finish(std::string_view cutOff)
{
    return impl->Finish(cutOff);
}

}  // namespace ScrivelReader
