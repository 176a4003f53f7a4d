// The text since the last flush, in memory, and its way to the file; LogBuffer.cpp draws its states.
// Tested by tests/stream/LogBufferTest.cpp, beside a std::ofstream by
// tests/stream/StreamBesideOfstreamTest.cpp, beyond what memory may hold by
// tests/stream/HugeFlushTest.cpp.

#ifndef SCRIVEL_STREAM_LOGBUFFER_H
#define SCRIVEL_STREAM_LOGBUFFER_H

#include "scrivel/LogStream.h"
#include "stream/Block.h"
#include "stream/FileTail.h"
#include "stream/OpenFile.h"
#include "stream/Pieces.h"
#include "stream/SteppedFlush.h"
#include "stream/SyncedFlush.h"

#include <algorithm>
#include <cstddef>
#include <ios>

#include <sys/types.h>

namespace Scrivel2
{

class LogBuffer final : public PutArea
{
public:
    bool Open(const char* name);
    bool Create(const char* name);
    bool IsOpen() const { return file.IsOpen(); }
    bool Close();

    void TakeBack(off_t position);
    void DropFrom(off_t position);
    void SetMostInMemory(std::size_t size)
    {
        constexpr auto page = static_cast<std::size_t>(Block::pageSize);
        mostInMemory = std::max(size, 2 * page) - page;
    }
    bool IsOutOfMemory() const { return outOfMemory; }
    void SetDurability(Durability wanted) { file.SetDurability(wanted); }

    void HoldFlushes() { ++holds; }
    void ReleaseFlushes() { --holds; }

protected:
    char* MakeRoom(std::size_t most) override;
    int_type overflow(int_type character) override;
    std::streamsize xsputn(const char* characters, std::streamsize length) override;
    int sync() override;
    pos_type seekoff(off_type offset, std::ios_base::seekdir from, std::ios_base::openmode) override;
    pos_type seekpos(pos_type position, std::ios_base::openmode) override;

private:
    enum class State
    {
        Closed,
        Clean,
        Pending,
        Pieces
    };
    State CurrentState() const;

    // The arrows between the states.
    bool GetMemory();
    bool IsFileAsLeft();
    void Start();
    bool Flush();
    bool WriteOutPiece(bool goesOn);
    void TakeTextAsTail();
    void KeepMarkupBeforePageEnd(off_t end);
    void BeginOutsideOfMarkup();
    void DropText();
    bool BringBack(off_t end);

    // The text in memory.
    /// The end of what has been written: a seek alone does not move it.
    char* TextEnd() const { return pptr() > sought ? std::max(textHighest, pptr()) : textHighest; }
    off_t EndOfText() const { return textStart + (TextEnd() - pbase()); }
    /// The end that the file has when the text is written: the place of a seek alone does not count.
    off_t EndOfFile() const
    {
        const off_t written = pieces.Any() ? std::max(tail.End(), pieces.End()) : tail.End();
        return TextEnd() > pbase() ? std::max(written, EndOfText()) : written;
    }
    off_t Position() const { return textStart + (pptr() - pbase()); }
    FlushText Text() const { return {pbase(), textStart, EndOfText()}; }
    void StartTextAt(off_t position);

    /// Lets the put area be the memory of the text, or so much of it that a piece ends where it should.
    void SetPutArea(std::size_t wanted)
    {
        setp(block.Bytes(), block.Bytes() + std::min(block.Capacity(), std::max(wanted, mostInMemory)));
    }

    bool Enlarge(std::size_t wanted);
    bool ExtendText(off_t from, off_t to);
    bool MoveTo(off_t target);
    void BeginEarlier(off_t start);
    bool LetTextEndFile();

    // Writing.
    bool WriteText();
    bool CommitPieces();
    bool WriteSynchronised();
    template <typename Steps>
    SteppedFlush::Outcome WriteInSteps(Steps steps);
    bool Finish(SteppedFlush::Outcome outcome);
    bool WriteInOneGo();
    void BlankText();
    void PutTailBack();

    OpenFile file;
    FileTail tail{file};
    unsigned int holds = 0;
    static constexpr unsigned int flushesPerLook = 100;
    unsigned int flushesUntilLook = flushesPerLook;
    bool outOfMemory = false;  // text has been dropped

    Block block;                  // of the text: the put area begins with it
    off_t textStart = 0;          // the text's place in the file
    char* textHighest = nullptr;  // its end as it was before the last seek
    char* sought = nullptr;       // where the last seek left the put pointer

    /// What a text takes before it is written out: less than memory may hold, as its start may be earlier
    /// on its page.
    std::size_t mostInMemory = Block::mostInMemory - Block::pageSize;

    Block covered;  // for flushes in steps and in pieces, kept from one to the next
    Pieces pieces{file, tail, covered};
};

}  // namespace Scrivel2

#endif
