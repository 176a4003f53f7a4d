// A generator whose file is a complete document at every moment, also while the target runs.

#ifndef SCRIVEL_LAYER_COMPLETEFILEGENERATOR_H
#define SCRIVEL_LAYER_COMPLETEFILEGENERATOR_H

#ifndef __cpp_exceptions
#error "The layer of ScrivelXmlGen needs exceptions: compile without -fno-exceptions"
#endif

#include "scrivel/CallHead.h"
#include "scrivel/LogComments.h"
#include "scrivel/ValueWriters.h"

#include <cerrno>
#include <ios>
#include <new>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

namespace Scrivel2::Layer
{

// Shown by what a shared library shows.
template <typename Generator>
class [[gnu::visibility("default")]] CompleteFileGenerator;

/// A Scrivel2XmlGenRun or Scrivel2XmlGenConnect that leaves the root end tag in the file after every
/// flush, so that a log whose process dies inside a call of the target is complete, with that call and
/// all its arguments. Once the call has returned the bytes are those of the generator underneath.
///
///     after the arguments' flush     <CADIMemRead call_num="7" ...>
///                                        <unitsToRead>4</unitsToRead>
///                                    </CADIMemRead>
///                                </trace-4242>
///
/// Its owner keeps to the calling order, one thread at a time; CallLog and LoggedCall do. What it does
/// otherwise than the generator underneath, besides the root end tag:
///
///  - The comments that mark interrupted and continued calls reach the file with the flush that closes
///    the document after them.
///  - The end tag of a call that is still open stays, when an older call is continued or the log ends.
///  - A log that is ended has a last comment that says so.
///  - Elements named with a leading "-" or "." are written with "_" in its place; a name that readers
///    refuse for its length is refused here, with a std::length_error.
template <typename Generator>
class CompleteFileGenerator : public ValueWriters<Generator>
{
public:
    explicit CompleteFileGenerator(const char* name) : ValueWriters<Generator>(name)
    {
        this->mendsNames = true;
        this->checkLongName = RefuseTooLong;
        this->template KeepsTags<CompleteFileGenerator>();
    }

    // ---- Frame operations ---------------------------------------------------------------------

    /// As the generator's own, and the root end tag after the provisional end tag of an open call.
    void FlushOutput(bool finalTag, std::string callName) override { Flush(finalTag, callName); }

    void Flush(bool finalTag, std::string_view callName)
    {
        endsInCallTag = !finalTag;
        this->WriteClosingText(finalTag, callName);
        if (finalTag) {
            this->logFile.flush();
            return;
        }
        // ...<unitsToRead>4</unitsToRead>\n|    </CADIMemRead>\n|</trace-4242>\n
        //                                  | = lastFilePos      | = put position: who keeps the call's
        //                                                           end tag goes on from there
        const auto afterCallTag = this->logFile.tellp();
        // As it was when the call was entered: a child of this process doesn't log here.
        this->logFile.Append(this->fileEndTag);
        this->logFile.flush();
        this->logFile.seekp(afterCallTag);
    }

    /// Ends the log with a comment that says so: what has none was cut off.
    void EndLogging() override
    {
        Attempt attempt(*this);
        WriteLastComment(EndComment());
        this->SeekFilePointerPosition();
        Flush(true, "");
        attempt.Finish();
        this->logFile.close();
    }

    void WriteTimestamp(const std::string& name, bool asElement) override
    {
        if (!reopening) {
            Generator::WriteTimestamp(name, asElement);
        }
    }

    using Generator::WriteIdent;
    using Generator::WriteIdentWithoutTabs;
    using Generator::WriteTabs;

    // ---- What CallLog and LoggedCall are made of -----------------------------------------------

    /// Something that is written wholly or not at all. Unless Finish has said that all is in the file,
    /// the end of an attempt takes back what came since its beginning, and the generator is as it was:
    /// whatever has thrown, the next call is logged as if nothing had been begun.
    class Attempt
    {
    public:
        explicit Attempt(CompleteFileGenerator& attempting) : generator(attempting) { generator.Begin(); }
        ~Attempt() { generator.TakeBack(); }
        Attempt(const Attempt&) = delete;
        Attempt& operator=(const Attempt&) = delete;

