// The calls that the judge of logs finds in a log.

#ifndef SCRIVEL_TESTS_LAYER_CALLREADER_H
#define SCRIVEL_TESTS_LAYER_CALLREADER_H

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace ScrivelTest
{

/// An element without children, or with them: the names on the way to it and its text.
///
///     <location><addr>0x10</addr></location>   ->  {"location/addr", "0x10"}
struct Leaf
{
    std::string path;
    std::string text;

    bool operator==(const Leaf& other) const { return path == other.path && text == other.text; }
};

/// What a log says about one call, put together from all elements of its number.
struct ReadCall
{
    std::string name;
    std::vector<Leaf> arguments;
    std::vector<Leaf> results;
    unsigned int returns = 0;  ///< how many return times there are

    /// The text of the first leaf of that path; "(missing)" if there is none.
    std::string Argument(std::string_view path) const;
    std::string Result(std::string_view path) const;
};

struct ReadLog
{
    bool accepted = false;  ///< libxml2 takes the bytes for a document, and no call changes its name
    std::map<unsigned int, ReadCall> calls;

    /// The calls of that name, in the order of their numbers.
    std::vector<ReadCall> Named(std::string_view name) const;
};

ReadLog ReadCalls(const std::string& bytes);

}  // namespace ScrivelTest

#endif
