// tinyxml2's XMLPrinter as a contender, with its own output and with the usual one.

#include "Contender.h"
#include "File.h"
#include "Values.h"

#include <cerrno>
#include <cstdio>
#include <system_error>

#include <tinyxml2.h>

namespace ScrivelBench
{
namespace
{

class Printer : public tinyxml2::XMLPrinter
{
public:
    using XMLPrinter::XMLPrinter;

    /// Ends a start tag that is still open for attributes.
    void Seal() { SealElementIfJustOpened(); }

    void Add(const std::string& text) { Write(text.data(), text.size()); }
};

/// What both outputs share.
class PrinterContender : public Contender
{
public:
    PrinterContender(const Workload& what, std::FILE* file)
        : rootName(RootName()), printer(file), calls(what)
    {
        printer.PushHeader(false, true);
        printer.OpenElement(rootName.c_str());
        printer.Seal();
    }

    void LogCall() override { calls.Write(*this); }

    void Open(const char* name) { printer.OpenElement(name); }

    void Attribute(const char* name, Decimal decimal)
    {
        printer.PushAttribute(name, static_cast<std::uint64_t>(decimal.value));
    }
    template <typename Value>
    void Attribute(const char* name, Value value)
    {
        printer.PushAttribute(name, PrintedText(value).c_str());
    }

    void Element(const char* name, const char* text) { ElementOf(name, text); }
    void Element(const char* name, Decimal decimal)
    {
        ElementOf(name, static_cast<std::uint64_t>(decimal.value));
    }
    template <typename Value>
    void Element(const char* name, Value value)
    {
        ElementOf(name, PrintedText(value).c_str());
    }

    void Close() { printer.CloseElement(); }
    virtual void FlushInside() = 0;
    virtual void FlushBetween() = 0;

protected:
    const std::string rootName;
    Printer printer;

private:
    template <typename TextOrNumber>
    void ElementOf(const char* name, TextOrNumber value)
    {
        printer.OpenElement(name);
        printer.PushText(value);
        printer.CloseElement();
    }

    Calls calls;
};

class PrinterOnFile : public PrinterContender
{
public:
    explicit PrinterOnFile(const Workload& what)
        : PrinterOnFile(what, std::fopen(LogFileName().c_str(), "wbe"))
    {
    }
    ~PrinterOnFile() override
    {
        printer.CloseElement();
        std::fclose(file);
    }

    void FlushInside() override
    {
        printer.Seal();
        std::fflush(file);
    }
    void FlushBetween() override { std::fflush(file); }

private:
    PrinterOnFile(const Workload& what, std::FILE* opened) : PrinterContender(what, opened), file(opened)
    {
        if (file == nullptr) {
            throw std::system_error(errno, std::generic_category(), LogFileName());
        }
    }

    std::FILE* file;
};

class PrinterOnFloor : public PrinterContender
{
public:
    explicit PrinterOnFloor(const Workload& what)
        : PrinterContender(what, nullptr), provisionalEnd("\n    </" + what.callName + ">\n"),
          rootEnd("\n" + file.RootEnd())
    {
        printer.ClearBuffer(false);
    }

    void FlushInside() override
    {
        printer.Seal();
        Write(provisionalEnd);
    }
    void FlushBetween() override { Write(rootEnd); }

private:
    void Write(const std::string& closing)
    {
        printer.Add(closing);
        file.Write({printer.CStr(), static_cast<std::size_t>(printer.CStrSize()) - 1}, closing.size());
        printer.ClearBuffer(false);
    }

    FloorFile file;
    std::string provisionalEnd;
    std::string rootEnd;
};

}  // namespace

std::unique_ptr<Contender> MakePrinterOnFile(const Workload& workload)
{
    return std::make_unique<PrinterOnFile>(workload);
}

std::unique_ptr<Contender> MakePrinterOnFloor(const Workload& workload)
{
    return std::make_unique<PrinterOnFloor>(workload);
}

}  // namespace ScrivelBench
