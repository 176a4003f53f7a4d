// Writes both kinds of log with generators of its own, and looks for what was written in the files.

#include <ScrivelXmlGen.h>

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>

#include <unistd.h>

namespace
{

/// Reaches what a derived generator may: the stream, its holds, the depth.
class CountingGenerator : public Scrivel2::Scrivel2XmlGenRun
{
public:
    using Scrivel2XmlGenRun::Scrivel2XmlGenRun;

    void FlushOutput(bool finalTag, std::string callName) override
    {
        ++flushes;
        Scrivel2XmlGenRun::FlushOutput(finalTag, callName);
    }

    void WriteRaw(const std::string& text)
    {
        const Scrivel2::LogStream::FlushHold hold(logFile);
        logFile.Append(text);
        logFile << depth << '\n';
    }

    int flushes = 0;
};

bool Holds(const std::string& log, const std::string& text)
{
    std::ifstream file(log + "-" + std::to_string(getpid()) + ".xml");
    const std::string content{std::istreambuf_iterator<char>(file), {}};
    if (content.find(text) == std::string::npos) {
        std::printf("%s lacks %s\n", log.c_str(), text.c_str());
        return false;
    }
    return true;
}

}  // namespace

int main()
{
    CountingGenerator run("run");
    run.StartLogging();
    const unsigned int call = run.EnterCadiCall("CADIRegRead");
    run.WriteDecimal("regCount", 1);
    run.WriteRaw("depth ");
    run.FlushOutput(false, "CADIRegRead");
    run.WriteContinueFunction(call, "CADIRegRead");
    eslapi::CADIReg_t reg{};
    reg.bytes[1] = 0x80;
    run.WriteRegArray("reg", &reg, 1);
    std::uint64_t numbers[] = {0x123456789abcdef0, 7};
    run.WriteUint64Array("ids", numbers, 2, true);
    run.WriteDecimalPtrVal("cycles", numbers);
    run.WriteHexPtrVal("pc", numbers, 8);
    run.WriteAddress("factory", 0x1000);
    run.WriteAddr("location", {1, 0xfedcba9876543210});
    eslapi::CADIRegInfo_t info{};
    info.hasSideEffects = -1;
    run.WriteRegInfo(info);
    run.WriteReturnType("return", eslapi::CADI_STATUS_OK);
    run.WriteIdent("CADIRegRead", false, true);
    run.FlushOutput(true, "");
    run.EndLogging();

    Scrivel2::Scrivel2XmlGenConnect connect("connect");
    connect.StartLogging();
    connect.WriteCloseInterruptedFunction("GetTargetInfos");
    connect.IncCallNo();
    connect.WriteDetailedIdent("GetTargetInfos");
    connect.WriteString("filter", "a<b");
    connect.WriteIdent("GetTargetInfos", false, true);
    connect.FlushOutput(true, "");
    connect.EndLogging();

    const bool written = Holds("run", "<regCount>1</regCount>\ndepth 2\n") &&
                         Holds("run", "<bytes>00000000 00000000 00000000 00008000 </bytes>") &&
                         Holds("run", "<int>0x123456789abcdef0</int>") &&
                         Holds("run", "<int>0x0000000000000007</int>") &&
                         Holds("run", "<cycles>1311768467463790320</cycles>") &&
                         Holds("run", "<pc>0x123456789abcdef0</pc>") &&
                         Holds("run", "<factory>0x0000000000001000</factory>") &&
                         Holds("run", "<addr>0xfedcba9876543210</addr>") &&
                         Holds("run", "<hasSideEffects>18446744073709551615</hasSideEffects>") &&
                         Holds("run", "</CADIRegRead>\n</run-") &&
                         Holds("connect", "<filter>a&lt;b</filter>\n") && run.flushes >= 3;
    return written ? 0 : 1;
}
