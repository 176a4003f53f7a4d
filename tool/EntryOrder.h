// Puts what is made of calls as they end back into the order in which they were entered.

#ifndef SCRIVEL_TOOL_ENTRYORDER_H
#define SCRIVEL_TOOL_ENTRYORDER_H

#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <utility>

namespace ScrivelTool
{

template <typename Item>
class EntryOrder
{
public:
    explicit EntryOrder(std::function<void(Item&&)> itsTake) : take(std::move(itsTake)) {}

    /// Calls are entered one after another, as the reader counts them.
    void Entered() { waiting.emplace_back(); }
    /// The call that was entered last never was one.
    void TakenBack() { waiting.pop_back(); }
    /// Hands on this item and those after it, as far as all before them have ended.
    void Ended(std::uint64_t entry, Item item)
    {
        waiting[std::size_t(entry - first)] = std::move(item);
        while (!waiting.empty() && waiting.front()) {
            take(std::move(*waiting.front()));
            waiting.pop_front();
            ++first;
        }
    }

private:
    std::function<void(Item&&)> take;
    std::deque<std::optional<Item>> waiting;
    std::uint64_t first = 0;  // the entry of the foremost
};

}  // namespace ScrivelTool

#endif
