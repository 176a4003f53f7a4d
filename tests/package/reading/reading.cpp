// Reads a log by what is installed: every public header, and a symbol of each source.

#include <iostream>
#include <string>

#include <scrivel/Call.h>
#include <scrivel/CallFilter.h>
#include <scrivel/LogFile.h>
#include <scrivel/LogInput.h>
#include <scrivel/LogReader.h>
#include <scrivel/Tree.h>
#include <scrivel/XmlParser.h>

namespace
{

class Names : public ScrivelReader::LogHandler
{
public:
    void Ended(ScrivelReader::Call& call) override
    {
        names += call.name;
        for (ScrivelReader::Tree::Element argument : call.arguments.Top())
            names += " " + std::string(argument.Name()) + "=" + std::string(argument.Text());
    }
    std::string names;
};

}  // namespace

int main()
{
    Names names;
    ScrivelReader::LogReader reader(names);
    reader.Feed("<run-1><A call_num='1' call_time='0.000001 s'><a>1</a></A></run-1>");
    const ScrivelReader::LogEnd end = reader.Finish();
    std::string error;
    const auto filter = ScrivelReader::CallFilter::Make({}, error);
    const auto logs = ScrivelReader::LogsAt("-", error);
    std::cout << names.names << " at " << ScrivelReader::FindCall(-1, 0, 1).value_or(0) << '\n';
    return end.whole && names.names == "A a=1" && filter && filter->MatchesAll() && logs ? 0 : 1;
}
