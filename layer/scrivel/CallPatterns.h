// Which calls are logged.

#ifndef SCRIVEL_LAYER_CALLPATTERNS_H
#define SCRIVEL_LAYER_CALLPATTERNS_H

#include <string>
#include <string_view>
#include <vector>

namespace Scrivel2::Layer
{

// What a shared library shows, also when it is built to hide what isn't marked.
class [[gnu::visibility("default")]] CallPatterns;

/// The patterns that LogOptions::calls describes. Blanks around a pattern don't count.
class CallPatterns
{
public:
    explicit CallPatterns(std::string_view patterns);

    bool Takes(std::string_view callName) const
    {
        return (wanted.empty() && unwanted.empty()) || Fits(callName);
    }

private:
    bool Fits(std::string_view callName) const;

    std::vector<std::string> wanted;
    std::vector<std::string> unwanted;
};

}  // namespace Scrivel2::Layer

#endif
