// The text of a flush that has been written out ahead of it, as memory does not hold all of it;
// Pieces.cpp draws how it is hidden. Tested by tests/stream/HugeFlushTest.cpp.

#ifndef SCRIVEL_STREAM_PIECES_H
#define SCRIVEL_STREAM_PIECES_H

#include "stream/Block.h"
#include "stream/Cover.h"
#include "stream/FileTail.h"
#include "stream/FlushText.h"
#include "stream/OpenFile.h"
#include "stream/Staging.h"

#include <optional>
#include <string>
#include <string_view>

#include <sys/types.h>

namespace Scrivel2
{

class Pieces
{
public:
    /// `memory` is that of Staging.
    Pieces(OpenFile& flushed, FileTail& replaced, Block& memory);

    bool Any() const { return state != State::None; }
    off_t Start() const { return start; }  ///< of the flush's text
    off_t End() const { return end; }      ///< of what has been written of it
    off_t EndOfFile() const { return fileEnd; }

    /// As SteppedFlush's, for the first piece.
    std::optional<off_t> BetterStart(const FlushText& first) const;

    /// Writes a piece. False when a write has failed: then the file is again what the last flush left,
    /// and there are no pieces.
    bool Write(const FlushText& piece);

    /// Writes the last piece, or the only one, and makes all of them the end of the file; false as Write.
    bool Commit(const FlushText& piece);

    /// Copies the bytes from the start of the pieces up to `to`; false when they can't be read.
    bool Read(off_t to, char* out) const;

    /// Makes the file again what the last flush left.
    void TakeBack();

    /// After a commit.
    void Forget() { state = State::None; }

private:
    enum class State
    {
        None,
        Hidden,
        Bare
    };

    void Begin(const FlushText& first);
    bool Hide(const FlushText& first);
    bool ReplacesTailInOnePage(const FlushText& first, off_t instruction) const;
    bool Prepare(const FlushText& piece);
    bool StaysHidden(const FlushText& piece);
    bool Uncover();
    off_t Instruction() const;
    bool Append(const FlushText& piece, std::string_view trailer);
    bool AppendInPageOrder(const FlushText& staged, std::string_view trailer);
    bool AppendSynchronised(const FlushText& staged, std::string_view trailer);
    bool AppendBare(const FlushText& piece);
    bool AppendLast(const FlushText& piece);
    bool CommitHidden();
    bool CommitTail();
    bool CutTrailer();
    bool WriteKept(off_t to);

    OpenFile& file;
    FileTail& tail;
    Staging staging;
    State state = State::None;
    off_t start = 0;
    off_t end = 0;
    off_t fileEnd = 0;
    off_t hiddenFrom = 0;          // where the opening after the tail ends
    const Cover* cover = nullptr;  // of a tail that lies across pages
    Block kept;                    // the text from its start up to there, which is written last
    std::string lastBytes;         // two at most, before `end`
    bool tailTouched = false;
};

}  // namespace Scrivel2

#endif
