#include "CallLog.h"

#include <atomic>
#include <cstring>

#include <pthread.h>

namespace Scrivel2
{
namespace
{

std::atomic<unsigned int> forkCount{0};

template <std::size_t size>
std::string TextOf(const char (&text)[size])
{
    return {text, strnlen(text, size)};
}

}  // namespace

unsigned int ForkCount()
{
    static const int registered =
        pthread_atfork(nullptr, nullptr, [] { forkCount.fetch_add(1, std::memory_order_relaxed); });
    static_cast<void>(registered);
    return forkCount.load(std::memory_order_relaxed);
}

ClassicLocale::ClassicLocale()
{
    static const locale_t classic = newlocale(LC_ALL_MASK, "C", nullptr);
    before = uselocale(classic);
}

RunLog::RunLog(std::string_view name) : CallLog(name)
{
    const Access log{*this};
    log->SetRegisterNames(&registerNames);
    log->SetMemSpaceNames(&memSpaceNames);
}

RunLog::~RunLog()
{
    EndLogging();  // before the tables go
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
