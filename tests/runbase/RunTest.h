// The fixture of tests of run-phase writers, and what they have in common with those of the connection
// phase.

#ifndef SCRIVEL_TESTS_RUNBASE_RUNTEST_H
#define SCRIVEL_TESTS_RUNBASE_RUNTEST_H

#include "runbase/Samples.h"
#include "support/GeneratorTest.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace ScrivelTest
{

/// A count that no array has: whoever looks at it runs off the end of the memory.
inline constexpr unsigned int fatalCount = 0xffffffff;

template <typename Generator = Scrivel2::Scrivel2XmlGenRun>
class RecordTest : public GeneratorTest<Generator>
{
protected:
    /// A container at depth 1, around text whose lines are indented already.
    static std::string Container(const std::string& ident, const std::string& children)
    {
        return "    <" + ident + ">\n" + children + "    </" + ident + ">\n";
    }

    /// What `write` writes inside a container: an array is as good as its items one by one.
    template <typename Write>
    static std::string ContainerWith(const std::string& ident, Write write)
    {
        return GeneratorTest<Generator>::Written([&](auto& log) {
            log.WriteIdent(ident, true, true);
            write(log);
            log.WriteIdent(ident, false, true);
        });
    }

    /// The container of a null array.
    static std::string NullIn(const std::string& ident, const std::string& nullName)
    {
        return Container(ident, "        <" + nullName + ">NULL</" + nullName + ">\n");
    }

    /// Each value from 0 upward has its name.
    template <typename Enumeration, typename Writer>
    static void ExpectNames(Writer write, const std::vector<std::string>& names)
    {
        for (std::size_t i = 0; i < names.size(); ++i) {
            EXPECT_EQ(ValueWritten(write, static_cast<Enumeration>(i)),
                      "    <value>" + names[i] + "</value>\n    <next>255</next>\n");
        }
    }

    /// A value without a name has the message and its hexadecimal digits; the next number is decimal.
    template <typename Enumeration, typename Writer>
    static void ExpectMessage(Writer write, std::int64_t value, const std::string& text)
    {
        EXPECT_EQ(ValueWritten(write, static_cast<Enumeration>(value)),
                  "    <value>" + text + "</value>\n    <next>255</next>\n");
    }

    /// So have the first value after the table, and values far from it.
    template <typename Enumeration, typename Writer>
    static void ExpectMessages(Writer write, std::int64_t first, const std::string& message,
                               const std::string& firstDigits)
    {
        ExpectMessage<Enumeration>(write, first, message + firstDigits);
        ExpectMessage<Enumeration>(write, -1, message + "ffffffff");
        ExpectMessage<Enumeration>(write, 0x7fffffff, message + "7fffffff");
        ExpectMessage<Enumeration>(write, -0x80000000LL, message + "80000000");
        ExpectMessage<Enumeration>(write, 0x10000, message + "10000");
    }

private:
    template <typename Writer, typename Enumeration>
    static std::string ValueWritten(Writer write, Enumeration value)
    {
        return GeneratorTest<Generator>::Written([&](auto& log) {
            std::invoke(write, log, "value", value);
            log.WriteDecimal("next", 255);
        });
    }
};

}  // namespace ScrivelTest

#endif
