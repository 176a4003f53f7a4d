// Reads the end of a growing log again and again. Tested by tests/reader/LogFollowerTest.cpp, and against
// writers at full speed by tests/crash/FollowedLogs.cpp.

#include "scrivel/LogFollower.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>
#include <system_error>
#include <time.h>
#include <unistd.h>
#include <utility>
#include <vector>

#include "format/LogWords.h"
#include "scrivel/LogFile.h"
#include "scrivel/XmlParser.h"

namespace ScrivelReader
{

namespace
{

namespace Words = Scrivel2::LogWords;

constexpr std::size_t pieceSize = 64 * 1024;
// What a flush may be replacing at the end of a log: the pages in which the old tail lies, and what it
// puts after them to hide it.
constexpr std::uint64_t unsettled = 8 * 1024 + 256;
constexpr std::size_t fingerprintSize = 64;

std::string ErrorText(int number)
{
    return std::generic_category().message(number);
}

std::size_t ReadAt(int descriptor, std::uint64_t offset, char* buffer, std::size_t size)
{
    std::size_t got = 0;
    while (got < size) {
        const ssize_t result = pread(descriptor, buffer + got, size - got, off_t(offset + got));
        if (result < 0 && errno == EINTR)
            continue;
        if (result <= 0)
            break;
        got += std::size_t(result);
    }
    return got;
}

std::int64_t Nanoseconds(const timespec& time)
{
    return std::int64_t(time.tv_sec) * 1000 * 1000 * 1000 + time.tv_nsec;
}

bool SameFile(const struct stat& a, const struct stat& b)
{
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

/// A part of a log, from an element of a call on, up to the end tag of the root element: which of its
/// elements have settled.
class Scan final : private XmlEvents
{
public:
    /// Begins at an offset with an element of the root that is named, or with the log.
    Scan(std::uint64_t itsFrom, const std::string& root, std::uint64_t itsLimit)
        : parser(MakeXmlParser(*this)), base(itsFrom), limit(itsLimit)
    {
        if (itsFrom == 0)
            return;
        const std::string tag = "<" + root + ">";
        base -= tag.size();  // wraps below zero and back
        parser->Feed(tag.data(), tag.size());
    }

    /// False when this is no document, or its end has come.
    bool Feed(const char* bytes, std::size_t size) { return parser->Feed(bytes, size) && !rootEnded; }

    bool IsDocument() const { return rootEnded; }
    std::string Error() const
    {
        return parser->Error().empty() ? "the document ends too early" : parser->Error();
    }
    /// After the last element that has settled; 0 when none has.
    std::uint64_t Settled() const { return settled; }
    /// Where an element begins that is far enough from the end for the next look to begin with.
    std::uint64_t Resume() const { return resume; }
    /// The last element, when it is a call's that has not returned, and has not settled.
    std::optional<Part> Last() const
    {
        return isCall && !hasReturned && !hasSettled ? std::make_optional(last) : std::nullopt;
    }
    const LogEnd& End() const { return end; }
    std::uint64_t LastEnd() const { return last.end; }
    const std::string& Root() const { return rootName; }

private:
    void StartElement(std::string_view name, const XmlAttribute* attributes, std::size_t count) override
    {
        ++depth;
        text.clear();
        isReturnTime = depth == 3 && name == Words::returnTime;
        if (depth == 1)
            rootName = name;
        if (depth != 2)
            return;
        Settle();
        last = {base + parser->TagBegin().offset, 0, 0};
        hasSettled = false;
        hasReturned = false;
        isCall = std::any_of(attributes, attributes + count, [](const XmlAttribute& attribute) {
            return attribute.name == Words::callNumber;
        });
        if (isCall && last.begin + unsettled <= limit)
            resume = last.begin;
    }

    void EndElement() override
    {
        if (depth == 3 && isReturnTime && ParseTime(text))
            hasReturned = true;
        isReturnTime = false;
        if (depth == 2) {
            last.end = base + parser->Position();
            blankSince = false;
        }
        if (depth == 1 && !rootEnded) {
            rootEnded = true;
            end.rootEnded = true;
            // While a flush ends, the last tags stand a few bytes too early, without blanks between them.
            if (isCall && hasReturned && blankSince)
                Settle();
        }
        --depth;
    }

    void Text(std::string_view piece) override
    {
        if (depth == 1)
            blankSince = piece.find_first_not_of(" \t\r\n") == std::string_view::npos;
        constexpr std::size_t longestTime = 64;
        if (isReturnTime && text.size() < longestTime)
            text.append(piece.substr(0, longestTime));
    }

    void Comment(std::string_view comment) override
    {
        if (depth != 1 || rootEnded)
            return;
        Settle();
        constexpr std::size_t markup = 7;
        constexpr std::size_t longest = 4096;
        end.lastComment = comment.substr(0, longest);
        end.lastCommentAt = base + parser->Position() - comment.size() - markup;
    }

    void Settle()
    {
        if (last.end != 0)
            settled = last.end;
        hasSettled = true;
    }

    std::unique_ptr<XmlParser> parser;
    std::uint64_t base;
    std::uint64_t limit;
    std::size_t depth = 0;
    std::string rootName;
    std::string text;
    bool isReturnTime = false;
    bool rootEnded = false;

    Part last{};
    bool isCall = false;
    bool hasReturned = false;
    bool hasSettled = true;
    bool blankSince = false;  // nothing but blanks has followed the last element, and some have
    std::uint64_t settled = 0;
    std::uint64_t resume = 0;
    LogEnd end{};
};

}  // namespace

class [[gnu::visibility("hidden")]] LogFollower::Impl final : public LogHandler
{
public:
    Impl(LogHandler & itsHandler, const ReadOptions& itsOptions)
        : handler(itsHandler), options(itsOptions), buffer(pieceSize)
    {
        Begin();
    }
    ~Impl() override
    {
        Close();
    }
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;

