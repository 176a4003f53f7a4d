// Hands records with fields of the team's own to a generator and looks for the values in the log.

#include <ScrivelXmlGen.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>

#include <unistd.h>

int main()
{
    eslapi::CADIReg_t reg{};
    reg.vendorTime = 1.5;
    reg.regNumber = 3;
    reg.bytes[0] = 0x7f;
    reg.attribute = eslapi::CADI_REG_READ_ONLY;
    reg.vendorData = &reg;

    eslapi::CADIMemSpaceInfo_t space{};
    std::strcpy(space.name, "Flash");
    std::memset(space.description, 'd', sizeof space.description - 1);
    space.maxAddress = 0xffff;

    Scrivel2::Scrivel2XmlGenRun log("own");
    log.StartLogging();
    const unsigned int call = log.EnterCadiCall("Both");
    log.FlushOutput(false, "Both");
    log.WriteContinueFunction(call, "Both");
    log.WriteReg("reg", reg);
    log.WriteMemSpaceInfo(space);
    log.WriteReturnType("inside", eslapi::CADI_STATUS_PermissionDenied);
    log.WriteReturnType("outside", static_cast<eslapi::CADIReturn_t>(12));
    log.WriteBptType("user", eslapi::CADI_BPT_USER_DEFINED);
    log.WriteIdent("Both", false, true);
    log.FlushOutput(true, "");
    log.EndLogging();

    std::ifstream file("own-" + std::to_string(getpid()) + ".xml");
    const std::string content{std::istreambuf_iterator<char>(file), {}};
    bool written = true;
    for (const std::string& text :
         {std::string("<regNumber>3</regNumber>"),
          std::string("<bytes>00000000 00000000 00000000 0000007f </bytes>"),
          std::string("<attribute>CADI_REG_READ_ONLY</attribute>"), std::string("<Flash>"),
          ">" + std::string(sizeof space.description - 1, 'd') + "<",
          std::string("<maxAddress>0x000000000000ffff<"),
          std::string("<inside>CADI_STATUS_PermissionDenied</inside>"),
          std::string("<outside>Invalid return type: 0xc</outside>"), std::string("<user>CADI_BPT_")}) {
        if (content.find(text) == std::string::npos) {
            std::printf("The log lacks %s\n", text.c_str());
            written = false;
        }
    }
    return written ? 0 : 1;
}
