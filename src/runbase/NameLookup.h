// How registers and memory spaces get their names. Internal: not installed.

#ifndef SCRIVEL_RUNBASE_NAMELOOKUP_H
#define SCRIVEL_RUNBASE_NAMELOOKUP_H

#include "ScrivelXmlGen.h"

#include <string>

namespace Scrivel2
{

/// A copy of the name that the table gives a number, since a frame operation may change the table; empty
/// when there is no table or no entry.
inline std::string FindName(const ScrivelXmlGenRunBase::NameTable* names, unsigned int number)
{
    if (names == nullptr) {
        return {};
    }
    const auto entry = names->find(number);
    return entry == names->end() ? std::string() : entry->second;
}

}  // namespace Scrivel2

#endif
