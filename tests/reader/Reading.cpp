#include "reader/Reading.h"

namespace ScrivelTest
{

using namespace ScrivelReader;

namespace
{

class Recorder final : public LogHandler
{
public:
    explicit Recorder(Reading& itsReading) : reading(itsReading) {}
    void Header(const LogHeader& header) override { reading.headers.push_back(header); }
    void Ended(Call& call) override { reading.calls.push_back(std::move(call)); }
    void Damaged(const Damage& damage) override { reading.damages.push_back(damage); }
    void Comment(std::string_view text, const Part&) override { reading.comments.emplace_back(text); }

private:
    Reading& reading;
};

std::string ElementsShown(Tree::Elements elements)
{
    std::string text;
    for (Tree::Element element : elements) {
        if (!text.empty())
            text += " ";
        text += element.Name();
        if (element.What() == Tree::Kind::Text) {
            text += "=" + std::string(element.Text());
        } else if (element.What() == Tree::Kind::Bytes) {
            text += "[";
            for (const char byte : element.Text()) {
                constexpr std::string_view digits = "0123456789abcdef";
                const auto value = static_cast<unsigned char>(byte);
                text.append(1, digits[value / 16]).append(1, digits[value % 16]);
            }
            text += "]";
        } else {
            text += "{" + ElementsShown(element.Children()) + "}";
        }
        if (element.IsCut())
            text += "...";
    }
    return text;
}

}  // namespace

Reading ReadBytes(std::string_view bytes, const ReadOptions& options, std::size_t piece,
                  std::string_view cutOff)
{
    Reading reading;
    Recorder recorder(reading);
    LogReader reader(recorder, options);
    for (std::size_t at = 0; at < bytes.size(); at += piece)
        reader.Feed(bytes.substr(at, piece));
    reading.end = reader.Finish(cutOff);
    return reading;
}

std::string Shown(const Tree& tree)
{
    return ElementsShown(tree.Top());
}

std::string Shown(const std::vector<Call>& calls)
{
    std::string text;
    for (const Call& call : calls) {
        text += std::to_string(call.number);
        if (call.occurrence > 1)
            text += "#" + std::to_string(call.occurrence);
        text += " " + call.name + "(" + Shown(call.arguments) + ")";
        if (call.Returned())
            text += " -> " + Shown(call.results);
        if (!call.status.empty())
            text += " | status " + call.status;
        text += "\n";
    }
    return text;
}

std::string LogOf(std::string_view elements)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<run-4242\n time=\"2026-11-21 14:03:59\"\n"
           " CADI_version=\"CADI 2.0\"\n hostname=\"lab7\"\n OS=\"Linux\">\n" +
           std::string(elements) + "</run-4242>\n";
}

}  // namespace ScrivelTest