        /// To be called after the flush. Throws when there was no memory for the text.
        void Finish()
        {
            if (generator.logFile.IsOutOfMemory()) {
                throw std::bad_alloc();
            }
            generator.begun.reset();
        }

    private:
        CompleteFileGenerator& generator;
    };

    /// Takes back what an attempt has begun and not finished, if there is one; also that of a thread that
    /// has ended in the midst of it.
    void TakeBack();

    using Generator::GetCallNo;
    using Generator::GetLastFilePointerPosition;
    using Generator::SeekFilePointerPosition;
    using Generator::WriteTag;

    /// Of a run: the tables of names that values bear.
    template <typename NameTable>
    void SetNames(const NameTable* registers, const NameTable* memSpaces)
    {
        this->SetRegisterNames(registers);
        this->SetMemSpaceNames(memSpaces);
    }

    /// What the files outlive that are begun from now on.
    void SetDurability(Durability wanted) { durability = wanted; }

    /// Starts the log of that name in a new file, which appears with the header or not at all. Returns 0,
    /// or the system's number for the reason why there is no log: EEXIST when the file's name is in use.
    int StartIn(const std::string& name, const std::string& fileName)
    {
        this->logName = name;
        return BeginFile(fileName, [this] { this->WriteHeader(); });
    }

    /// Ends the file and goes on in a new one, with the numbers of calls. Each of the two names the
    /// other. Returns as StartIn; when that isn't 0 the log is as it was.
    int GoOnIn(const std::string& nextFile, const std::string& thisFile)
    {
        Attempt attempt(*this);
        const timeval startBefore = this->startTime;
        LogStream other;
        bool swapped = false;
        int problem = ENOMEM;
        try {
            {
                const LogStream::FlushHold hold(this->logFile);
                WriteLastComment(ContinuedInComment(nextFile));
                this->SeekFilePointerPosition();
                Flush(true, "");
            }
            if (this->logFile.good()) {
                this->logFile.swap(other);
                swapped = true;
                problem = BeginFile(nextFile, [&] { WriteHeaderAfter(thisFile); });
            }
        } catch (const std::bad_alloc&) {
            // The problem is that one.
        }
        if (problem != 0) {
            if (swapped) {
                this->logFile.swap(other);
            }
            this->startTime = startBefore;
            return problem;
        }
        other.close();  // flushes what was held back
        attempt.Finish();
        return 0;
    }

    /// Goes on with a call that has returned, as WriteContinueFunction does. The flush must follow.
    void Continue(unsigned int number, const std::string& callName)
    {
        const LogStream::FlushHold hold(this->logFile);
        if (endsInCallTag && number != this->callNo) {
            this->UpdateFilePointerPosition();  // a younger call is open: its end tag stays
        }
        this->WriteContinued(number, callName);
    }

    /// Enters a call of either phase and returns its number. The arguments and a flush must follow.
    unsigned int EnterCall(const std::string& callName)
    {
        CloseInterruptedFor(callName);
        this->IncCallNo();
        this->WriteDetailedIdent(callName);
        return this->GetCallNo();
    }

    /// As the other, of a run, with what the head says.
    unsigned int EnterCall(const std::string& callName, const CallHead& head)
    {
        if (!head.elementName.empty()) {
            this->SetPendingElement(LegalName(head.elementName),
                                    this->CheckString(std::string(head.elementText)));
        }
        CloseInterruptedFor(callName);
        this->IncCallNo();
        this->WriteDetailedIdent(callName, head.disassemblerAddress);
        return this->GetCallNo();
    }

    /// Whether the call is the one whose provisional end tag ends the file.
    bool IsOpen(unsigned int number) const { return endsInCallTag && number == this->callNo; }

    /// Goes on with a call that has not returned yet: reopens its element, as Continue does, without a
    /// return time.
    void ReopenCall(unsigned int number, const std::string& callName)
    {
        reopening = true;
        Continue(number, callName);
        reopening = false;
    }

    /// Writes a comment between calls, or at the end of the call that is open, and flushes.
    void WriteCommentAndFlush(std::string_view text)
    {
        Attempt attempt(*this);
        {
            const LogStream::FlushHold hold(this->logFile);
            Generator::WriteComment(CommentText(text));
        }
        Flush(!endsInCallTag, this->openCallName);
        attempt.Finish();
    }

