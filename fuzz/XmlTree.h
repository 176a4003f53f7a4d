// What a reader of the log sees: libxml2's elements in document order.

#ifndef SCRIVEL_FUZZ_XMLTREE_H
#define SCRIVEL_FUZZ_XMLTREE_H

#include <optional>
#include <string>
#include <vector>

namespace ScrivelFuzz
{

struct Element
{
    unsigned int level;  // 0 for the root
    std::string name;
    std::string text;  // of an element without children
    std::string call;  // its call_num, empty without one
};

/// The elements of a document, or nothing when libxml2, without its recovery mode, finds none in the
/// bytes.
std::optional<std::vector<Element>> Elements(const std::string& bytes);

}  // namespace ScrivelFuzz

#endif
