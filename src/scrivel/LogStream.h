// The log file's stream: an output stream that changes the file only when it is flushed, and changes
// it so that a process killed at any instant leaves a complete document.
//
// LogStream is a std::ostream with the open(), is_open() and close() of std::ofstream. What differs:
//
//  - Text stays in memory until flush(). Between two flushes no system call touches the file, so
//    whoever seeks back and overwrites does it in memory.
//  - A flush replaces the end of the file in one step (stream/SteppedFlush.cpp draws how).
//  - A flush happens wholly or not at all: when a write fails, the file is again as the flush before
//    left it, the stream is bad, and later output vanishes until the stream is opened anew.
//  - Destroying the stream closes the file and writes nothing.
//
// One thread at a time may use a stream, as any other. Tested by tests/stream.

#ifndef SCRIVEL_SCRIVEL_LOGSTREAM_H
#define SCRIVEL_SCRIVEL_LOGSTREAM_H

#include "scrivel/Durability.h"

#include <cstddef>
#include <limits>
#include <locale>
#include <memory>
#include <ostream>
#include <streambuf>
#include <string>
#include <string_view>

namespace Scrivel2
{

class LogBuffer;

// What a shared library shows, also when it is built to hide what isn't marked.
class [[gnu::visibility("default")]] LogStream;

/// The way in for text: the memory that the next characters go to.
class PutArea : public std::streambuf
{
public:
    /// Where the next characters go, with room for `most` of them; null when there is no memory for
    /// them or no open file. What is then written there counts once Advance has been given its end.
    char* Room(std::size_t most) { return AtHand() >= most ? pptr() : MakeRoom(most); }
    void Advance(const char* end)
    {
        if (end - pptr() > std::numeric_limits<int>::max()) {
            AdvanceFar(end);
        } else {
            pbump(static_cast<int>(end - pptr()));
        }
    }

    /// As Room, but only when memory has it already.
    char* RoomAtHand(std::size_t most) const { return AtHand() >= most ? pptr() : nullptr; }
    std::size_t AtHand() const { return static_cast<std::size_t>(epptr() - pptr()); }

    /// Takes text for which there is room already; false when there isn't.
    bool Take(std::string_view text)
    {
        if (AtHand() < text.size()) {
            return false;
        }
        Advance(pptr() + text.copy(pptr(), text.size()));
        return true;
    }

protected:
    virtual char* MakeRoom(std::size_t most) = 0;

private:
    [[gnu::noinline, gnu::cold]] void AdvanceFar(const char* end)
    {
        constexpr int most = std::numeric_limits<int>::max();
        while (end - pptr() > most) {
            pbump(most);
        }
        pbump(static_cast<int>(end - pptr()));
    }
};

class LogStream final : public std::ostream
{
public:
    LogStream();
    ~LogStream() override;

    /// Creates or empties the file and clears the stream's error state; sets the fail state, with the
    /// reason in errno, when that can't be done. When a file is open already the fail state is set
    /// and errno left alone. A name that leads to something without places to seek to, a FIFO or a
    /// terminal, fails at once.
    void open(const std::string& name);

    /// As open, but of a new file: one of that name stays as it is. The file appears when it is flushed
    /// for the first time, with all that was written, or not at all: when it can't be made, or there is
    /// one of that name (EEXIST), the flush fails, with the reason in errno. Where a file system has no
    /// files without names an empty one is there from now on; it goes again when the flush fails.
    void create(const std::string& name);

    bool is_open() const;

    /// Flushes and closes; sets the fail state when either fails or no file is open.
    void close();

    /// Appends text: the writers' way in. Of the stream's formatting only the width counts, which goes to
    /// the first text after it was set, as with any insertion. Like any output the text vanishes when the
    /// stream has failed.
    void Append(std::string_view text)
    {
        if (!IsPlain() || !putArea->Take(text)) {
            Insert(text);
        }
    }

