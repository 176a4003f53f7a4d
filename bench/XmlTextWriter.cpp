// libxml2's xmlTextWriter as a contender, with its own output and with the usual one.

#include "Contender.h"
#include "File.h"
#include "Values.h"

#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <libxml/xmlwriter.h>

namespace ScrivelBench
{
namespace
{

const xmlChar* Xml(const char* text)
{
    return reinterpret_cast<const xmlChar*>(text);
}

/// How values become text.
enum class Texts
{
    formatted,  // numbers by the writer's own printf-like functions
    quick,      // beforehand, as fast as can be
};

/// What both outputs share. The elements are indented as the library's are.
template <Texts texts>
class TextWriter : public Contender
{
public:
    TextWriter(const Workload& workload, xmlTextWriterPtr over)
        : writer(over), calls(workload, texts == Texts::quick ? MakePrintableQuickly : MakePrintable)
    {
        xmlTextWriterSetIndent(writer, 1);
        xmlTextWriterSetIndentString(writer, Xml("    "));
    }
    ~TextWriter() override { xmlFreeTextWriter(writer); }

    void LogCall() override { calls.Write(*this); }

    void Open(const char* name) { xmlTextWriterStartElement(writer, Xml(name)); }

    void Attribute(const char* name, const char* text)
    {
        xmlTextWriterWriteAttribute(writer, Xml(name), Xml(text));
    }

    template <typename Value>
    void Attribute(const char* name, Value value)
    {
        if constexpr (texts == Texts::quick) {
            Attribute(name, QuickText(value).c_str());
        } else {
            Format(value, [&](const char* format, auto... arguments) {
                xmlTextWriterWriteFormatAttribute(writer, Xml(name), format, arguments...);
            });
        }
    }

    void Element(const char* name, const char* text)
    {
        xmlTextWriterWriteElement(writer, Xml(name), Xml(text));
    }

    template <typename Value>
    void Element(const char* name, Value value)
    {
        if constexpr (texts == Texts::quick) {
            Element(name, QuickText(value).c_str());
        } else {
            Format(value, [&](const char* format, auto... arguments) {
                xmlTextWriterWriteFormatElement(writer, Xml(name), format, arguments...);
            });
        }
    }

    void Close() { xmlTextWriterFullEndElement(writer); }
    virtual void FlushInside() = 0;
    virtual void FlushBetween() = 0;

protected:
    void OpenRoot()
    {
        Open(RootName().c_str());
        Seal();
    }

    /// Ends a start tag that is still open for attributes.
    void Seal() { xmlTextWriterWriteRaw(writer, Xml("")); }

    const xmlTextWriterPtr writer;

private:
    Calls calls;
};

xmlOutputBufferPtr OpenFile()
{
    const int descriptor = open(LogFileName().c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (descriptor < 0) {
        throw std::system_error(errno, std::generic_category(), LogFileName());
    }
    return xmlOutputBufferCreateFd(descriptor, nullptr);
}

/// Over a descriptor: with a file name, flushing the writer would not reach the file.
class TextWriterOnFile : public TextWriter<Texts::formatted>
{
public:
    explicit TextWriterOnFile(const Workload& workload)
        : TextWriter(workload, xmlNewTextWriter(OpenFile()))
    {
        xmlTextWriterStartDocument(writer, nullptr, "UTF-8", nullptr);
        OpenRoot();
    }
    ~TextWriterOnFile() override
    {
        xmlTextWriterEndDocument(writer);
        xmlTextWriterFlush(writer);
    }

    void FlushInside() override
    {
        Seal();
        xmlTextWriterFlush(writer);
    }
    void FlushBetween() override { xmlTextWriterFlush(writer); }
};

struct Memory
{
    Memory() = default;
    ~Memory() { xmlBufferFree(memory); }
    Memory(const Memory&) = delete;
    Memory& operator=(const Memory&) = delete;

    const xmlBufferPtr memory = xmlBufferCreate();
};

/// The memory is a base: it outlives the writer.
template <Texts texts>
class TextWriterOnFloor : private Memory, public TextWriter<texts>
{
public:
    explicit TextWriterOnFloor(const Workload& workload)
        : TextWriter<texts>(workload, xmlNewTextWriterMemory(memory, 0)),
          provisionalEnd("    </" + workload.callName + ">\n")
    {
        // The root stands in the file already; here it only makes the calls indented.
        this->OpenRoot();
        xmlTextWriterFlush(this->writer);
        xmlBufferEmpty(memory);
    }

    void FlushInside() override
    {
        this->Seal();
        Write(provisionalEnd);
    }
    void FlushBetween() override { Write(file.RootEnd()); }

private:
    void Write(const std::string& closing)
    {
        xmlTextWriterFlush(this->writer);
        xmlBufferAdd(memory, Xml(closing.c_str()), static_cast<int>(closing.size()));
        file.Write({reinterpret_cast<const char*>(xmlBufferContent(memory)),
                    static_cast<std::size_t>(xmlBufferLength(memory))},
                   closing.size());
        xmlBufferEmpty(memory);
    }

    const std::string provisionalEnd;
    FloorFile file;
};

}  // namespace

std::unique_ptr<Contender> MakeTextWriterOnFile(const Workload& workload)
{
    return std::make_unique<TextWriterOnFile>(workload);
}

std::unique_ptr<Contender> MakeTextWriterOnFloor(const Workload& workload)
{
    return std::make_unique<TextWriterOnFloor<Texts::formatted>>(workload);
}

std::unique_ptr<Contender> MakeQuickTextWriterOnFloor(const Workload& workload)
{
    return std::make_unique<TextWriterOnFloor<Texts::quick>>(workload);
}

}  // namespace ScrivelBench
