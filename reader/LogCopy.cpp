// Copies of what is undamaged, and of what is chosen. Tested by tests/reader/LogCopyTest.cpp.

#include "scrivel/LogCopy.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "format/LogWords.h"
#include "scrivel/LogReader.h"

namespace ScrivelReader
{

namespace
{

namespace Words = Scrivel2::LogWords;

constexpr std::size_t pieceSize = 64 * 1024;
constexpr std::string_view indent = "    ";
constexpr std::string_view nameOfLostRoot = "log";

/// Text that may stand in a comment and in a log of any encoding.
std::string CommentText(std::string_view text)
{
    std::string kept;
    for (const char c : text) {
        const bool isPrinted = c >= ' ' && c < 0x7f;
        kept += !isPrinted ? '?' : c == '-' && !kept.empty() && kept.back() == '-' ? '~' : c;
    }
    return kept;
}

std::string CommentOf(std::string_view text)
{
    return "<!-- " + std::string(text) + " -->";
}

/// Reads from one log and writes to one output; after a failure nothing more is written.
class Copier
{
public:
    Copier(LogBytes& itsLog, const CopyOutput& itsOutput)
        : log(itsLog), output(itsOutput), buffer(pieceSize)
    {
    }

    void Write(std::string_view text)
    {
        if (failed || text.empty()) {
            return;
        }
        failed = !output(text);
        last = text.back();
    }

    void WriteBytes(std::uint64_t from, std::uint64_t to)
    {
        while (from < to && !failed) {
            const std::size_t got =
                ReadAt(from, std::size_t(std::min<std::uint64_t>(to - from, pieceSize)));
            if (got == 0) {
                Fail("the log became shorter while it was read");
            }
            Write({buffer.data(), got});
            from += got;
        }
    }

    /// Reads the log from its first byte to its last.
    LogEnd Read(LogHandler& handler, const ReadOptions& options)
    {
        LogReader reader(handler, options);
        std::vector<char> bytes(pieceSize);
        for (std::uint64_t at = 0; at < log.Size() && !failed;) {
            const std::size_t got =
                ReadAt(at, std::size_t(std::min<std::uint64_t>(log.Size() - at, pieceSize)));
            if (got == 0) {
                Fail("the log became shorter while it was read");
            }
            // What the handler copies meanwhile takes the place of these bytes.
            std::copy_n(buffer.data(), got, bytes.data());
            reader.Feed({bytes.data(), got});
            at += got;
        }
        // Bytes that were not read because the output failed are no damage.
        return failed ? LogEnd() : reader.Finish(log.CutOff());
    }

    char Last() const { return last; }
    bool Failed() const { return failed; }
    /// Empty when it was the output that failed.
    const std::string& Error() const { return error; }

private:
    std::size_t ReadAt(std::uint64_t offset, std::size_t size)
    {
        const std::optional<std::size_t> got = log.ReadAt(offset, buffer.data(), size);
        if (!got) {
            Fail(log.Error());
        }
        return got.value_or(0);
    }

    void Fail(std::string_view why)
    {
        if (!failed) {
            error = why;
        }
        failed = true;
    }

    LogBytes& log;
    const CopyOutput& output;
    std::vector<char> buffer;
    char last = '\n';
    bool failed = false;
    std::string error;
};

// ---- Recover --------------------------------------------------------------------------------------

/// Copies what lies between the damages as they are found.
class Recovery final : public LogHandler
{
public:
    Recovery(Copier& itsCopier, const DamageHandler& itsTell) : copier(itsCopier), tell(itsTell) {}

