// Trees of names and values. Tested by tests/tool/ShowTest.cpp.

#include "CallTree.h"

#include <algorithm>
#include <cstdio>
#include <string_view>

#include "CallLine.h"

namespace ScrivelTool
{

using namespace ScrivelReader;

namespace
{

constexpr std::size_t bytesInARow = 16;

std::string HexDump(std::string_view bytes, const std::string& indent)
{
    std::string text;
    for (std::size_t at = 0; at < bytes.size(); at += bytesInARow) {
        char number[32];
        std::snprintf(number, sizeof number, "%04zx  ", at);
        std::string digits;
        std::string letters;
        for (const char byte : bytes.substr(at, bytesInARow)) {
            constexpr std::string_view hex = "0123456789abcdef";
            const auto value = static_cast<unsigned char>(byte);
            if (!digits.empty())
                digits += letters.size() == bytesInARow / 2 ? "  " : " ";
            digits.append(1, hex[value / 16]).append(1, hex[value % 16]);
            letters += value >= ' ' && value < 0x7f ? byte : '.';
        }
        digits.resize(bytesInARow * 3, ' ');
        text.append(indent).append(number).append(digits).append("  ").append(letters).append("\n");
    }
    return text;
}

void AddElements(Tree::Elements elements, std::size_t depth, const Terminal& terminal, std::string& text)
{
    const std::string indent(2 * depth, ' ');
    std::size_t widest = 0;
    for (Tree::Element element : elements)
        if (element.What() != Tree::Kind::Elements)
            widest = std::max(widest, element.Name().size());
    constexpr std::size_t mostAligned = 32;
    widest = std::min(widest, mostAligned);

    for (Tree::Element element : elements) {
        text += indent + terminal.Styled(Style::Name, Printable(std::string(element.Name())));
        const std::string gap(std::max(widest + 2, element.Name().size() + 2) - element.Name().size(),
                              ' ');
        switch (element.What()) {
        case Tree::Kind::Text:
            text += element.Text().empty() ? "\n" : gap + Printable(std::string(element.Text())) + "\n";
            break;
        case Tree::Kind::Bytes:
            text += gap + std::to_string(element.Count()) +
                    (element.Count() == 1 ? " byte\n" : " bytes\n") +
                    HexDump(element.Text(), indent + "  ");
            break;
        case Tree::Kind::Elements:
            text += !element.Children().Empty() ? "\n" : gap + (element.IsCut() ? "...\n" : "(none)\n");
            AddElements(element.Children(), depth + 1, terminal, text);
            if (element.IsCut() && !element.Children().Empty())
                text += indent + "  ...\n";
            break;
        }
    }
}

void AddPlaces(Tree::Elements elements, std::vector<std::string>& places)
{
    for (Tree::Element element : elements) {
        if (const auto address = AddressText(element)) {
            places.push_back(*address);
        } else if (const auto value = RegisterText(element)) {
            places.push_back(value->substr(0, value->find('=')));
        } else {
            AddPlaces(element.Children(), places);
        }
    }
}

}  // namespace

std::string TreeText(const Tree& tree, const Terminal& terminal)
{
    std::string text;
    AddElements(tree.Top(), 1, terminal, text);
    return text;
}

std::vector<std::string> Places(const Tree& tree)
{
    std::vector<std::string> places;
    AddPlaces(tree.Top(), places);
    return places;
}

}  // namespace ScrivelTool
