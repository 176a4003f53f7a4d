// Text, names and values: whatever a target's strings hold, a reader of the log sees them again.
//
// The input decides on scalar, pointer and array writers and on what they are given. The log is read by
// libxml2 and compared, element by element, with what the writers were given. A name that cleaning
// leaves illegal and a raw character are allowed to break the document; all else must not.

#include "Input.h"
#include "Surroundings.h"

#include "judge/LogJudge.h"
#include "support/GeneratorTest.h"

#include <array>
#include <cstdio>
#include <deque>
#include <memory>
#include <string>
#include <vector>

namespace
{

using ScrivelFuzz::Input;
using ScrivelFuzz::Require;
using ScrivelFuzz::RequireEqual;
using ScrivelTest::Element;

using Generator = ScrivelTest::Unprotected<Scrivel2::Scrivel2XmlGenRun>;

bool IsLetter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

/// The name that a reader sees.
std::string Cleaned(const std::string& name)
{
    std::string cleaned = name.empty() ? "emptyIdent" : name;
    for (std::size_t i = 0; i < cleaned.size(); ++i) {
        const char c = cleaned[i];
        const bool digit = c >= '0' && c <= '9' && i > 0;
        if (!IsLetter(c) && !digit && c != '_' && c != '-' && c != '.') {
            cleaned[i] = '_';
        }
    }
    return cleaned;
}

/// The text that a reader sees.
std::string Shown(const std::string& text)
{
    std::string shown;
    for (const char c : text) {
        if (c >= ' ' && c <= '~') {
            shown += c;
        } else {
            char piece[8];
            std::snprintf(piece, sizeof piece, "\\x%02x", static_cast<unsigned char>(c));
            shown += piece;
        }
    }
    return shown;
}

std::string Hexadecimal(unsigned long value, unsigned int digits)
{
    char text[300];
    std::snprintf(text, sizeof text, "0x%0*lx", static_cast<int>(digits), value);
    return text;
}

std::string Binary(unsigned long value)
{
    std::string text;
    for (int bit = 4; bit >= 0; --bit) {
        text += (value >> bit & 1) != 0 ? '1' : '0';
    }
    return text;
}

std::string Bytes(const unsigned char* bytes)
{
    std::string text;
    for (int i = 15; i >= 0; --i) {
        char piece[4];
        std::snprintf(piece, sizeof piece, i % 4 == 0 ? "%02x " : "%02x", bytes[i]);
        text += piece;
    }
    return text;
}

/// One log, and what its reader must see.
class Session
{
public:
    explicit Session(Input& bytes) : input(bytes)
    {
        log.StartLogging();
        Expect(0, "trace-4242", "");
        const unsigned int call = log.EnterCadiCall("Call");
        Expect(1, "Call", "");
        WriteSome();
        log.FlushOutput(false, "Call");
        log.WriteContinueFunction(call, "Call");
        Expect(2, "return_time", "0.000000 s");
        WriteSome();
        log.WriteIdent("Call", false, true);
        Require(log.depth == 1, "the depth is not that of the root after a call");
        log.FlushOutput(true, "");
    }

    Generator& Log() { return log; }

    void Compare(const std::string& text) const
    {
        if (!legal) {
            return;
        }
        const auto elements = ScrivelTest::Elements(text);
        Require(elements.has_value(), "libxml2 finds no document");
        for (std::size_t i = 0; i < elements->size() && i < expected.size(); ++i) {
            Require((*elements)[i].level == expected[i].level, "an element has another level");
            RequireEqual((*elements)[i].name, expected[i].name, "an element has another name");
            if (i + 1 == expected.size() || expected[i + 1].level <= expected[i].level) {
                RequireEqual((*elements)[i].text, expected[i].text, "an element has another text");
            }
        }
        Require(elements->size() == expected.size(), "the number of elements is another");
    }

private:
    void WriteSome()
    {
        for (unsigned int writers = input.Below(12); writers > 0; --writers) {
            const unsigned int before = log.depth;
            WriteOne();
            Require(log.depth == before, "a writer leaves another depth");
        }
    }

