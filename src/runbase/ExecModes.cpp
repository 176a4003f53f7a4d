// Execution modes, reset levels, pipe stages. Tested by tests/runbase/ExecModesTest.cpp.

#include "base/ElementForms.h"

namespace Scrivel2
{

// ---- Execution modes ----------------------------------------------------------------------------

void ScrivelXmlGenRunBase::WriteExecMode(std::string ident, eslapi::CADIExecMode_t mode)
{
    WriteContainer(ident, [&] {
        WriteExecMode("number", mode.number);  // by name, unlike the number of a reset level
        WriteString("name", mode.name);
    });
}

void ScrivelXmlGenRunBase::WriteExecModePtrVal(std::string ident, eslapi::CADIExecMode_t* mode)
{
    WritePointee(ident, mode, [&](const auto& value) { WriteExecMode(ident, value); });
}

void ScrivelXmlGenRunBase::WriteExecModeArray(std::string ident, eslapi::CADIExecMode_t* modes,
                                              unsigned int count)
{
    // The null element has the name of another array's items: readers of the log look for it there.
    WriteItems(ident, modes, count, "parameterValue",
               [this](const auto& mode) { WriteExecMode("execMode", mode); });
}

// ---- Reset levels -------------------------------------------------------------------------------

void ScrivelXmlGenRunBase::WriteResetLevel(std::string ident, eslapi::CADIResetLevel_t level)
{
    WriteContainer(ident, [&] {
        WriteDecimal("number", level.number);
        WriteString("name", level.name);
    });
}

void ScrivelXmlGenRunBase::WriteResetLevelArray(std::string ident, eslapi::CADIResetLevel_t* levels,
                                                unsigned int count)
{
    // Named as the null element of execution modes is.
    WriteItems(ident, levels, count, "parameterValue",
               [this](const auto& level) { WriteResetLevel("resetLevel", level); });
}

// ---- Pipe stages --------------------------------------------------------------------------------

void ScrivelXmlGenRunBase::WritePipeStage(std::string ident, eslapi::CADIPipeStage_t stage)
{
    WriteContainer(ident, [&] {
        WriteDecimal("id", stage.id);
        WriteString("name", stage.name);
        WriteDecimal("contentInfoRegisterId", stage.contentInfoRegisterId);
    });
}

void ScrivelXmlGenRunBase::WritePipeStageArray(std::string ident, eslapi::CADIPipeStage_t* stages,
                                               unsigned int count)
{
    // The null element's name is a plural here and below, those of the items are not.
    WriteItems(ident, stages, count, "pipeStages",
               [this](const auto& stage) { WritePipeStage("pipeStage", stage); });
}

void ScrivelXmlGenRunBase::WritePipeStageField(std::string ident, eslapi::CADIPipeStageField_t field)
{
    WriteContainer(ident, [&] {
        WriteDecimal("pipeStageId", field.pipeStageId);
        WriteDecimal("registerId", field.registerId);
    });
}

void ScrivelXmlGenRunBase::WritePipeStageFieldArray(std::string ident,
                                                    eslapi::CADIPipeStageField_t* fields,
                                                    unsigned int count)
{
    WriteItems(ident, fields, count, "pipeStageFields",
               [this](const auto& field) { WritePipeStageField("pipeStageField", field); });
}

}  // namespace Scrivel2
