// Memory spaces and blocks, caches, overlays, addresses. Tested by tests/runbase/MemoryTest.cpp.

#include "base/ElementForms.h"
#include "format/LogWords.h"
#include "runbase/NameLookup.h"

namespace Scrivel2
{

// ---- Spaces -------------------------------------------------------------------------------------

void ScrivelXmlGenRunBase::WriteMemSpaceInfo(eslapi::CADIMemSpaceInfo_t space)
{
    // The element bears the space's name, which is no child.
    WriteContainer(space.name, [&] {
        WriteString("description", space.description);
        WriteDecimal("memSpaceId", space.memSpaceId);
        WriteDecimal("bitsPerMau", space.bitsPerMau);
        // The upper bound is hexadecimal and the lower one decimal; both lose their upper 32 bits.
        WriteHex("maxAddress", Low32(space.maxAddress), 16);
        WriteDecimal("nrMemBlocks", space.nrMemBlocks);
        WriteDecimal("isProgramMemory", space.isProgramMemory);  // a number, unlike the next two flags
        WriteDecimal("minAddress", Low32(space.minAddress));
        WriteBool("isVirtualMemory", space.isVirtualMemory != 0);
        WriteBool("isCache", space.isCache != 0);
        WriteEndianness("endianness", space.endianness);
        WriteDecimal("invariance", space.invariance);
        WriteDecimal("dwarfMemSpaceId", space.dwarfMemSpaceId);
        WriteDecimal("canonicalMemoryNumber", space.canonicalMemoryNumber);
    });
}

void ScrivelXmlGenRunBase::WriteMemSpaceInfoArray(std::string ident, eslapi::CADIMemSpaceInfo_t* spaces,
                                                  unsigned int count)
{
    WriteItems(ident, spaces, count, "memSpaceInfo",
               [this](const auto& space) { WriteMemSpaceInfo(space); });
}

// ---- Blocks, caches, overlays -------------------------------------------------------------------

void ScrivelXmlGenRunBase::WriteMemBlockInfo(eslapi::CADIMemBlockInfo_t block)
{
    // The element bears the block's name, which is no child.
    WriteContainer(block.name, [&] {
        WriteString("description", block.description);
        WriteDecimal("id", block.id);
        WriteDecimal("parentID", block.parentID);
        // Sixteen digits, but both bounds lose their upper 32 bits.
        WriteHex("startAddr", Low32(block.startAddr), 16);
        WriteHex("endAddr", Low32(block.endAddr), 16);
        WriteDecimal("cyclesToAccess", block.cyclesToAccess);
        WriteMemReadWrite("readWrite", block.readWrite);
        WriteContainer("supportedMultiplesOfMAU", [&] {
            // Always all of them: a zero doesn't end the list.
            for (const auto multiple : block.supportedMultiplesOfMAU) {
                WriteValue("value", Decimal{multiple});
            }
        });
        WriteEndianness("endianness", block.endianness);
        WriteDecimal("invariance", block.invariance);
    });
}

void ScrivelXmlGenRunBase::WriteMemBlockInfoArray(std::string ident, eslapi::CADIMemBlockInfo_t* blocks,
                                                  unsigned int count)
{
    WriteItems(ident, blocks, count, "memBlockInfo",
               [this](const auto& block) { WriteMemBlockInfo(block); });
}

void ScrivelXmlGenRunBase::WriteCacheInfo(std::string ident, eslapi::CADICacheInfo_t* cache)
{
    WritePointee(ident, cache, [&](const eslapi::CADICacheInfo_t& info) {
        WriteContainer(ident, [&] {
            WriteDecimal("cacheLineSize", info.cacheLineSize);
            WriteDecimal("cacheTagBits", info.cacheTagBits);
            WriteDecimal("associativity", info.associativity);
            WriteBool("writeThrough", info.writeThrough);
        });
    });
}

void ScrivelXmlGenRunBase::WriteOverlayIdArray(std::string ident, unsigned int* ids, unsigned int count)
{
    WriteItems(ident, ids, count, "overlayId",
               [this](unsigned int id) { WriteDecimal("overlayId", id); });
}

// ---- Addresses ----------------------------------------------------------------------------------

void ScrivelXmlGenRunBase::WriteAddr(std::string ident, eslapi::CADIAddr_t address)
{
    WriteContainer(ident, [&] {
        WriteDecimal("spaceId", address.spaceId);
        const std::string name = FindName(memSpaceNames, address.spaceId);
        WriteValue("spaceName", Text{name.empty() ? LogWords::unknownMemSpace : std::string_view(name)});
        WriteHex("addr", address.addr, 16);  // all 64 bits, unlike the bounds of spaces and blocks
    });
}

void ScrivelXmlGenRunBase::WriteAddrComplete(std::string ident, eslapi::CADIAddrComplete_t address)
{
    WriteContainer(ident, [&] {
        WriteDecimal("overlay", address.overlay);
        WriteAddr("location", address.location);
    });
}

}  // namespace Scrivel2
