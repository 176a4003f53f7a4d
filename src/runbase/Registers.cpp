// Registers: their groups, descriptions and values. Tested by tests/runbase/RegistersTest.cpp.

#include "format/LogWords.h"
#include "runbase/Enumerators.h"
#include "runbase/NameLookup.h"

namespace Scrivel2
{

// ---- Groups -------------------------------------------------------------------------------------

void ScrivelXmlGenRunBase::WriteRegGroup(eslapi::CADIRegGroup_t group)
{
    // The element bears the group's name, which is no child.
    WriteContainer(group.name, [&] {
        WriteDecimal("groupID", group.groupID);
        WriteString("description", group.description);
        WriteDecimal("numRegsInGroup", group.numRegsInGroup);
    });
}

void ScrivelXmlGenRunBase::WriteRegGroupArray(std::string ident, eslapi::CADIRegGroup_t* groups,
                                              unsigned int count)
{
    WriteItems(ident, groups, count, "regGroup", [this](const auto& group) { WriteRegGroup(group); });
}

// ---- Descriptions -------------------------------------------------------------------------------

void ScrivelXmlGenRunBase::WriteRegDetail(std::string ident, eslapi::CADIRegDetails_t details)
{
    WriteContainer(ident, [&] {
        WriteRegType("type", details.type);
        WriteDecimal("count", details.count);
    });
}

void ScrivelXmlGenRunBase::WriteRegInfo(eslapi::CADIRegInfo_t info)
{
    // The element bears the register's name, which is no child.
    WriteContainer(info.name, [&] {
        WriteString("description", info.description);
        WriteDecimal("regNumber", info.regNumber);
        WriteDecimal("bitsWide", info.bitsWide);
        // Widened with its sign: -1 reads 18446744073709551615.
        WriteDecimal("hasSideEffects", static_cast<std::uint64_t>(info.hasSideEffects));
        WriteRegDetail("details", info.details);
        WriteRegDisplay("display", info.display);
        // The reverse of what the message says: a symbol register gets it, any other its list.
        if (info.display == eslapi::CADI_REGTYPE_SYMBOL) {
            WriteString("symbols", std::string(LogWords::noSymbolRegister));
        } else {
            WriteRegSymbol("symbols", info.symbols);
        }
        WriteString("fpFormat", info.fpFormat);
        WriteDecimal("lsbOffset", info.lsbOffset);
        WriteDecimal("dwarfIndex", info.dwarfIndex);
        WriteBool("isProfiled", info.isProfiled);
        WriteBool("isPipeStageField", info.isPipeStageField);
        WriteDecimal("threadID", info.threadID);
        WriteRegAccessAttribute("attribute", info.attribute);
        WriteDecimal("canonicalRegisterNumber", info.canonicalRegisterNumber);
    });
}

void ScrivelXmlGenRunBase::WriteRegInfoArray(std::string ident, eslapi::CADIRegInfo_t* infos,
                                             unsigned int count)
{
    WriteItems(ident, infos, count, "regInfo", [this](const auto& info) { WriteRegInfo(info); });
}

// ---- Values -------------------------------------------------------------------------------------

void ScrivelXmlGenRunBase::WriteReg(std::string ident, eslapi::CADIReg_t reg)
{
    // A register that the table names is written under that name, not under the argument's.
    const std::string known = FindName(registerNames, reg.regNumber);
    const std::string& name = known.empty() ? ident : known;
    WriteRecord(name,  //
                Field{"regNumber", Decimal{reg.regNumber}}, Field{"bytes", NumberOfBytes{reg.bytes}},
                Field{"offset128", Decimal{reg.offset128}}, Field{"isUndefined", Word(reg.isUndefined)},
                Field{"attribute", Named(reg.attribute)});
}

void ScrivelXmlGenRunBase::WriteRegArray(std::string ident, eslapi::CADIReg_t* regs, unsigned int count)
{
    WriteItems(ident, regs, count, "reg", [this](const auto& reg) { WriteReg("reg", reg); });
}

}  // namespace Scrivel2
