// Logs one call through the layer's guard, and looks for it in the file.

#include <LoggedCall.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>

int main()
{
    std::string fileName;
    {
        Scrivel2::LogOptions options;
        options.folder = "logs";
        options.calls = "CADI*,!CADIMem*";
        options.fileSize = 100 << 20;
        Scrivel2::RunLog log("guarded", options);
        fileName = log.FileName();
        Scrivel2::LoggedCall call(log, "CADIExecStop", Scrivel2::CallHead{0x8000});
        call.Arguments([](auto& xml) { xml.WriteBool("now", true); });
        call.Results([](auto& xml) { xml.WriteReturnType("return", eslapi::CADI_STATUS_OK); });
        log.Comment("a -- b");
    }

    std::ifstream file(fileName);
    const std::string content{std::istreambuf_iterator<char>(file), {}};
    for (const char* text :
         {"<CADIExecStop call_num=\"1\"", "disassembler_address=\"0x0000000000008000\"",
          "<!-- Log ended -->", "<now>true</now>",
          "<return>CADI_STATUS_OK</return>\n    </CADIExecStop>\n", "</guarded-"}) {
        if (content.find(text) == std::string::npos) {
            std::printf("%s lacks %s\n", fileName.c_str(), text);
            return 1;
        }
    }
    return 0;
}