    void Expect(unsigned int level, const std::string& name, const std::string& text)
    {
        legal = legal && name.front() != '-' && name.front() != '.';
        expected.push_back({level, name, text, {}});
    }

    void ExpectOne(const std::string& name, const std::string& text) { Expect(2, Cleaned(name), text); }

    void ExpectArray(const std::string& name, const std::string& child,
                     const std::vector<std::string>& texts)
    {
        Expect(2, Cleaned(name), "\n    ");
        for (const std::string& text : texts) {
            Expect(3, Cleaned(child), text);
        }
        if (texts.empty()) {
            expected.back().text = "\n        ";
        }
    }

    void ExpectRaw(char c) { legal = legal && c >= ' ' && c <= '~' && c != '<' && c != '&'; }

    void WriteOne()
    {
        const std::string name = input.Text(24);
        switch (input.Below(24)) {
        case 0:
            return WriteText(name, input.Text(255));
        case 1:
            return WriteLongText(name);
        case 2:
            return WriteNumber(name, input.Number());
        case 3:
            log.WriteNULLPointer(name);
            return ExpectOne(name, "NULL");
        case 4:
            return WriteAddress(name, input.Number());
        case 5:
            return WriteChar(name, static_cast<char>(input.Byte()));
        case 6:
            return WriteHex(name, input.Number(), input.Byte());
        case 7:
            return WriteBin(name, input.Number(), input.Byte());
        case 8:
            return WriteBool(name, input.Flag());
        case 9:
            return WriteBytes(name);
        case 10:
            return WriteNullText(name);
        case 11:
            return WriteNullPointers(name);
        case 12:
            return WriteBoolArray(name);
        case 13:
            return WriteCharArray(name, input.Text(40));
        case 14:
            return WriteStringArray(name);
        case 15:
            return WriteLines(name);
        case 16:
            return WriteIntegerArray<unsigned char>(name, "value", &Generator::WriteUint8Array);
        case 17:
            return WriteIntegerArray<unsigned int>(name, "value", &Generator::WriteUint32Array);
        case 18:
            return WriteIntegerArray<unsigned long>(name, "int", &Generator::WriteUint64Array);
        case 19:
            return WriteNullArray(name);
        case 20:
            return WriteEndianness(name, input.Byte());
        case 21:
            return WriteRegister(name);
        case 22:
            return WriteGroup(name, input.Text(255));
        default:
            return WritePointers(name);
        }
    }

    void WriteText(const std::string& name, const std::string& text)
    {
        log.WriteString(name, text);
        ExpectOne(name, Shown(text));
        log.WriteCharString(name, text.c_str());
        ExpectOne(name, Shown(text.c_str()));
        std::string pieces;
        for (const char c : text) {
            pieces += Generator::CheckChar(c);
        }
        RequireEqual(Generator::CheckString(text), pieces, "a text is not the sum of its characters");
    }

    /// One that the log stream takes in several portions and across several pages.
    void WriteLongText(const std::string& name)
    {
        const std::string part = input.Text(60);
        const unsigned int times = input.Byte();
        std::string text;
        for (unsigned int i = 0; i < times; ++i) {
            text += part;
        }
        log.WriteString(name, text);
        ExpectOne(name, Shown(text));
    }

    void WriteNumber(const std::string& name, unsigned long value)
    {
        log.WriteDecimal(name, value);
        ExpectOne(name, std::to_string(value));
    }

    void WriteAddress(const std::string& name, unsigned long value)
    {
        log.WriteAddress(name, value);
        ExpectOne(name, value == 0 ? "NULL" : Hexadecimal(value, 16));
    }

    void WriteChar(const std::string& name, char c)
    {
        log.WriteChar(name, c);
        log.WriteCharPtrVal(name, &c);
        ExpectRaw(c);
        ExpectOne(name, std::string(1, c));
        ExpectOne(name, std::string(1, c));
    }

    void WriteHex(const std::string& name, unsigned long value, unsigned int digits)
    {
        log.WriteHex(name, value, digits);
        ExpectOne(name, Hexadecimal(value, digits));
    }

