// The values of a workload for the XML writers, which have no writers of CADI types. Numbers are made
// into text with what a writer offers for it, or with snprintf.

#ifndef SCRIVEL_BENCH_VALUES_H
#define SCRIVEL_BENCH_VALUES_H

#include "Workload.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

#include <pthread.h>
#include <sys/time.h>

namespace ScrivelBench
{

struct Decimal
{
    unsigned long value;
};

struct Hex
{
    unsigned long value;
    int digits;
};

struct Seconds
{
    timeval time;
};

struct RegisterBytes
{
    const std::uint8_t* bytes;
};

/// Hands `print` the format of a value, as printf wants it, and its arguments.
template <typename Print>
void Format(Decimal decimal, Print print)
{
    print("%lu", decimal.value);
}

template <typename Print>
void Format(Hex hex, Print print)
{
    print("0x%0*lx", hex.digits, hex.value);
}

template <typename Print>
void Format(Seconds elapsed, Print print)
{
    print("%ld.%06ld s", elapsed.time.tv_sec, elapsed.time.tv_usec);
}

template <typename Print>
void Format(RegisterBytes reg, Print print)
{
    const std::uint8_t* b = reg.bytes;
    print("%02x%02x%02x%02x %02x%02x%02x%02x %02x%02x%02x%02x %02x%02x%02x%02x ", b[15], b[14], b[13],
          b[12], b[11], b[10], b[9], b[8], b[7], b[6], b[5], b[4], b[3], b[2], b[1], b[0]);
}

/// A value as text, made with snprintf.
class PrintedText
{
public:
    template <typename Value>
    explicit PrintedText(Value value)
    {
        Format(value, [this](const char* format, auto... arguments) {
            std::snprintf(text, sizeof text, format, arguments...);
        });
    }

    const char* c_str() const { return text; }

private:
    char text[64];
};

/// A value as text, made as fast as the standard library and a table of digits can.
class QuickText
{
public:
    explicit QuickText(Decimal decimal) { Put(decimal.value); }

    explicit QuickText(Hex hex)
    {
        *end++ = '0';
        *end++ = 'x';
        for (int shift = 4 * hex.digits; shift > 0;) {
            shift -= 4;
            *end++ = digits[hex.value >> shift & 15];
        }
    }

    explicit QuickText(Seconds elapsed)
    {
        Put(static_cast<unsigned long>(elapsed.time.tv_sec));
        *end++ = '.';
        auto rest = static_cast<unsigned int>(elapsed.time.tv_usec);
        for (unsigned int power = 100000; power > 0; power /= 10) {
            *end++ = digits[rest / power];
            rest %= power;
        }
        *end++ = ' ';
        *end++ = 's';
    }

    explicit QuickText(RegisterBytes reg)
    {
        for (int i = 16; i-- > 0;) {
            *end++ = digits[reg.bytes[i] >> 4];
            *end++ = digits[reg.bytes[i] & 15];
            if (i % 4 == 0) {
                *end++ = ' ';
            }
        }
    }

    const char* c_str()
    {
        *end = '\0';
        return text;
    }

private:
    static constexpr char digits[] = "0123456789abcdef";

    void Put(unsigned long value) { end = std::to_chars(end, text + sizeof text, value).ptr; }

