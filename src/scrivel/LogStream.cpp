// The stream over a LogBuffer: the states of a std::ostream, and nothing of the file itself. Tested by
// tests/stream/LogStreamTest.cpp.

#include "scrivel/LogStream.h"

#include "stream/LogBuffer.h"

namespace Scrivel2
{

LogStream::LogStream() : std::ostream(nullptr), putArea(std::make_unique<LogBuffer>())
{
    rdbuf(putArea.get());
    imbue(std::locale::classic());  // digits stay plain whatever the program's locale is
}

LogStream::~LogStream() = default;

LogBuffer& LogStream::Buffer() const
{
    return static_cast<LogBuffer&>(*putArea);
}

void LogStream::open(const std::string& name)
{
    Opened(Buffer().Open(name.c_str()));
}

void LogStream::create(const std::string& name)
{
    Opened(Buffer().Create(name.c_str()));
}

void LogStream::Opened(bool success)
{
    if (success) {
        clear();
    } else {
        setstate(failbit);
    }
}

bool LogStream::is_open() const
{
    return Buffer().IsOpen();
}

void LogStream::close()
{
    if (!Buffer().Close()) {
        setstate(failbit);
    }
}

/// As any other insertion, but for the error state of a stream that has failed already.
void LogStream::Insert(std::string_view text)
{
    if (good()) {
        *this << text;
    }
}

void LogStream::swap(LogStream& other)
{
    const iostate state = rdstate();
    const iostate othersState = other.rdstate();
    putArea.swap(other.putArea);
    rdbuf(putArea.get());
    other.rdbuf(other.putArea.get());
    clear(othersState);
    other.clear(state);
}

void LogStream::TakeBack(std::streamoff position)
{
    if (IsOutOfMemory()) {
        clear();
    }
    if (good()) {
        Buffer().TakeBack(position);
    }
}

void LogStream::DropFrom(std::streamoff position)
{
    if (good()) {
        Buffer().DropFrom(position);
    }
    if (IsOutOfMemory()) {
        setstate(badbit);
    }
}

void LogStream::SetDurability(Durability durability)
{
    Buffer().SetDurability(durability);
}

void LogStream::SetMostInMemory(std::size_t size)
{
    Buffer().SetMostInMemory(size);
}

bool LogStream::IsOutOfMemory() const
{
    return Buffer().IsOutOfMemory();
}

LogStream::FlushHold::FlushHold(LogStream& stream) : buffer(stream.Buffer())
{
    buffer.HoldFlushes();
}

LogStream::FlushHold::~FlushHold()
{
    buffer.ReleaseFlushes();
}

}  // namespace Scrivel2
