// The one way out of the program: text on standard output, errors and progress on standard error.

#ifndef SCRIVEL_TOOL_TERMINAL_H
#define SCRIVEL_TOOL_TERMINAL_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ScrivelTool
{

enum class Style
{
    Plain,
    Name,     ///< bold
    Quiet,    ///< dim: times, OK
    Failure,  ///< red: failed, never returned
    Damage,   ///< yellow
    Added,    ///< green: only in the second of two
};

enum class ColourChoice
{
    Automatic,
    Always,
    Never
};

class Terminal
{
public:
    Terminal();
    /// No terminal, but a text that what is printed is added to; it outlives this.
    explicit Terminal(std::string& itsSink);
    ~Terminal();
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    // ---- Before the first text ----------------------------------------------------------------------
    void Choose(ColourChoice choice);
    void ForbidPager() { mayPage = false; }

    // ---- Text ---------------------------------------------------------------------------------------
    /// Text that is longer than the screen goes through a pager when a person reads it.
    void Print(std::string_view text);
    /// The text, with colours when there are any.
    std::string Styled(Style style, std::string_view text) const;
    /// Gives what the text has from there on its colour.
    void StyleFrom(std::size_t begin, Style style, std::string& text) const;
    /// How many columns a line may have.
    std::size_t Width() const { return width; }
    /// Writes what is kept back, as a command does that tells what happens as it happens.
    void Flush();
    /// False when nobody reads on, or writing has failed: what is printed then goes nowhere.
    bool Writes() const { return !failed && !unread; }
    /// After the last text. False when some of it could not be written, of which Error() has told.
    bool Finish();
    /// Lines that stay below what is printed, until others take their place. They are there for a person:
    /// nothing of them goes into a file or a pipe.
    void ShowLive(std::string_view text);
    bool ShowsLive() const { return outputIsTerminal && pager == 0; }

    // ---- Standard error -----------------------------------------------------------------------------
    /// scrivel: FILE:LINE: what
    void Error(std::string_view file, std::optional<std::uint64_t> line, std::string_view what);
    /// scrivel: what
    void Error(std::string_view what);
    /// How far a log was read. Shows a bar when a person looks at it and half a second has passed.
    void Progress(std::string_view file, std::uint64_t done, std::optional<std::uint64_t> size);
    void EndProgress();

private:
    void Write(std::string_view text);
    void StartPager();
    void EraseLive();

    bool outputIsTerminal;
    bool errorIsTerminal;
    bool colour = false;
    bool mayPage = true;
    std::size_t width;
    std::size_t height = 0;
    std::size_t lines = 0;  // printed so far, when a pager may still begin
    std::size_t liveLines = 0;
    std::string kept;
    std::string* sink = nullptr;  // that takes what is printed
    int output = 1;
    bool failed = false;  // to write
    bool unread = false;
    int pager = 0;  // its process
    std::chrono::steady_clock::time_point started;
    std::chrono::steady_clock::time_point progressAt;
    bool progressShown = false;
};

/// What a log says is shown as text, whatever it holds: no control character reaches the terminal.
std::string Printable(std::string text);
/// Makes what the text has from there on printable.
void MakePrintable(std::string& text, std::size_t from);

}  // namespace ScrivelTool

#endif