    bool Open(const std::string& itsPath, std::string& why)
    {
        const int opened = OpenFile(itsPath, why);
        if (opened < 0)
            return false;
        path = itsPath;
        Close();
        descriptor = opened;
        Begin();
        return true;
    }

    Seen Look()
    {
        struct stat file
        {
        };
        if (fstat(descriptor, &file) != 0) {
            error = ErrorText(errno);
            return Seen::Changing;
        }
        struct stat named
        {
        };
        std::string ignored;
        if (stat(path.c_str(), &named) == 0 && !SameFile(named, file)) {
            if (const int opened = OpenFile(path, ignored); opened >= 0) {
                Scan();
                Finish();
                Close();
                descriptor = opened;
                Begin();
                return Seen::Replaced;
            }
        }
        if (std::uint64_t(file.st_size) < settled || !IsStillThere()) {
            isGone = true;
            FinishReader();
            Begin();
            return Seen::Replaced;
        }
        return IsAsBefore(file) || Scan() ? Seen::Document : Seen::Changing;
    }

    LogEnd Finish()
    {
        Deliver(~std::uint64_t(0));
        return FinishReader();
    }

    const std::optional<Call>& Last()
    {
        if (const auto place = std::exchange(toRead, {}))
            last = ReadCall(descriptor, {place->begin, place->begin, place->end}, options.limits);
        return last;
    }

    LogHeader header;
    LogEnding ending;
    std::string error;
    int descriptor = -1;

private:
    static int OpenFile(const std::string& path, std::string& why)
    {
        const int opened = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
        struct stat file
        {
        };
        if (opened < 0 || fstat(opened, &file) != 0) {
            why = ErrorText(errno);
        } else if (!S_ISREG(file.st_mode)) {
            why = "only a file can be followed";
        } else {
            return opened;
        }
        if (opened >= 0)
            close(opened);
        return -1;
    }

    void Close()
    {
        if (descriptor >= 0)
            close(descriptor);
        descriptor = -1;
    }

    /// From the beginning of the file, as of a log that nothing is known of.
    void Begin()
    {
        reader = std::make_unique<LogReader>(*this, options);
        header = {};
        ending = {};
        last.reset();
        toRead.reset();
        error.clear();
        root.clear();
        fingerprint.clear();
        scanned.reset();
        isGone = false;
        settled = delivered = resume = 0;
    }

    /// Whether what was handed on last stands where it stood.
    bool IsStillThere() const
    {
        char bytes[fingerprintSize];
        const std::size_t got =
            ReadAt(descriptor, settled - fingerprint.size(), bytes, fingerprint.size());
        return std::string_view(bytes, got) == fingerprint;
    }

    /// Nothing was written since the last scan, as far as the time of the file tells: it counts in steps.
    bool IsAsBefore(const struct stat& file) const
    {
        constexpr std::int64_t step = 50 * 1000 * 1000;
        return scanned && scanned->st_size == file.st_size &&
               Nanoseconds(scanned->st_mtim) == Nanoseconds(file.st_mtim) &&
               scannedAt - Nanoseconds(file.st_mtim) > step;
    }

