// The names of factory errors, which no one is to read in the library itself: it holds them scrambled.
// Tested by tests/runbase/EnumerationsTest.cpp and tests/base/hidden_names.sh.

#include "base/SharedRecords.h"

#include <array>
#include <cstddef>
#include <iterator>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace Scrivel2
{
namespace
{

/// In the order of CADIFactoryErrorCode_t. Called at compile time only, so that the texts stay in the
/// source.
constexpr std::array<std::string_view, 14> FactoryErrors()
{
    return {
        "CADIFACT_ERROR_OK",
        "CADIFACT_ERROR_GENERAL",
        "CADIFACT_ERROR_PARAMETER_UNKNOWN",
        "CADIFACT_ERROR_PARAMETER_MISSING",
        "CADIFACT_ERROR_PARAMETER_WRONG_TYPE",
        "CADIFACT_ERROR_PARAMETER_OUT_OF_RANGE",
        "CADIFACT_ERROR_PARAMETER_CONFLICT",
        "CADIFACT_ERROR_LICENCE_NOT_FOUND",
        "CADIFACT_ERROR_LICENCE_EXPIRED",
        "CADIFACT_ERROR_LICENCE_IN_USE",
        "CADIFACT_ERROR_TOO_MANY_INSTANCES",
        "CADIFACT_ERROR_INSTANCE_NAME_IN_USE",
        "CADIFACT_ERROR_OUT_OF_MEMORY",
        "CADIFACT_ERROR_RESOURCE_UNAVAILABLE",
    };
}

/// What restoring adds to the character at a position; the list begins anew at its end.
constexpr signed char shifts[] = {7, -3, 11, 5, -13, 2, -8};

/// The character that is kept in place of the one at a position of a text.
constexpr char Scrambled(char character, std::size_t position)
{
    return static_cast<char>(character - shifts[position % std::size(shifts)]);
}

std::string Restored(std::string_view hidden)
{
    // Read as if they could change: otherwise a compiler could put the restored text into the library.
    const volatile signed char* const restoring = shifts;
    std::string text;
    text.reserve(hidden.size());
    for (const char character : hidden) {
        text += static_cast<char>(character + restoring[text.size() % std::size(shifts)]);
    }
    return text;
}

/// The text whose characters are hidden in the arguments.
template <typename... Characters>
std::string HIDESTR_internal(Characters... hidden)
{
    const char characters[] = {hidden...};
    return Restored({characters, sizeof characters});
}

template <std::size_t name, std::size_t... positions>
std::string FactoryErrorName(std::index_sequence<positions...> /*positions*/)
{
    // Constants of a type are made at compile time, without optimisation too.
    return HIDESTR_internal(
        std::integral_constant<char, Scrambled(FactoryErrors()[name][positions], positions)>::value...);
}

template <std::size_t... names>
std::vector<std::string> AllNames(std::index_sequence<names...> /*names*/)
{
    std::vector<std::string> all;
    all.reserve(sizeof...(names));
    (all.push_back(FactoryErrorName<names>(std::make_index_sequence<FactoryErrors()[names].size()>())),
     ...);
    return all;
}

}  // namespace

std::vector<std::string> FactoryErrorNames()
{
    return AllNames(std::make_index_sequence<FactoryErrors().size()>());
}

}  // namespace Scrivel2
