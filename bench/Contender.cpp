// The table of all contenders.

#include "Contender.h"
#include "File.h"

#include <filesystem>
#include <stdexcept>

namespace ScrivelBench
{

const std::vector<ContenderKind>& Contenders()
{
    static const std::vector<ContenderKind> contenders = {
        {floorName, Writes::otherNumbers, Output::floor, MakeFloor},
        {libraryName, Writes::sameBytes, Output::own, MakeLibrary},
        {guardName, Writes::sameBytes, Output::own, MakeGuarded},
        {derivedName, Writes::sameBytes, Output::own, MakeDerived},
        {referenceName, Writes::sameBytes, Output::own, MakeReference},
        {"xmlTextWriter, floor's output", Writes::sameElements, Output::floor, MakeTextWriterOnFloor},
        {quickTextWriterName, Writes::sameElements, Output::floor, MakeQuickTextWriterOnFloor},
        {"xmlTextWriter, descriptor", Writes::sameElements, Output::usual, MakeTextWriterOnFile},
        {tinyXmlFloorName, Writes::sameElements, Output::floor, MakePrinterOnFloor},
        {"tinyxml2, FILE", Writes::sameElements, Output::usual, MakePrinterOnFile},
        {"pugixml, floor's output", Writes::sameElements, Output::floor, MakePugiOnFloor},
        {"pugixml, FILE", Writes::sameElements, Output::usual, MakePugiOnFile},
    };
    return contenders;
}

const ContenderKind& ContenderNamed(const std::string& name)
{
    for (const ContenderKind& contender : Contenders()) {
        if (contender.name == name) {
            return contender;
        }
    }
    throw std::out_of_range("no contender is called \"" + name + "\"");
}

std::unique_ptr<Contender> MakeLog(const ContenderKind& contender, const Workload& workload)
{
    std::filesystem::remove(LogFileName());
    return contender.make(workload);
}

}  // namespace ScrivelBench
