// One call of the connection phase, written with a generator alone. docs/calling-order.md shows it.
#include <ScrivelXmlGen.h>

struct Broker
{
    static eslapi::CADIReturn_t GetSimulationInfos(eslapi::CADISimulationInfo_t* infos,
                                                   unsigned int* actual)
    {
        infos[0] = eslapi::CADISimulationInfo_t{7, "board", "a core and a timer"};
        *actual = 1;
        return eslapi::CADI_STATUS_OK;
    }
};

int main()
{
    Broker broker;
    eslapi::CADISimulationInfo_t infos[1];
    unsigned int actual = 0;
    Scrivel2::Scrivel2XmlGenConnect log("connection");
    log.StartLogging();

    log.WriteCloseInterruptedFunction("GetSimulationInfos");  // first
    log.IncCallNo();
    const unsigned int call = log.GetCallNo();
    log.WriteDetailedIdent("GetSimulationInfos");
    log.WriteDecimal("desiredNumberOfSimulations", 1);  // arguments
    log.FlushOutput(false, "GetSimulationInfos");       // before the broker runs

    const eslapi::CADIReturn_t status = broker.GetSimulationInfos(infos, &actual);

    log.WriteContinueFunction(call, "GetSimulationInfos");
    log.WriteSimulationInfoArray("simulationInfos", infos, &actual);  // results
    log.WriteReturnType("return", status);
    log.WriteIdent("GetSimulationInfos", false, true);
    log.FlushOutput(true, "");  // between calls

    log.EndLogging();
}