    void WriteBin(const std::string& name, unsigned long value, int bits)
    {
        log.WriteBin(name, value, bits);
        ExpectOne(name, Binary(value));
    }

    void WriteBool(const std::string& name, bool value)
    {
        log.WriteBool(name, value);
        ExpectOne(name, value ? "true" : "false");
    }

    void WriteBytes(const std::string& name)
    {
        const auto bytes = input.Any<std::array<unsigned char, 16>>();
        log.WriteByte(name, bytes.data());
        ExpectOne(name, Bytes(bytes.data()));
    }

    void WriteNullText(const std::string& name)
    {
        log.WriteCharString(name, nullptr);
        ExpectOne(name, "NULL");
    }

    void WriteNullPointers(const std::string& name)
    {
        log.WriteCharPtrVal(name, nullptr);
        log.WriteDecimalPtrVal(name, nullptr);
        log.WriteDecimalPtrVal(name, static_cast<unsigned int*>(nullptr));
        log.WriteDecimalPtrVal(name, static_cast<unsigned long*>(nullptr));
        log.WriteStringPtrVal(name, nullptr);
        log.WriteBoolPtrVal(name, nullptr);
        log.WriteHexPtrVal(name, nullptr, input.Byte());
        log.WriteBinPtrVal(name, nullptr, input.Byte());
        for (int i = 0; i < 8; ++i) {
            ExpectOne(name, "NULL");
        }
    }

    void WritePointers(const std::string& name)
    {
        unsigned long wide = input.Number();
        auto narrow = static_cast<unsigned int>(wide);
        bool flag = input.Flag();
        std::string text = input.Text(40);
        log.WriteDecimalPtrVal(name, &wide);
        log.WriteDecimalPtrVal(name, &narrow);
        log.WriteHexPtrVal(name, &wide, 8);
        log.WriteBinPtrVal(name, &wide, 8);
        log.WriteBoolPtrVal(name, &flag);
        log.WriteStringPtrVal(name, &text);
        ExpectOne(name, std::to_string(wide));
        ExpectOne(name, std::to_string(narrow));
        ExpectOne(name, Hexadecimal(wide, 8));
        ExpectOne(name, Binary(wide));
        ExpectOne(name, flag ? "true" : "false");
        ExpectOne(name, Shown(text));
    }

    void WriteBoolArray(const std::string& name)
    {
        std::deque<bool> flags;
        std::vector<std::string> texts;
        bool items[16];
        const unsigned int count = input.Below(17);
        for (unsigned int i = 0; i < count; ++i) {
            items[i] = input.Flag();
            texts.emplace_back(items[i] ? "true" : "false");
        }
        log.WriteBoolArray(name, items, count);
        ExpectArray(name, "bool_array", texts);
    }

    void WriteCharArray(const std::string& name, const std::string& items)
    {
        std::vector<std::string> texts;
        for (const char c : items) {
            texts.push_back(Shown({c}));
        }
        log.WriteCharArray(name, items.data(), static_cast<unsigned int>(items.size()));
        ExpectArray(name, name, texts);
    }

    void WriteStringArray(const std::string& name)
    {
        std::deque<std::string> items;
        std::vector<char*> pointers;
        for (unsigned int count = input.Below(5); count > 0; --count) {
            pointers.push_back(items.emplace_back(input.Text(30)).data());
        }
        log.WriteStringArray(name, pointers.data(), static_cast<unsigned int>(pointers.size()));
        if (pointers.empty()) {
            // The data of an empty vector is null.
            return ExpectArray(name, "string", {"NULL"});
        }
        ExpectArray(name, name, {});
        for (const char* item : pointers) {
            Expect(3, Cleaned(name), "");
            Expect(4, Cleaned(name), Shown(item));
        }
    }

    void WriteLines(const std::string& name)
    {
        const unsigned int lines = input.Below(4);
        const unsigned int width = input.Below(6);
        std::vector<unsigned char> data;
        for (unsigned int i = 0; i < lines + width + 15; ++i) {
            data.push_back(input.Byte());
        }
        std::vector<std::string> texts;
        for (unsigned int i = 0; i < lines * width; ++i) {
            texts.push_back(Bytes(data.data() + lines + i % width));
        }
        log.WriteLinesByteArray(name, data.data(), lines, width);
        ExpectArray(name, "value", texts);
    }

