// Leaves out of a text what tells of people and their machines.

#ifndef SCRIVEL_TOOL_ANONYMOUS_H
#define SCRIVEL_TOOL_ANONYMOUS_H

#include <string>

namespace ScrivelTool
{

/// In place of the host's name stands "host", of each path "path", and of the log's path the name of its
/// file. A path is
///     - what begins with / ~/ ~joe/ ./ ../ C:\ C:/ \\server\ or file://, also right after -L and its
///     like;
///     - a word with two slashes and a letter, or with one and an ending: lib/model/x, lib/x.so.
/// It goes to the end of its quotes, or of a next word with a slash: "/home/joe smith/x". What is none
/// stays: fractions and dates, a/b, addresses of the web.
class Anonymous
{
public:
    Anonymous(std::string itsHost, std::string itsLog);

    /// The text may be XML; a path lies within a line.
    std::string operator()(std::string text) const;

private:
    std::string host;
    std::string log;
    std::string folder;
};

}  // namespace ScrivelTool

#endif
