#include "crash/TailAcrossPages.h"

#include <cstddef>

namespace ScrivelTest
{

bool IsTailHalfReplaced(const std::string& bytes, const std::vector<std::string>& tails,
                        const std::function<bool(const std::string&)>& isKept)
{
    constexpr std::size_t pageSize = 4096;
    constexpr std::size_t mostNewlines = 5;  // where the rest of the page is too short for the opening
    for (std::size_t newlines = 0; newlines <= mostNewlines; ++newlines) {
        for (const std::string& tail : tails) {
            const std::string replaced = tail + std::string(newlines, '\n') + "<?x ";
            for (std::size_t boundary = pageSize; boundary < bytes.size(); boundary += pageSize) {
                for (std::size_t before = 1; before < replaced.size(); ++before) {
                    if (bytes.compare(boundary, replaced.size() - before, replaced, before) != 0) {
                        continue;
                    }
                    std::string mended = bytes;
                    mended.replace(boundary - before, before, replaced, 0, before);
                    if (isKept(mended)) {
                        return true;
                    }
                }
            }
        }
    }
    return false;
}

}  // namespace ScrivelTest