    /// The put position in memory with room for `most` characters, or null when the stream has failed
    /// (or has just failed for want of memory). Advance takes the end of what was written there. A width
    /// that is set stays for what is inserted next.
    char* Room(std::size_t most)
    {
        if (!good()) {
            return nullptr;
        }
        char* const place = putArea->Room(most);
        if (place == nullptr && most > 0) {
            setstate(badbit);
        }
        return place;
    }

    /// As Room, after `first`, which is appended: it takes a width that is set.
    char* RoomAfter(std::string_view first, std::size_t most)
    {
        if (!IsPlain()) {
            Insert(first);
            return Room(most);
        }
        char* const place = Room(first.size() + most);
        return place == nullptr ? nullptr : place + first.copy(place, first.size());
    }
    void Advance(const char* textEnd) { putArea->Advance(textEnd); }

    /// Exchanges the files, with the text for them.
    void swap(LogStream& other);

    /// Takes back all text since the last flush, and goes to `position`. A stream that is bad for want of
    /// memory alone is good again; one whose file has failed stays bad.
    void TakeBack(std::streamoff position);

    /// Drops the text since the last flush from `position` on, and goes there. When that much can't be
    /// dropped for want of memory, the stream is bad as after any lack of it.
    void DropFrom(std::streamoff position);

    /// What the file outlives from now on: to be said before it is opened.
    void SetDurability(Durability durability);

    /// What the text of a flush may take in memory, 64 MiB unless told. What is more goes to the file
    /// ahead of the flush, hidden after the end of the document.
    void SetMostInMemory(std::size_t size);

    /// Whether memory has ended: no text is taken, and what came since the last flush is gone.
    bool IsOutOfMemory() const;

    /// The put position for text that is put down without a look at the stream's formatting: null unless
    /// the stream is good, has no width set and writes decimal, and memory has room for `most` characters
    /// (at least one) already.
    char* RoomForPlain(std::size_t most) const
    {
        const bool isDecimal = (flags() & std::ios_base::basefield) == std::ios_base::dec;
        return IsPlain() && isDecimal ? putArea->RoomAtHand(most) : nullptr;
    }
    std::size_t AtHand() const { return putArea->AtHand(); }

    // As a std::ostream's. What its sentry would do is left out while there is nothing for it to do.

    pos_type tellp()
    {
        return NeedsSentry() ? std::ostream::tellp()
                             : putArea->pubseekoff(0, std::ios_base::cur, std::ios_base::out);
    }

    using std::ostream::seekp;
    LogStream& seekp(pos_type position)
    {
        if (NeedsSentry()) {
            std::ostream::seekp(position);
        } else if (putArea->pubseekpos(position, std::ios_base::out) == pos_type(off_type(-1))) {
            setstate(failbit);
        }
        return *this;
    }

    LogStream& flush()
    {
        if (NeedsSentry()) {
            std::ostream::flush();
        } else if (putArea->pubsync() == -1) {
            setstate(badbit);
        }
        return *this;
    }

    /// While one of these lives, flushing its stream does nothing; the next flush after it writes all.
    class FlushHold
    {
    public:
        explicit FlushHold(LogStream& stream);
        ~FlushHold();
        FlushHold(const FlushHold&) = delete;
        FlushHold& operator=(const FlushHold&) = delete;

    private:
        LogBuffer& buffer;
    };

private:
    /// Whether text goes to the put area as it is: good, and no width is set.
    bool IsPlain() const { return (static_cast<std::streamsize>(rdstate()) | width()) == 0; }

    /// Whether a sentry would do more than find the stream good, or the stream has been given another
    /// buffer than its own.
    bool NeedsSentry() const
    {
        return !good() || tie() != nullptr || (flags() & std::ios_base::unitbuf) != 0 ||
               rdbuf() != putArea.get();
    }

    void Insert(std::string_view text);

    void Opened(bool success);

    LogBuffer& Buffer() const;

    std::unique_ptr<PutArea> putArea;  // of the LogBuffer
};

}  // namespace Scrivel2

#endif
