// The log file's stream: an output stream that changes the file only when it is flushed, and changes
// it so that a process killed at any instant leaves a file that ends in a complete closing text.
//
// LogStream is a std::ostream with the open(), is_open() and close() of std::ofstream. What differs:
//
//  - Text stays in memory until flush(). Between two flushes no system call touches the file, so
//    whoever seeks back and overwrites does it in memory.
//  - A flush replaces the end of the file in one step (LogStream.cpp draws how).
//  - A flush happens wholly or not at all: when a write fails, the file is again as the flush before
//    left it, the stream is bad, and later output vanishes until the stream is opened anew.
//  - Destroying the stream closes the file and writes nothing.
//
// One thread at a time may use a stream, as any other.

#ifndef SCRIVEL_SCRIVEL_LOGSTREAM_H
#define SCRIVEL_SCRIVEL_LOGSTREAM_H

#include <cstddef>
#include <locale>
#include <memory>
#include <ostream>
#include <streambuf>
#include <string>
#include <string_view>

#include <sys/types.h>

namespace Scrivel2
{

// What a shared library shows, also when it is built to hide what isn't marked.
class [[gnu::visibility("default")]] LogBuffer;
class [[gnu::visibility("default")]] LogStream;

/// The buffer behind a LogStream: owns the descriptor, the text since the last flush and a copy of
/// the end of the file. LogStream.cpp tells its states.
class LogBuffer final : public std::streambuf
{
public:
    LogBuffer() = default;
    ~LogBuffer() override;
    LogBuffer(const LogBuffer&) = delete;
    LogBuffer& operator=(const LogBuffer&) = delete;

    bool Open(const char* name);
    bool IsOpen() const { return descriptor >= 0; }
    bool Close();

    /// Where the next characters go, with room for `most` of them; null when there is no memory for
    /// them or no open file. What is then written there counts once Advance has been given its end.
    char* Room(std::size_t most)
    {
        return static_cast<std::size_t>(epptr() - pptr()) >= most ? pptr() : MakeRoom(most);
    }
    void Advance(const char* end) { pbump(static_cast<int>(end - pptr())); }

    void Hold() { ++holds; }
    void Release() { --holds; }

protected:
    int_type overflow(int_type character) override;
    std::streamsize xsputn(const char* text, std::streamsize length) override;
    int sync() override;
    pos_type seekoff(off_type offset, std::ios_base::seekdir from, std::ios_base::openmode) override;
    pos_type seekpos(pos_type position, std::ios_base::openmode) override;

private:
    /// Memory that grows and is never given back, with a little room behind its capacity.
    struct Block
    {
        std::unique_ptr<char[]> bytes;
        std::size_t capacity = 0;

        /// Makes the capacity `wanted` at least and keeps the first `used` bytes; false without memory.
        bool Grow(std::size_t wanted, std::size_t used);
    };

    class FileSizeSignal;

    // The text in memory.
    char* MakeRoom(std::size_t most);
    bool Enlarge(std::size_t wanted);
    void DropText();
    char* TextEnd() const;
    off_t EndOffset() const { return textStart + (TextEnd() - pbase()); }
    off_t EndOfFile() const;
    off_t Position() const { return textStart + (pptr() - pbase()); }
    std::string_view Text() const { return {pbase(), static_cast<std::size_t>(TextEnd() - pbase())}; }
    char* At(off_t offset) const { return pbase() + (offset - textStart); }
    void StartTextAt(off_t position);
    bool Reach(off_t from, off_t to);
    bool MoveTo(off_t target);

    // The end of the file.
    bool KnowTail(off_t from);
    /// What the text replaces, when `tail` covers that.
    std::string_view Tail() const
    {
        return {tail.bytes.get() + (textStart - tailStart),
                static_cast<std::size_t>(fileEnd - textStart)};
    }
    void CopyFromFile(off_t from, off_t to, char* out) const;
    void KeepTail(off_t end);
    void PutTailBack(FileSizeSignal& signal);

    // Writing.
    bool Commit();
    bool WriteFlush(off_t end, FileSizeSignal& signal);
    bool LeadToOpening();
    bool CanHideTail() const;
    bool WriteOutPiece();
    bool WriteWhole(off_t end, FileSizeSignal& signal);
    bool StageAndMerge(off_t opener, off_t end, FileSizeSignal& signal);
    bool StageToHide(off_t end, FileSizeSignal& signal);
    bool HideAndCommit(off_t end, FileSizeSignal& signal);
    bool Stage(std::string_view marks, off_t end, FileSizeSignal& signal);
    bool WriteText(off_t from, off_t to, FileSizeSignal& signal);
    bool Write(const char* bytes, std::size_t length, off_t offset, FileSizeSignal& signal);
    bool CutAt(off_t end);
    bool RoomForMarks(off_t end);
    template <typename Visit>
    void VisitMarks(std::string_view marks, off_t end, Visit visit) const;

    int descriptor = -1;
    unsigned int holds = 0;

    Block text;                   // since the last flush: the put area begins with it
    off_t textStart = 0;          // its place in the file
    char* textHighest = nullptr;  // its end as it was before the last seek
    char* sought = nullptr;       // where the last seek left the put pointer

    Block tail;  // the file's bytes from tailStart to fileEnd, as the last flush left them
    off_t tailStart = 0;
    off_t fileEnd = 0;

    off_t pieceStart = -1;  // what has been written out since then, ahead of its flush: -1 for nothing
    off_t pieceEnd = -1;

    Block covered;  // the true bytes under the marks of a staged flush
};

class LogStream final : public std::ostream
{
public:
    LogStream() : std::ostream(nullptr)
    {
        rdbuf(&buffer);
        imbue(std::locale::classic());  // digits stay plain whatever the program's locale is
    }
    ~LogStream() override;

    /// Creates or empties the file and clears the stream's error state; sets the fail state, with the
    /// reason in errno, when that can't be done. When a file is open already the fail state is set
    /// and errno left alone. The name of a FIFO fails at once.
    void open(const std::string& name);

    bool is_open() const { return buffer.IsOpen(); }

    /// Flushes and closes; sets the fail state when either fails or no file is open.
    void close();

    /// Appends text as it is, past the stream's formatting: the writers' way in. Like any output it
    /// vanishes when the stream has failed.
    void Append(std::string_view characters)
    {
        constexpr std::size_t mostAtOnce = 1024 * 1024;
        if (characters.size() > mostAtOnce) {
            write(characters.data(), static_cast<std::streamsize>(characters.size()));
            return;
        }
        if (char* place = Room(characters.size())) {
            characters.copy(place, characters.size());
            Advance(place + characters.size());
        }
    }

    /// The put position in memory with room for `most` characters, or null when the stream has failed
    /// (or has just failed for want of memory). Advance takes the end of what was written there.
    char* Room(std::size_t most)
    {
        if (!good()) {
            return nullptr;
        }
        char* const place = buffer.Room(most);
        if (place == nullptr && most > 0) {
            setstate(badbit);
        }
        return place;
    }
    void Advance(const char* textEnd) { buffer.Advance(textEnd); }

    /// While one of these lives, flushing its stream does nothing; the next flush after it writes all.
    class FlushHold
    {
    public:
        explicit FlushHold(LogStream& stream) : buffer(stream.buffer) { buffer.Hold(); }
        ~FlushHold() { buffer.Release(); }
        FlushHold(const FlushHold&) = delete;
        FlushHold& operator=(const FlushHold&) = delete;

    private:
        LogBuffer& buffer;
    };

private:
    LogBuffer buffer;
};

}  // namespace Scrivel2

#endif
