// Those who write the workloads, side by side.

#ifndef SCRIVEL_BENCH_CONTENDER_H
#define SCRIVEL_BENCH_CONTENDER_H

#include "Workload.h"

#include <memory>
#include <string>
#include <vector>

namespace ScrivelBench
{

/// One log of one workload: made, any number of calls, destroyed. Its file is LogFileName() in the
/// folder of the moment.
class Contender
{
public:
    Contender() = default;
    virtual ~Contender() = default;
    Contender(const Contender&) = delete;
    Contender& operator=(const Contender&) = delete;

    virtual void LogCall() = 0;
};

/// How a contender's file relates to the library's.
enum class Writes
{
    sameBytes,
    sameElements,
    otherNumbers,  // the call numbers stay what they were when the text was rendered
};

/// What a contender writes to.
enum class Output
{
    own,    // a log that overwrites its closing text
    usual,  // what users of an XML writer commonly give it
    floor,  // memory, then one pwrite a flush
};

struct ContenderKind
{
    const char* name;
    Writes writes;
    Output output;
    std::unique_ptr<Contender> (*make)(const Workload& workload);
};

/// All of them. The floor, the library and the plain reference can be asked for by these names.
const std::vector<ContenderKind>& Contenders();
const ContenderKind& ContenderNamed(const std::string& name);

/// A contender's log, in a file that is new: a RunLog overwrites none, and all are to begin alike.
std::unique_ptr<Contender> MakeLog(const ContenderKind& contender, const Workload& workload);

constexpr const char* floorName = "floor";
constexpr const char* libraryName = "this library";
constexpr const char* guardName = "this library, through the guard";
constexpr const char* derivedName = "this library, tags replaced";
constexpr const char* referenceName = "plain reference";
constexpr const char* quickTextWriterName = "xmlTextWriter, floor's output, quick texts";
constexpr const char* tinyXmlFloorName = "tinyxml2, floor's output";

// Floor.cpp
std::unique_ptr<Contender> MakeFloor(const Workload& workload);

// Generators.cpp
std::unique_ptr<Contender> MakeLibrary(const Workload& workload);
std::unique_ptr<Contender> MakeGuarded(const Workload& workload);
std::unique_ptr<Contender> MakeDerived(const Workload& workload);
std::unique_ptr<Contender> MakeReference(const Workload& workload);

// XmlTextWriter.cpp, TinyXml2.cpp, PugiXml.cpp: over their usual file output, over the floor's.
std::unique_ptr<Contender> MakeTextWriterOnFile(const Workload& workload);
std::unique_ptr<Contender> MakeTextWriterOnFloor(const Workload& workload);
std::unique_ptr<Contender> MakeQuickTextWriterOnFloor(const Workload& workload);
std::unique_ptr<Contender> MakePrinterOnFile(const Workload& workload);
std::unique_ptr<Contender> MakePrinterOnFloor(const Workload& workload);
std::unique_ptr<Contender> MakePugiOnFile(const Workload& workload);
std::unique_ptr<Contender> MakePugiOnFloor(const Workload& workload);

}  // namespace ScrivelBench

#endif