    template <typename Integer>
    void WriteIntegerArray(const std::string& name, const std::string& child,
                           void (Scrivel2::ScrivelXmlGenBase::*write)(std::string, const Integer*,
                                                                      unsigned int, bool))
    {
        const bool hex = input.Flag();
        Integer items[8];
        std::vector<std::string> texts;
        const unsigned int count = input.Below(9);
        for (unsigned int i = 0; i < count; ++i) {
            items[i] = static_cast<Integer>(input.Number());
            texts.push_back(hex ? Hexadecimal(items[i], 2 * sizeof(Integer)) : std::to_string(items[i]));
        }
        (log.*write)(name, items, count, hex);
        ExpectArray(name, child, texts);
    }

    void WriteNullArray(const std::string& name)
    {
        const unsigned int count = input.Byte();
        switch (input.Below(7)) {
        case 0:
            log.WriteBoolArray(name, nullptr, count);
            return ExpectArray(name, "bool_array", {"NULL"});
        case 1:
            log.WriteCharArray(name, nullptr, count);
            return ExpectArray(name, "string", {"NULL"});
        case 2:
            log.WriteStringArray(name, nullptr, count);
            return ExpectArray(name, "string", {"NULL"});
        case 3:
            log.WriteLinesByteArray(name, nullptr, count, count);
            break;
        case 4:
            log.WriteUint8Array(name, nullptr, count, true);
            break;
        case 5:
            log.WriteUint32Array(name, nullptr, count, false);
            break;
        default:
            log.WriteUint64Array(name, nullptr, count, true);
            return ExpectArray(name, "int", {"NULL"});
        }
        ExpectArray(name, name, {"NULL"});
    }

    void WriteEndianness(const std::string& name, unsigned char value)
    {
        static const char* const known[] = {"mono", "LE", "BE"};
        log.WriteEndianness(name, value);
        ExpectOne(name,
                  value < 3 ? known[value] : Shown(std::string("0x0000000") + static_cast<char>(value)));
    }

    /// Its name comes from the table of names, unless that has an empty one.
    void WriteRegister(const std::string& name)
    {
        const Scrivel2::Scrivel2XmlGenRun::NameTable names{{0, input.Text(24)}, {1, "pc"}};
        eslapi::CADIReg_t reg{};
        reg.regNumber = input.Below(3);
        reg.offset128 = input.Any<std::uint16_t>();
        log.SetRegisterNames(&names);
        log.WriteReg(name, reg);
        log.SetRegisterNames(nullptr);

        const auto entry = names.find(reg.regNumber);
        const bool named = entry != names.end() && !entry->second.empty();
        Expect(2, Cleaned(named ? entry->second : name), "");
        Expect(3, "regNumber", std::to_string(reg.regNumber));
        Expect(3, "bytes", Bytes(reg.bytes));
        Expect(3, "offset128", std::to_string(reg.offset128));
        Expect(3, "isUndefined", "false");
        Expect(3, "attribute", "CADI_REG_READ_WRITE");
    }

    /// An element that is named by a text of a record, which ends at its first NUL.
    void WriteGroup(const std::string& name, const std::string& description)
    {
        eslapi::CADIRegGroup_t group{};
        name.copy(group.name, name.size());
        description.copy(group.description, description.size());
        log.WriteRegGroup(group);
        Expect(2, Cleaned(name.c_str()), "");
        Expect(3, "groupID", "0");
        Expect(3, "description", Shown(description.c_str()));
        Expect(3, "numRegsInGroup", "0");
    }

    Input& input;
    Generator log{"trace"};
    bool legal = true;
    std::vector<Element> expected;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    ScrivelFuzz::Surroundings surroundings;
    Input input(bytes, size);
    Session session(input);
    session.Compare(surroundings.LogText());
    session.Log().EndLogging();
    session.Compare(surroundings.LogText());
    RequireEqual(surroundings.TakePrinted(), "", "something was printed");
    return 0;
}
