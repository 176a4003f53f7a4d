// The connection phase, the plain way.

#ifndef SCRIVEL_TESTS_REFERENCE_PLAINCONNECT_H
#define SCRIVEL_TESTS_REFERENCE_PLAINCONNECT_H

#include "reference/PlainBase.h"

#include <cstddef>
#include <cstdint>
#include <string>

#include <CADITypes.h>

namespace ScrivelTest
{

template <typename File>
class PlainConnect : public PlainBase<File>
{
public:
    using Base = PlainBase<File>;
    using Base::WriteDecimal;
    using Base::WriteIdent;
    using Base::WriteNULLPointer;
    using Base::WriteString;

    explicit PlainConnect(const char* name) : Base(name, "CADI 2.0") {}

    void WriteSimulationFactoryArray(std::string ident, eslapi::CADISimulationFactory** factories,
                                     unsigned int* count)
    {
        WriteIdent(ident, true, true);
        if (factories == nullptr) {
            WriteNULLPointer("targetInfo");
        } else if (count != nullptr) {
            for (unsigned int i = 0; i < *count; ++i) {
                this->WriteAddress("simulationFactory", reinterpret_cast<std::uintptr_t>(factories[i]));
            }
        }
        WriteIdent(ident, false, true);
    }

    void WriteSimulationInfo(std::string ident, eslapi::CADISimulationInfo_t info)
    {
        WriteIdent(ident, true, true);
        WriteDecimal("id", info.id);
        WriteString("name", info.name);
        WriteString("description", info.description);
        WriteIdent(ident, false, true);
    }

    void WriteSimulationInfoArray(std::string ident, eslapi::CADISimulationInfo_t* infos,
                                  unsigned int* count)
    {
        WriteIdent(ident, true, true);
        if (infos == nullptr) {
            WriteNULLPointer("targetInfo");
        } else if (count != nullptr) {
            for (unsigned int i = 0; i < *count; ++i) {
                WriteSimulationInfo("simulationFactory", infos[i]);
            }
        }
        WriteIdent(ident, false, true);
    }

    void WriteValueDataType(std::string ident, eslapi::CADIValueDataType_t value)
    {
        this->ValueDataType(ident, value);
    }

    void WriteReturnType(std::string ident, eslapi::CADIReturn_t value)
    {
        this->ReturnType(ident, value);
    }

    void WriteParameterValue(std::string ident, eslapi::CADIParameterValue_t value)
    {
        this->ParameterValue(ident, value);
    }

    void WriteParameterValueArray(std::string ident, eslapi::CADIParameterValue_t* values)
    {
        WriteIdent(ident, true, true);
        if (values == nullptr) {
            WriteNULLPointer("parameterValue");
        } else {
            std::size_t count = 1;
            while (values[count - 1].parameterID != 0xffffffff) {
                ++count;
            }
            for (std::size_t i = 0; i < count; ++i) {
                WriteParameterValue("parameterValue", values[i]);
            }
        }
        WriteIdent(ident, false, true);
    }

    void WriteParameterInfo(std::string ident, eslapi::CADIParameterInfo_t info)
    {
        this->ParameterInfo(ident, info);
    }

    void WriteParameterInfoArray(std::string ident, eslapi::CADIParameterInfo_t* params,
                                 unsigned int* count)
    {
        WriteIdent(ident, true, true);
        if (params == nullptr) {
            WriteNULLPointer("param");
        } else if (count != nullptr) {
            for (unsigned int i = 0; i < *count; ++i) {
                WriteParameterInfo(params[i].name, params[i]);
            }
        }
        WriteIdent(ident, false, true);
    }

    void WriteTargetInfo(std::string ident, eslapi::CADITargetInfo_t info)
    {
        WriteIdent(ident, true, true);
        this->TwelveFieldsOf(info);
        WriteIdent(ident, false, true);
    }

    void WriteTargetInfoArray(std::string ident, eslapi::CADITargetInfo_t* infos, unsigned int* count)
    {
        WriteIdent(ident, true, true);
        if (infos == nullptr) {
            WriteNULLPointer("targetInfo");
        } else if (count != nullptr) {
            for (unsigned int i = 0; i < *count; ++i) {
                WriteTargetInfo("targetInfo", infos[i]);
            }
        }
        WriteIdent(ident, false, true);
    }
};

}  // namespace ScrivelTest

#endif
