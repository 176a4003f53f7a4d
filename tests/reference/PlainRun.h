// The run phase, the plain way.

#ifndef SCRIVEL_TESTS_REFERENCE_PLAINRUN_H
#define SCRIVEL_TESTS_REFERENCE_PLAINRUN_H

#include "reference/PlainRunBase.h"

#include <cstdio>
#include <string>

#include <CADITypes.h>

namespace ScrivelTest
{

template <typename File>
class PlainRun : public PlainRunBase<File>
{
public:
    explicit PlainRun(const char* name) : PlainRunBase<File>(name, "CADI 2.0") {}

    void WriteTargetInfo(std::string ident, eslapi::CADITargetInfo_t info)
    {
        this->WriteIdent(ident, true, true);
        this->TwelveFieldsOf(info);
        this->WriteBool("canRunInBackground", info.canRunInBackground);
        this->WriteIdent(ident, false, true);
    }

    void WriteTargetInfoPtrVal(std::string ident, eslapi::CADITargetInfo_t* info)
    {
        if (info == nullptr) {
            this->WriteNULLPointer(ident);
            return;
        }
        WriteTargetInfo(ident, *info);
    }

    void WriteRegFloatFormat(std::string, eslapi::CADIRegFloatFormat_t)
    {
        puts("WriteRegFloatFormat not implemented !!");
    }
};

}  // namespace ScrivelTest

#endif