    char text[64];
    char* end = text;
};

/// The message with \xNN for what isprint doesn't call printable: the markup is left to the writers.
inline void MakePrintable(const std::string& message, std::string& printable)
{
    constexpr char digits[] = "0123456789abcdef";
    printable.clear();
    for (char c : message) {
        const auto byte = static_cast<unsigned char>(c);
        if (std::isprint(byte) != 0) {
            printable += c;
        } else {
            const char piece[] = {'\\', 'x', digits[byte >> 4], digits[byte & 15]};
            printable.append(piece, sizeof piece);
        }
    }
}

/// The same, as fast as a table makes it.
inline void MakePrintableQuickly(const std::string& message, std::string& printable)
{
    constexpr char digits[] = "0123456789abcdef";
    bool isPrintable[256];
    for (int byte = 0; byte < 256; ++byte) {
        isPrintable[byte] = std::isprint(byte) != 0;
    }
    printable.clear();
    const char* const end = message.data() + message.size();
    for (const char* from = message.data(); from != end;) {
        const char* const to =
            std::find_if(from, end, [&](char c) { return !isPrintable[static_cast<unsigned char>(c)]; });
        printable.append(from, to);
        from = to;
        if (to != end) {
            const auto byte = static_cast<unsigned char>(*from++);
            const char piece[] = {'\\', 'x', digits[byte >> 4], digits[byte & 15]};
            printable.append(piece, sizeof piece);
        }
    }
}

/// Writes calls of a workload with an XML writer that has
///
///     Open(name), Close()                 an element with children
///     Attribute(name, value)              of an element just opened
///     Element(name, value)                one line; a value is one of the above or a text
///     FlushInside(), FlushBetween()       within the call's element, between calls
class Calls
{
public:
    using Conversion = void (*)(const std::string& message, std::string& printable);

    explicit Calls(const Workload& what, Conversion conversion = MakePrintable)
        : workload(what), makePrintable(conversion)
    {
        gettimeofday(&start, nullptr);
    }

    template <typename XmlWriter>
    void Write(XmlWriter& xml)
    {
        xml.Open(workload.callName.c_str());
        xml.Attribute("call_num", Decimal{++number});
        xml.Attribute("call_time", Elapsed());
        xml.Attribute("threadId", Decimal{static_cast<std::uint32_t>(pthread_self())});
        WriteArguments(xml);
        xml.FlushInside();
        xml.Element("return_time", Elapsed());
        WriteResults(xml);
        xml.Close();
        xml.FlushBetween();
    }

private:
    Seconds Elapsed() const
    {
        timeval now;
        Seconds elapsed;
        gettimeofday(&now, nullptr);
        timersub(&now, &start, &elapsed.time);
        return elapsed;
    }

    template <typename XmlWriter>
    void WriteArguments(XmlWriter& xml)
    {
        for (const NamedDecimal& decimal : workload.decimals) {
            xml.Element(decimal.name, Decimal{decimal.value});
        }
        if (workload.address) {
            xml.Open(addressName);
            xml.Element("spaceId", Decimal{workload.address->spaceId});
            xml.Element("spaceName", "unknown memSpaceInfo");
            xml.Element("addr", Hex{workload.address->addr, 16});
            xml.Close();
        }
    }

    template <typename XmlWriter>
    void WriteResults(XmlWriter& xml)
    {
        if (!workload.registers.empty()) {
            xml.Open(registersName);
            for (const eslapi::CADIReg_t& reg : workload.registers) {
                xml.Open("reg");
                xml.Element("regNumber", Decimal{reg.regNumber});
                xml.Element("bytes", RegisterBytes{reg.bytes});
                xml.Element("offset128", Decimal{reg.offset128});
                xml.Element("isUndefined", reg.isUndefined ? "true" : "false");
                xml.Element("attribute", "CADI_REG_READ_WRITE");
                xml.Close();
            }
            xml.Close();
        }
        if (!workload.bytes.empty()) {
            xml.Open(bytesName);
            for (unsigned char byte : workload.bytes) {
                xml.Element("value", Hex{byte, 2});
            }
            xml.Close();
        }
        if (!workload.message.empty()) {
            makePrintable(workload.message, printable);
            xml.Element(messageName, printable.c_str());
        }
        xml.Element(statusName, "CADI_STATUS_OK");
    }

    const Workload workload;
    const Conversion makePrintable;
    unsigned int number = 0;
    timeval start;
    std::string printable;
};

}  // namespace ScrivelBench

#endif
