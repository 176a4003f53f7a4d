// Runs the program scrivel on a terminal of 80 columns, and tells what a person sees there.

#ifndef SCRIVEL_TESTS_TOOL_PSEUDOTERMINAL_H
#define SCRIVEL_TESTS_TOOL_PSEUDOTERMINAL_H

#include <cstddef>
#include <string>
#include <sys/types.h>
#include <vector>

namespace ScrivelTest
{

/// What a terminal shows of what was written to it. It knows what scrivel uses: line ends, colours, lines
/// up, and erasing from there; and that a line that is too long goes on in the next one.
class Screen
{
public:
    void Write(const std::string& bytes);
    std::string Text() const;

private:
    using Row = std::vector<std::string>;  // a character each

    void Put(char byte);
    void Obey(char command, std::size_t number);
    void NextRow();

    std::vector<Row> gone;  // over the upper edge
    std::vector<Row> rows = {{}};
    std::size_t row = 0;
    std::size_t column = 0;
    std::string sequence;  // that has begun
};

class PseudoTerminal
{
public:
    static constexpr std::size_t columns = 80;
    static constexpr std::size_t height = 24;

    PseudoTerminal(const std::string& folder, const std::vector<std::string>& arguments);
    ~PseudoTerminal();
    PseudoTerminal(const PseudoTerminal&) = delete;
    PseudoTerminal& operator=(const PseudoTerminal&) = delete;

    /// What it shows as soon as the text is among its rows, all of which have ended, or after some
    /// seconds.
    std::string ScreenWith(const std::string& text);
    /// What it shows when the program has ended.
    std::string ScreenAtEnd();
    /// All bytes that were written to it.
    const std::string& Written() const { return written; }

private:
    /// False when nothing comes any more.
    bool ReadMore();

    int terminal = -1;
    pid_t process = -1;
    Screen screen;
    std::string written;
};

}  // namespace ScrivelTest

#endif