    /// Lets `write` write values to the log, then `finish`. When `write` throws, what it has written is
    /// taken back, so that `finish` completes the document before the exception goes on.
    template <typename Write, typename Finish>
    void WriteAndFinish(Write& write, Finish finish)
    {
        const auto start = this->logFile.tellp();
        const unsigned int startDepth = this->depth;
        try {
            write(static_cast<ValueWriters<Generator>&>(*this));
        } catch (...) {
            this->logFile.DropFrom(start);
            this->depth = startDepth;
            finish();
            throw;
        }
        finish();
    }

    bool IsGood() const { return this->logFile.good(); }

private:
    /// Lets `write` write the header, with a flush, into a new file. Returns as StartIn.
    template <typename Write>
    int BeginFile(const std::string& fileName, Write write)
    {
        errno = 0;
        this->logFile.SetDurability(durability);
        this->logFile.create(fileName);
        if (this->logFile.good()) {
            this->depth = 0;
            write();
        }
        if (this->logFile.IsOutOfMemory()) {
            throw std::bad_alloc();
        }
        if (this->logFile.good()) {
            return 0;
        }
        const int problem = errno == 0 ? EIO : errno;
        if (this->logFile.is_open()) {
            this->logFile.close();
        }
        return problem;
    }

    /// The header of a file that goes on where another ended.
    void WriteHeaderAfter(const std::string& fileBefore)
    {
        {
            const LogStream::FlushHold hold(this->logFile);
            this->WriteHeader();
            Generator::WriteComment(ContinuedFromComment(fileBefore));
        }
        Flush(true, "");
    }

    /// The generator as it was when an attempt began.
    struct Begun
    {
        std::streamoff position;
        std::streamoff lastFilePos;
        unsigned int callNo;
        unsigned int depth;
        bool callOpen;
        bool endsInCallTag;
        bool nameIsKept;  // in nameBefore: the attempt has given the open call another one
    };

    /// As WriteCloseInterruptedFunction, in an attempt.
    void CloseInterruptedFor(const std::string& callName)
    {
        const LogStream::FlushHold hold(this->logFile);
        this->CloseInterrupted();
        nameBefore = this->openCallName;
        begun->nameIsKept = true;
        this->openCallName = callName;
        this->callOpen = true;
    }

    void Begin()
    {
        begun = {this->logFile.tellp(), this->lastFilePos, this->callNo, this->depth,
                 this->callOpen,        endsInCallTag,     false};
    }

    /// Writes a comment after which the file may be closed, without a flush.
    void WriteLastComment(std::string text)
    {
        const LogStream::FlushHold hold(this->logFile);
        if (endsInCallTag) {
            this->UpdateFilePointerPosition();  // a call is open: its end tag stays
        }
        this->depth = 1;
        Generator::WriteComment(std::move(text));
        this->UpdateFilePointerPosition();
    }

    static void RefuseTooLong(const std::string& name)
    {
        constexpr std::size_t longest = 50'000;  // libxml2 refuses a longer one
        if (name.size() > longest) {
            throw std::length_error("Scrivel: the name of an element is too long");
        }
    }

    bool endsInCallTag = false;  ///< the last flush wrote the end tag of an open call
    bool reopening = false;
    Durability durability = Durability::Process;
    std::optional<Begun> begun;
    std::string
        nameBefore;  ///< of the open call, when the attempt began; not in `begun`, to keep its memory
};

template <typename Generator>
void CompleteFileGenerator<Generator>::TakeBack()
{
    if (!begun) {
        return;
    }
    if (begun->position >= 0) {
        this->logFile.TakeBack(begun->position);
    }
    this->lastFilePos = begun->lastFilePos;
    this->callNo = begun->callNo;
    this->depth = begun->depth;
    this->callOpen = begun->callOpen;
    endsInCallTag = begun->endsInCallTag;
    reopening = false;
    if (begun->nameIsKept) {
        this->openCallName.swap(nameBefore);
    }
    // Of the tail only counts whether it is the root end tag. That has been in both strings before, so no
    // memory is asked for.
    if (endsInCallTag) {
        this->pendingTail.clear();
    } else {
        this->pendingTail = this->FileEndTag();
    }
    if constexpr (std::is_same_v<Generator, Scrivel2XmlGenRun>) {
        this->SetPendingElement({}, {});
    }
    begun.reset();
}

}  // namespace Scrivel2::Layer

#endif