    /// False when the end of the file is no document now.
    bool Scan()
    {
        struct stat file
        {
        };
        timespec now{};
        scanned.reset();
        clock_gettime(CLOCK_REALTIME, &now);
        if (fstat(descriptor, &file) != 0)
            return false;
        const auto size = std::uint64_t(file.st_size);
        ScrivelReader::Scan scan(resume, root, size);
        std::uint64_t at = resume;
        while (true) {
            const std::size_t got = ReadAt(descriptor, at, buffer.data(), buffer.size());
            if (got == 0 || !scan.Feed(buffer.data(), got))
                break;
            at += got;
        }
        if (!scan.IsDocument()) {
            error = scan.Error();
            return false;
        }
        scanned = file;
        scannedAt = Nanoseconds(now);
        error.clear();
        if (resume == 0)
            root = scan.Root();
        resume = std::max(resume, scan.Resume());
        last.reset();
        toRead = scan.Last();
        ending = EndingOf(scan.End(), scan.LastEnd());
        if (scan.Settled() > settled) {
            settled = scan.Settled();
            Deliver(settled);
            fingerprint.resize(std::size_t(std::min<std::uint64_t>(fingerprintSize, settled)));
            fingerprint.resize(
                ReadAt(descriptor, settled - fingerprint.size(), fingerprint.data(), fingerprint.size()));
        }
        return true;
    }

    /// Gives the reader the bytes of the file up to an offset, or its end.
    void Deliver(std::uint64_t to)
    {
        while (delivered < to) {
            const std::size_t got =
                ReadAt(descriptor, delivered, buffer.data(),
                       std::size_t(std::min<std::uint64_t>(to - delivered, buffer.size())));
            if (got == 0)
                break;
            reader->Feed({buffer.data(), got});
            delivered += got;
        }
    }

    LogEnd FinishReader()
    {
        LogEnd end = reader->Finish();
        reader = std::make_unique<LogReader>(*this, options);
        return end;
    }

    // ---- LogHandler: what the reader says goes on to the handler ------------------------------------
    void Header(const LogHeader& itsHeader) override
    {
        header = itsHeader;
        handler.Header(itsHeader);
    }
    void Entered(const Call& call) override
    {
        handler.Entered(call);
    }
    void Element(const Call& call) override
    {
        handler.Element(call);
    }
    void Ended(Call & call) override
    {
        handler.Ended(call);
    }
    void TakenBack(const Call& call) override
    {
        handler.TakenBack(call);
    }
    void Comment(std::string_view text, const Part& place) override
    {
        handler.Comment(text, place);
    }
    void Other(const Part& place) override
    {
        handler.Other(place);
    }
    void Damaged(const Damage& damage) override
    {
        if (!isGone)
            handler.Damaged(damage);
    }

    LogHandler& handler;
    const ReadOptions options;
    std::string path;
    std::unique_ptr<LogReader> reader;
    std::vector<char> buffer;
    std::string root;
    std::uint64_t settled = 0;    // what lies before this offset stays as it is
    std::uint64_t delivered = 0;  // and was handed on up to this one
    std::uint64_t resume = 0;
    std::optional<Part> toRead;  // where the last call stands that has not been read
    std::optional<Call> last;
    std::string fingerprint;             // the bytes before settled
    std::optional<struct stat> scanned;  // the file, as the last good scan began
    std::int64_t scannedAt = 0;
    bool isGone = false;  // the file holds another log: what can't be read of this one is no damage
};

LogFollower::LogFollower(LogHandler& handler, const ReadOptions& options)
    : impl(std::make_unique<Impl>(handler, options))
{
}

LogFollower::~LogFollower() = default;

bool LogFollower::Open(const std::string& path, std::string& error)
{
    return impl->Open(path, error);
}

LogFollower::Seen LogFollower::Look()
{
    return impl->Look();
}

LogEnd LogFollower::Finish()
{
    return impl->Finish();
}

const LogHeader& LogFollower::Header() const
{
    return impl->header;
}

LogEnding LogFollower::Ending() const
{
    return impl->ending;
}

const std::optional<Call>& LogFollower::Last() const
{
    return impl->Last();
}

const std::string& LogFollower::Error() const
{
    return impl->error;
}

int LogFollower::Descriptor() const
{
    return impl->descriptor;
}

}  // namespace ScrivelReader
