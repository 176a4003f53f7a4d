// Puts what is made of calls as they end back into the order in which they were entered.

#ifndef SCRIVEL_TOOL_ENTRYORDER_H
#define SCRIVEL_TOOL_ENTRYORDER_H

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace ScrivelTool
{

/// One call's line, and whether the filter chose it or it stands by for the context.
struct Line
{
    std::string text;
    bool chosen = false;
};

/// Lines wait for those of earlier calls that have not ended. A call may stay open through a whole log:
/// lines that wait long wait in a file without a name, and memory stays as it is.
class EntryOrder
{
public:
    explicit EntryOrder(std::function<void(Line&&)> itsTake) : take(std::move(itsTake)) {}
    ~EntryOrder();
    EntryOrder(const EntryOrder&) = delete;
    EntryOrder& operator=(const EntryOrder&) = delete;

    /// Calls are entered one after another, as the reader counts them.
    void Entered();
    /// The call that was entered last never was one.
    void TakenBack() { waiting.pop_back(); }
    /// Hands on this line and those after it, as far as all before them have ended.
    void Ended(std::uint64_t entry, Line line);

    /// Why lines are missing; empty when none is.
    const std::string& Error() const { return error; }

private:
    void MoveToFile();
    std::size_t Write(std::string_view bytes) const;
    bool TakeFromFile();
    bool Read(std::uint64_t offset, char* to, std::size_t size);
    void Lose(int number);

    std::function<void(Line&&)> take;

    // Entries, in their order:   [foremost, first) in the file   [first, ...) in waiting
    std::uint64_t foremost = 0;
    std::uint64_t first = 0;
    std::deque<std::optional<Line>> waiting;
    std::size_t bytes = 0;               // of the lines in waiting
    std::map<std::uint64_t, Line> late;  // of calls that were open when they went into the file

    int file = -1;
    bool noFile = false;
    std::uint64_t readAt = 0;
    std::uint64_t writeAt = 0;
    std::string buffer;  // bytes of the file
    std::uint64_t bufferAt = 0;
    std::string error;
};

}  // namespace ScrivelTool

#endif
