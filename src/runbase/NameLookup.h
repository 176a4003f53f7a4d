// How registers and memory spaces get their names. Internal: not installed.

#ifndef SCRIVEL_RUNBASE_NAMELOOKUP_H
#define SCRIVEL_RUNBASE_NAMELOOKUP_H

#include "ScrivelXmlGen.h"

namespace Scrivel2
{

/// The name that the table gives a number, where it stands; null when there is no table, no entry or an
/// empty name.
inline const std::string* FindName(const ScrivelXmlGenRunBase::NameTable* names, unsigned int number)
{
    if (names == nullptr) {
        return nullptr;
    }
    const auto entry = names->find(number);
    return entry == names->end() || entry->second.empty() ? nullptr : &entry->second;
}

}  // namespace Scrivel2

#endif
