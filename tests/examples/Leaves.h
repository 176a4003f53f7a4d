// The texts in which a log shows the values of calls, put together without the library.

#ifndef SCRIVEL_TESTS_EXAMPLES_LEAVES_H
#define SCRIVEL_TESTS_EXAMPLES_LEAVES_H

#include "layer/CallReader.h"

#include <CADITypes.h>

#include <cstdint>
#include <string>
#include <vector>

namespace ScrivelTest
{

/// A list of leaves that grows at its end. `path` is relative to the element of the call.
class Leaves
{
public:
    Leaves& Text(const std::string& path, const std::string& text);
    Leaves& Raw(const std::string& path, const std::string& text);
    Leaves& Number(const std::string& path, unsigned long value);
    Leaves& Hex(const std::string& path, unsigned long value, unsigned int digits);
    Leaves& Flag(const std::string& path, bool value);
    Leaves& Status(eslapi::CADIReturn_t status);

    Leaves& Record(const std::string& path, const eslapi::CADIParameterInfo_t& info);
    Leaves& Record(const std::string& path, const eslapi::CADIParameterValue_t& value);
    Leaves& Record(const std::string& path, const eslapi::CADIFactoryErrorMessage_t& error);
    Leaves& Record(const std::string& path, const eslapi::CADISimulationInfo_t& info);
    /// Without the last field, which a connection log lacks.
    Leaves& Record(const std::string& path, const eslapi::CADITargetInfo_t& info);
    Leaves& Record(const std::string& path, const eslapi::CADITargetFeatures_t& features);
    Leaves& Record(const std::string& path, const eslapi::CADIRegGroup_t& group);
    Leaves& Record(const std::string& path, const eslapi::CADIRegInfo_t& info);
    Leaves& Record(const std::string& path, const eslapi::CADIReg_t& reg);
    Leaves& Record(const std::string& path, const eslapi::CADIMemSpaceInfo_t& space);
    Leaves& Record(const std::string& path, const eslapi::CADIMemBlockInfo_t& block);
    Leaves& Record(const std::string& path, const eslapi::CADICacheInfo_t& cache);
    Leaves& Record(const std::string& path, const eslapi::CADIAddr_t& address);
    Leaves& Record(const std::string& path, const eslapi::CADIAddrComplete_t& address);
    Leaves& Record(const std::string& path, const eslapi::CADIExecMode_t& mode);
    Leaves& Record(const std::string& path, const eslapi::CADIResetLevel_t& level);
    Leaves& Record(const std::string& path, const eslapi::CADIPipeStage_t& stage);
    Leaves& Record(const std::string& path, const eslapi::CADIPipeStageField_t& field);
    Leaves& Record(const std::string& path, const eslapi::CADIException_t& exception);
    Leaves& Record(const std::string& path, const eslapi::CADIBptRequest_t& request);
    Leaves& Record(const std::string& path, const eslapi::CADIBptDescription_t& breakpoint);

    /// Each entry under the name that `nameOf` gives it.
    template <typename Item, typename NameOf>
    Leaves& List(const std::string& path, const Item* items, std::uint32_t count, NameOf nameOf)
    {
        for (std::uint32_t i = 0; i < count; ++i) {
            Record(path + "/" + nameOf(items[i]), items[i]);
        }
        return *this;
    }
    template <typename Item>
    Leaves& List(const std::string& path, const Item* items, std::uint32_t count, const char* name)
    {
        return List(path, items, count, [=](const Item&) { return std::string(name); });
    }

    const std::vector<Leaf>& All() const { return leaves; }

private:
    std::vector<Leaf> leaves;
};

/// The name that a log gives an execution mode.
std::string ModeName(std::uint32_t mode);

/// Names that registers and memory spaces have been given: those of the simulated target.
std::string RegisterName(std::uint32_t number);
std::string SpaceName(std::uint32_t id);

}  // namespace ScrivelTest

#endif
