// Lines of calls in order of entry, in memory and in a file. Tested by tests/tool/EntryOrderTest.cpp.

#include "EntryOrder.h"

#include <cerrno>
#include <system_error>
#include <unistd.h>
#include <utility>

#include "scrivel/LogInput.h"

namespace ScrivelTool
{

namespace
{

constexpr std::size_t mostWaiting = 4096;
constexpr std::size_t mostBytes = 1024 * 1024;

/// What stands in the file in front of a line's text.
struct Head
{
    std::uint64_t size;
    bool ended;
    bool chosen;
};

}  // namespace

EntryOrder::~EntryOrder()
{
    if (file != nullptr) {
        std::fclose(file);
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
    while (!waiting.empty() && waiting.front()) {
        bytes -= waiting.front()->text.size();
        take(std::move(*waiting.front()));
        waiting.pop_front();
        foremost = ++first;
    }
}

void EntryOrder::MoveToFile()
{
    if (file == nullptr) {
        std::string ignored;
        const int descriptor = ScrivelReader::MakeUnnamedFile(ignored);
        file = descriptor < 0 ? nullptr : fdopen(descriptor, "w+b");
        if (file == nullptr && descriptor >= 0) {
            close(descriptor);
        }
    }
    // Without room for a file the lines stay where they are.
    noFile = file == nullptr || std::fseek(file, writeAt, SEEK_SET) != 0;
    while (!noFile && !waiting.empty()) {
        if (Write(waiting.front())) {
            bytes -= waiting.front() ? waiting.front()->text.size() : 0;
            waiting.pop_front();
            ++first;
        } else {
            noFile = true;
        }
    }
    if (file != nullptr && std::fflush(file) != 0) {
        Lose();
    }
}

bool EntryOrder::Write(const std::optional<Line>& line)
{
    Head head{};
    if (line) {
        head = {line->text.size(), true, line->chosen};
    }
    if (std::fwrite(&head, sizeof head, 1, file) != 1 ||
        (head.size != 0 && std::fwrite(line->text.data(), head.size, 1, file) != 1)) {
        return false;
    }
    writeAt += long(sizeof head + head.size);
    return true;
}

/// Hands on the foremost line, which is in the file. False when its call is open.
bool EntryOrder::TakeFromFile()
{
    Head head{};
    if (std::ftell(file) != readAt && std::fseek(file, readAt, SEEK_SET) != 0) {
        Lose();
    } else if (std::fread(&head, sizeof head, 1, file) != 1) {
        Lose();
    }
    Line line;
    if (head.ended) {
        line.chosen = head.chosen;
        line.text.resize(head.size);
        if (head.size != 0 && std::fread(line.text.data(), head.size, 1, file) != 1) {
            Lose();
        }
    } else {
        const auto known = late.find(foremost);
        if (known == late.end()) {
            return false;
        }
        line = std::move(known->second);
        late.erase(known);
    }
    readAt += long(sizeof head + head.size);
    ++foremost;
    take(std::move(line));
    return true;
}

void EntryOrder::Lose()
{
    if (error.empty()) {
        error = "lines are missing, as they didn't fit into the folder of temporary files: " +
                std::generic_category().message(errno);
    }
}

}  // namespace ScrivelTool
