// The library as a contender, by its generator and by the guard of its layer, and the plain generator.

#include "Contender.h"
#include "File.h"

#include "LoggedCall.h"
#include "ScrivelXmlGen.h"
#include "reference/PlainGenerator.h"

#include <fstream>

namespace ScrivelBench
{
namespace
{

/// The library, or what has its operations.
template <typename Generator>
class Generated : public Contender
{
public:
    explicit Generated(const Workload& what) : workload(what), log(logName) { log.StartLogging(); }

    void LogCall() override { ScrivelBench::LogCall(log, workload); }

private:
    Workload workload;
    Generator log;
};

/// A generator that a user has derived from, to replace an operation that writes tags: every tag goes
/// through the table.
class Derived : public Scrivel2::Scrivel2XmlGenRun
{
public:
    using Scrivel2XmlGenRun::Scrivel2XmlGenRun;

    void WriteTabs(bool openTag) override { Scrivel2XmlGenRun::WriteTabs(openTag); }
};

/// As an engineer's logging layer writes each call.
class Guarded : public Contender
{
public:
    explicit Guarded(const Workload& what) : workload(what), log(logName) {}

    void LogCall() override
    {
        Scrivel2::LoggedCall call(log, workload.callName,
                                  [&](auto& xml) { WriteArguments(xml, workload); });
        call.Results([&](auto& xml) { WriteResults(xml, workload); });
    }

private:
    Workload workload;
    Scrivel2::RunLog log;
};

}  // namespace

std::unique_ptr<Contender> MakeLibrary(const Workload& workload)
{
    return std::make_unique<Generated<Scrivel2::Scrivel2XmlGenRun>>(workload);
}

std::unique_ptr<Contender> MakeGuarded(const Workload& workload)
{
    return std::make_unique<Guarded>(workload);
}

std::unique_ptr<Contender> MakeDerived(const Workload& workload)
{
    return std::make_unique<Generated<Derived>>(workload);
}

std::unique_ptr<Contender> MakeReference(const Workload& workload)
{
    return std::make_unique<Generated<ScrivelTest::PlainRun<std::ofstream>>>(workload);
}

}  // namespace ScrivelBench