    void Header(const LogHeader& header) override
    {
        root = header.root;
        keptEnd = header.place.end;
    }
    void Ended(Call& call) override { calls += call.parts.empty() ? 0U : 1U; }
    void Element(const Call& call) override
    {
        ++elements;
        keptEnd = call.parts.back().end;
    }
    void Other(const Part& place) override { keptEnd = place.end; }
    void Comment(std::string_view, const Part& place) override { keptEnd = place.end; }
    void Damaged(const Damage& damage) override
    {
        tell(damage);
        CopyTo(damage.lostFrom);
        WriteLostHeader();
        copier.Write(copier.Last() == '\n' ? indent : copier.Last() == ' ' ? "" : "\n    ");
        std::string text = std::to_string(damage.lostTo - damage.lostFrom) + " bytes dropped";
        if (damage.call) {
            text += " with an element of call " + std::to_string(*damage.call);
        }
        text += ", damaged at byte " + std::to_string(damage.offset) + ": " + damage.what;
        copier.Write(CommentOf(CommentText(text)) + "\n");
        dropped += damage.lostTo - damage.lostFrom;
        copied = damage.lostTo;
        toIndent = true;
    }

    Copied Finish(const LogEnd& end)
    {
        if (end.rootEnded) {
            CopyTo(end.size);
        } else {
            // What follows is the end tag of a root element whose name is lost, or nothing.
            CopyTo(keptEnd);
            WriteLostHeader();
            copier.Write(std::string(copier.Last() == '\n' ? "" : "\n") + "</" + root + ">\n");
        }
        return {end, calls, elements, dropped};
    }

private:
    void CopyTo(std::uint64_t offset)
    {
        if (copied >= offset) {
            return;
        }
        WriteLostHeader();
        if (std::exchange(toIndent, false)) {
            copier.Write(indent);
        }
        copier.WriteBytes(copied, offset);
        copied = offset;
    }

    void WriteLostHeader()
    {
        if (!root.empty()) {
            return;
        }
        root = nameOfLostRoot;
        copier.Write(std::string(Words::declaration) + "\n<" + root + ">\n");
    }

    Copier& copier;
    const DamageHandler& tell;
    std::string root;  // empty until its start tag was read or written
    std::uint64_t copied = 0;
    std::uint64_t keptEnd = 0;
    bool toIndent = false;
    std::uint64_t calls = 0;
    std::uint64_t elements = 0;
    std::uint64_t dropped = 0;
};

// ---- Cut ------------------------------------------------------------------------------------------

/// Notes which calls are chosen, by their order of entry.
class Choice final : public LogHandler
{
public:
    explicit Choice(const CallChoice& itsChoice) : isChosen(itsChoice) {}

    void Ended(Call& call) override
    {
        if (isChosen(call)) {
            chosen.resize(std::max(chosen.size(), std::size_t(call.entry) + 1));
            chosen[std::size_t(call.entry)] = true;
            ++count;
        }
    }

    bool Has(std::uint64_t entry) const { return entry < chosen.size() && chosen[std::size_t(entry)]; }
    std::uint64_t Count() const { return count; }

private:
    const CallChoice& isChosen;
    std::vector<bool> chosen;
    std::uint64_t count = 0;
};

/// Copies the elements of the chosen calls.
class Cutting final : public LogHandler
{
public:
    Cutting(Copier& itsCopier, const Choice& itsChoice, const DamageHandler& itsTell)
        : copier(itsCopier), choice(itsChoice), tell(itsTell)
    {
    }

    void Header(const LogHeader& header) override
    {
        root = header.root;
        // <run/> has a log without calls only: it is not copied.
        copier.WriteBytes(0, header.place.end);
        copier.Write("\n");
    }
    void Damaged(const Damage& damage) override { tell(damage); }
    void TakenBack(const Call&) override { notes.clear(); }
    void Other(const Part& place) override { Note(place, false); }
    void Comment(std::string_view, const Part& place) override { Note(place, true); }
    void Element(const Call& call) override
    {
        WriteLostHeader();
        const bool isFirst = call.parts.size() == 1;
        if (!choice.Has(call.entry)) {
            leftOut = true;
            if (isFirst) {
                notes.clear();
            }
            return;
        }
        const bool goesOn = !isFirst && call.entry == lastEntry && !leftOut;
        if (!lastName.empty() && !goesOn) {
            WriteMark(std::string(Words::interruptedBegin) + lastName +
                      std::string(Words::interruptedEnd));
        }
        if (isFirst) {
            WriteNotes();
        }
        const std::string name = std::to_string(call.number) + " (\"" + call.name + "\")";
        if (!isFirst && !goesOn) {
            WriteMark(std::string(Words::continuingBegin) + name);
        }
        WriteElement(call.parts.back());
        lastEntry = call.entry;
        lastName = call.Returned() ? std::string() : name;
        leftOut = false;
        ++elements;
    }

