// Lines of calls in order of entry, in memory and in a file. Tested by tests/tool/EntryOrderTest.cpp.

#include "EntryOrder.h"

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <unistd.h>
#include <utility>
#include <vector>

#include "scrivel/LogInput.h"

namespace ScrivelTool
{

namespace
{

constexpr std::size_t mostWaiting = 4096;
constexpr std::size_t mostBytes = 1024 * 1024;
constexpr std::size_t mostRead = 64 * 1024;

/// What stands in the file in front of a line's text.
struct Head
{
    std::uint64_t size;
    bool ended;
    bool chosen;
};

void Append(const std::optional<Line>& line, std::string& batch)
{
    Head head{};
    if (line) {
        head = {line->text.size(), true, line->chosen};
    }
    batch.append(reinterpret_cast<const char*>(&head), sizeof head);
    if (line) {
        batch.append(line->text);
    }
}

}  // namespace

EntryOrder::~EntryOrder()
{
    if (file >= 0) {
        close(file);
    }
}

void EntryOrder::Entered()
{
    if (!noFile && (waiting.size() >= mostWaiting || bytes >= mostBytes)) {
        MoveToFile();
    }
    waiting.emplace_back();
}

void EntryOrder::Ended(std::uint64_t entry, Line line)
{
    if (entry < first) {
        late.emplace(entry, std::move(line));
    } else {
        bytes += line.text.size();
        waiting[std::size_t(entry - first)] = std::move(line);
    }
    if (entry != foremost) {
        return;
    }
    while (foremost != first) {
        if (!TakeFromFile()) {
            return;
        }
    }
    readAt = writeAt = 0;
    buffer.clear();
    while (!waiting.empty() && waiting.front()) {
        bytes -= waiting.front()->text.size();
        take(std::move(*waiting.front()));
        waiting.pop_front();
        foremost = ++first;
    }
}

void EntryOrder::MoveToFile()
{
    if (file < 0) {
        std::string ignored;
        file = ScrivelReader::MakeUnnamedFile(ignored);
    }
    std::string batch;
    std::vector<std::size_t> ends;
    for (const std::optional<Line>& line : waiting) {
        Append(line, batch);
        ends.push_back(batch.size());
    }
    // Lines for which the file has no room stay where they are.
    const std::size_t written = Write(batch);
    noFile = written != batch.size();
    std::size_t moved = 0;
    for (; moved != ends.size() && ends[moved] <= written; ++moved) {
        bytes -= waiting.front() ? waiting.front()->text.size() : 0;
        waiting.pop_front();
    }
    first += moved;
    writeAt += moved == 0 ? 0 : ends[moved - 1];
}

/// How many of the bytes stand in the file now.
std::size_t EntryOrder::Write(std::string_view batch) const
{
    std::size_t done = 0;
    while (file >= 0 && done != batch.size()) {
        const ssize_t written =
            pwrite(file, batch.data() + done, batch.size() - done, off_t(writeAt + done));
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            break;
        }
        done += std::size_t(written);
    }
    return done;
}

/// Hands on the foremost line, which is in the file. False when its call is open.
bool EntryOrder::TakeFromFile()
{
    Head head{};
    if (!Read(readAt, reinterpret_cast<char*>(&head), sizeof head)) {
        return false;
    }
    Line line;
    if (head.ended) {
        line.chosen = head.chosen;
        line.text.resize(head.size);
        if (!Read(readAt + sizeof head, line.text.data(), head.size)) {
            return false;
        }
    } else {
        const auto known = late.find(foremost);
        if (known == late.end()) {
            return false;
        }
        line = std::move(known->second);
        late.erase(known);
    }
    readAt += sizeof head + head.size;
    ++foremost;
    take(std::move(line));
    return true;
}

bool EntryOrder::Read(std::uint64_t offset, char* to, std::size_t size)
{
    while (size != 0) {
        if (offset < bufferAt || offset >= bufferAt + buffer.size()) {
            buffer.resize(std::size_t(std::min<std::uint64_t>(mostRead, writeAt - offset)));
            bufferAt = offset;
            const ssize_t got = pread(file, buffer.data(), buffer.size(), off_t(offset));
            buffer.resize(std::size_t(std::max<ssize_t>(got, 0)));
            if (got < 0 && errno == EINTR) {
                continue;
            }
            if (got <= 0) {
                Lose(got < 0 ? errno : EIO);
                return false;
            }
        }
        const std::size_t copied = buffer.copy(to, size, std::size_t(offset - bufferAt));
        offset += copied;
        to += copied;
        size -= copied;
    }
    return true;
}

void EntryOrder::Lose(int number)
{
    if (error.empty()) {
        error = "lines are missing, as they can't be read from the folder of temporary files: " +
                std::generic_category().message(number);
    }
}

}  // namespace ScrivelTool
