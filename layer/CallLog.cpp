// The names of registers and memory spaces that a run's log learns. Tested by
// tests/layer/CallLogTest.cpp.

#include "CallLog.h"

#include <cstring>

namespace Scrivel2
{
namespace
{

template <std::size_t size>
std::string TextOf(const char (&text)[size])
{
    return {text, strnlen(text, size)};
}

}  // namespace

RunLog::RunLog(std::string_view name, const LogOptions& options) : CallLog(name, options)
{
    if (const Access log{*this}) {
        log->SetNames(&registerNames, &memSpaceNames);
    }
}

RunLog::~RunLog()
{
    EndInDestructor();  // before the tables go
}

void RunLog::LearnRegisters(const eslapi::CADIRegInfo_t* infos, unsigned int count)
{
    const Access log{*this};
    for (unsigned int i = 0; log && infos != nullptr && i < count; ++i) {
        registerNames[infos[i].regNumber] = TextOf(infos[i].name);
    }
}

void RunLog::LearnMemSpaces(const eslapi::CADIMemSpaceInfo_t* spaces, unsigned int count)
{
    const Access log{*this};
    for (unsigned int i = 0; log && spaces != nullptr && i < count; ++i) {
        memSpaceNames[spaces[i].memSpaceId] = TextOf(spaces[i].name);
    }
}

}  // namespace Scrivel2
