// pugixml as a contender.

#include "Contender.h"
#include "File.h"
#include "Values.h"

#include <cerrno>
#include <cstdio>
#include <system_error>

#include <pugixml.hpp>

namespace ScrivelBench
{
namespace
{

/// Builds the call's element in a document and prints it. Whole elements only can be printed: the second
/// flush prints the call once more, over the first.
class Pugi : public Contender
{
public:
    explicit Pugi(const Workload& what) : current(document), calls(what) {}

    void LogCall() override { calls.Write(*this); }

    void Open(const char* name) { current = current.append_child(name); }

    void Attribute(const char* name, Decimal decimal)
    {
        current.append_attribute(name).set_value(decimal.value);
    }
    template <typename Value>
    void Attribute(const char* name, Value value)
    {
        current.append_attribute(name).set_value(PrintedText(value).c_str());
    }

    void Element(const char* name, const char* text) { current.append_child(name).text().set(text); }
    void Element(const char* name, Decimal decimal)
    {
        current.append_child(name).text().set(decimal.value);
    }
    template <typename Value>
    void Element(const char* name, Value value)
    {
        Element(name, PrintedText(value).c_str());
    }

    void Close() { current = current.parent(); }

    void FlushInside() { Flush(false); }
    void FlushBetween()
    {
        Flush(true);
        document.remove_children();
    }

protected:
    void Print(pugi::xml_writer& writer)
    {
        document.first_child().print(writer, "    ", pugi::format_indent, pugi::encoding_utf8, 1);
    }

    /// Brings the call to the file; `returned` when it will not come again.
    virtual void Flush(bool returned) = 0;

private:
    pugi::xml_document document;
    pugi::xml_node current;
    Calls calls;
};

class PugiOnFile : public Pugi
{
public:
    explicit PugiOnFile(const Workload& what)
        : Pugi(what), file(std::fopen(LogFileName().c_str(), "wbe")), writer(file)
    {
        if (file == nullptr) {
            throw std::system_error(errno, std::generic_category(), LogFileName());
        }
        std::fprintf(file, "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<%s>\n", RootName().c_str());
        place = std::ftell(file);
    }
    ~PugiOnFile() override
    {
        std::fprintf(file, "</%s>\n", RootName().c_str());
        std::fclose(file);
    }

private:
    void Flush(bool returned) override
    {
        if (returned) {
            std::fseek(file, place, SEEK_SET);
        }
        Print(writer);
        std::fflush(file);
        if (returned) {
            place = std::ftell(file);
        }
    }

    std::FILE* file;
    pugi::xml_writer_file writer;
    long place;
};

class PugiOnFloor : public Pugi
{
public:
    explicit PugiOnFloor(const Workload& what) : Pugi(what) {}

private:
    struct Memory : pugi::xml_writer
    {
        void write(const void* data, std::size_t size) override
        {
            text.append(static_cast<const char*>(data), size);
        }
        std::string text;
    };

    void Flush(bool returned) override
    {
        memory.text.clear();
        Print(memory);
        memory.text += file.RootEnd();
        file.Write(memory.text, returned ? file.RootEnd().size() : memory.text.size());
    }

    Memory memory;
    FloorFile file;
};

}  // namespace

std::unique_ptr<Contender> MakePugiOnFile(const Workload& workload)
{
    return std::make_unique<PugiOnFile>(workload);
}

std::unique_ptr<Contender> MakePugiOnFloor(const Workload& workload)
{
    return std::make_unique<PugiOnFloor>(workload);
}

}  // namespace ScrivelBench