    Copied Finish(const LogEnd& end)
    {
        WriteNotes();
        copier.Write("</" + root + ">\n");
        return {end, choice.Count(), elements, 0};
    }

private:
    struct BetweenCalls
    {
        Part place;
        bool isComment;
    };

    void Note(const Part& place, bool isComment)
    {
        constexpr std::size_t mostNotes = 4096;
        if (notes.size() < mostNotes) {
            notes.push_back({place, isComment});
        }
    }

    void WriteNotes()
    {
        for (const BetweenCalls& note : notes) {
            if (note.isComment) {
                copier.Write("\n");
                copier.WriteBytes(note.place.begin, note.place.end);
                copier.Write("\n\n");
            } else {
                WriteElement(note.place);
            }
        }
        notes.clear();
    }

    void WriteElement(const Part& place)
    {
        copier.Write(indent);
        copier.WriteBytes(place.begin, place.end);
        copier.Write("\n");
    }

    void WriteMark(std::string_view text) { copier.Write("\n" + CommentOf(text) + "\n\n"); }

    void WriteLostHeader()
    {
        if (root.empty()) {
            root = nameOfLostRoot;
            copier.Write(std::string(Words::declaration) + "\n<" + root + ">\n");
        }
    }

    Copier& copier;
    const Choice& choice;
    const DamageHandler& tell;
    std::string root;
    std::vector<BetweenCalls> notes;  // since the last call
    std::uint64_t lastEntry = 0;      // of the element that was written last
    std::string lastName;             // of its call, when it had not returned
    bool leftOut = false;             // an element since then
    std::uint64_t elements = 0;
};

std::optional<Copied> Outcome(const Copier& copier, const Copied& copied, std::string& error)
{
    if (!copier.Failed()) {
        return copied;
    }
    error = copier.Error();
    return {};
}

std::optional<Copied> CutChosen(LogBytes& log, const CallChoice& isChosen, bool needsContents,
                                const CopyOutput& output, const DamageHandler& tell, std::string& error)
{
    Copier copier(log, output);
    Choice choice(isChosen);
    ReadOptions options;
    options.contents = needsContents;
    const LogEnd end = copier.Read(choice, options);
    if (copier.Failed() || choice.Count() == 0) {
        return Outcome(copier, {end, 0, 0, 0}, error);
    }
    Cutting cutting(copier, choice, tell);
    options.contents = false;
    copier.Read(cutting, options);
    return Outcome(copier, cutting.Finish(end), error);
}

}  // namespace

std::optional<Copied> Recover(LogBytes& log, const CopyOutput& output, const DamageHandler& tell,
                              std::string& error)
{
    Copier copier(log, output);
    Recovery recovery(copier, tell);
    ReadOptions options;
    options.contents = false;
    const LogEnd end = copier.Read(recovery, options);
    const Copied copied = recovery.Finish(end);
    return Outcome(copier, copied, error);
}

std::optional<Copied> Cut(LogBytes& log, const CallFilter& filter, const CopyOutput& output,
                          const DamageHandler& tell, std::string& error)
{
    const CallChoice matches = [&](const Call& call) { return filter.Matches(call); };
    return CutChosen(log, matches, filter.NeedsContents(), output, tell, error);
}

std::optional<Copied> Cut(LogBytes& log, const CallChoice& choice, const CopyOutput& output,
                          const DamageHandler& tell, std::string& error)
{
    return CutChosen(log, choice, false, output, tell, error);
}

}  // namespace ScrivelReader
