// The generator of the run phase. Tested by tests/generators/Scrivel2XmlGenRunTest.cpp.

#include "base/SharedRecords.h"

#include <cstdio>

namespace Scrivel2
{

Scrivel2XmlGenRun::Scrivel2XmlGenRun(const char* name) : ScrivelXmlGenRunBase(name, "CADI 2.0")
{
    KeepsTags<Scrivel2XmlGenRun>();
}

Scrivel2XmlGenRun::~Scrivel2XmlGenRun() = default;

void Scrivel2XmlGenRun::SetWriteSecure(bool secure)
{
    ScrivelXmlGenRunBase::SetWriteSecure(secure);
}

void Scrivel2XmlGenRun::WriteTargetInfo(std::string ident, eslapi::CADITargetInfo_t info)
{
    WriteContainer(ident, [&] {
        WriteTargetInfoFields(*this, info);
        WriteBool("canRunInBackground", info.canRunInBackground);  // in a run-phase log alone
    });
}

void Scrivel2XmlGenRun::WriteTargetInfoPtrVal(std::string ident, eslapi::CADITargetInfo_t* info)
{
    WritePointee(ident, info, [&](const auto& value) { WriteTargetInfo(ident, value); });
}

void Scrivel2XmlGenRun::WriteRegFloatFormat(std::string /*ident*/,
                                            eslapi::CADIRegFloatFormat_t /*format*/)
{
    // On standard output, not in the log: the format has no form there yet.
    std::puts("WriteRegFloatFormat not implemented !!");
}

}  // namespace Scrivel2
