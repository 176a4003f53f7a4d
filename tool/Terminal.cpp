// Colours, pager, progress and errors. Tested by tests/tool/CommandLineTest.cpp.

#include "Terminal.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <spawn.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>
#include <vector>

#include "Options.h"

extern char** environ;

namespace ScrivelTool
{

namespace
{

constexpr std::size_t usualWidth = 100;
constexpr std::size_t greatestWidth = 10000;
constexpr std::size_t mostKept = 64 * 1024;
constexpr std::chrono::milliseconds progressAfter(500);
constexpr std::chrono::milliseconds progressEvery(100);

std::string_view Environment(const char* name)
{
    const char* value = std::getenv(name);
    return value == nullptr ? std::string_view() : value;
}

/// 0, or the number of the error.
int WriteAll(int descriptor, std::string_view text)
{
    while (!text.empty()) {
        const ssize_t written = write(descriptor, text.data(), text.size());
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return written < 0 ? errno : EIO;
        text.remove_prefix(std::size_t(written));
    }
    return 0;
}

/// Whether a shell will find the program that a command begins with; also true when that can't be told.
bool IsThere(std::string_view command)
{
    const std::string name(command.substr(0, command.find(' ')));
    if (name.empty() || name.find_first_of("=\"'$`\\") != std::string::npos)
        return true;
    if (name.find('/') != std::string::npos)
        return access(name.c_str(), X_OK) == 0;
    const std::vector<std::string> folders = Split(Environment("PATH"), ':');
    return std::any_of(folders.begin(), folders.end(), [&](const std::string& folder) {
        return access((folder + "/" + name).c_str(), X_OK) == 0;
    });
}

// Controls beyond ASCII that a question mark takes the place of, too: those that begin a sequence which
// terminals obey, and those that turn the direction of a text, so that it reads otherwise than it stands.
struct Controls
{
    std::string_view first;
    std::string_view last;
};
constexpr Controls controls[] = {
    {"\u0080", "\u009f"}, {"\u061c", "\u061c"}, {"\u200e", "\u200f"},
    {"\u202a", "\u202e"}, {"\u2066", "\u2069"},
};

/// Of the control that a text begins with; 0 if it begins with none.
std::size_t LengthOfControl(std::string_view text)
{
    for (const auto& [first, last] : controls)
        if (const std::string_view own = text.substr(0, first.size()); first <= own && own <= last)
            return own.size();
    return 0;
}

}  // namespace

Terminal::Terminal()
    : outputIsTerminal(isatty(STDOUT_FILENO) != 0), errorIsTerminal(isatty(STDERR_FILENO) != 0),
      width(usualWidth), started(std::chrono::steady_clock::now()), progressAt(started)
{
    winsize size{};
    if (outputIsTerminal && ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col != 0) {
        width = size.ws_col;
        height = size.ws_row;
    }
    if (const std::string_view columns = Environment("COLUMNS"); !columns.empty()) {
        const long asked = std::strtol(columns.data(), nullptr, 10);
        if (asked > 0)
            width = std::size_t(asked);
    }
    width = std::min(width, greatestWidth);
    Choose(ColourChoice::Automatic);
}

Terminal::Terminal(std::string& itsSink) : Terminal()
{
    sink = &itsSink;
    outputIsTerminal = false;
    width = usualWidth;
    Choose(ColourChoice::Never);
}

Terminal::~Terminal()
{
    Finish();
    if (pager != 0) {
        close(output);
        int status = 0;
        while (waitpid(pager, &status, 0) < 0 && errno == EINTR) {
        }
    }
}

void Terminal::Choose(ColourChoice choice)
{
    const bool wanted =
        outputIsTerminal && Environment("NO_COLOR").empty() && Environment("TERM") != "dumb";
    colour = choice == ColourChoice::Always || (choice == ColourChoice::Automatic && wanted);
}

std::string Terminal::Styled(Style style, std::string_view text) const
{
    std::string styled(text);
    StyleFrom(0, style, styled);
    return styled;
}

void Terminal::StyleFrom(std::size_t begin, Style style, std::string& text) const
{
    if (!colour || begin == text.size())
        return;
    const auto code = [&]() -> std::string_view {
        switch (style) {
        case Style::Plain:
            return {};
        case Style::Name:
            return "\x1b[1m";
        case Style::Quiet:
            return "\x1b[2m";
        case Style::Failure:
            return "\x1b[31m";
        case Style::Damage:
            return "\x1b[33m";
        case Style::Added:
            return "\x1b[32m";
        }
        return {};
    }();
    if (!code.empty())
        text.insert(begin, code).append("\x1b[0m");
}

void Terminal::Print(std::string_view text)
{
    EndProgress();
    EraseLive();
    const bool mayStartPager = outputIsTerminal && mayPage && pager == 0 && height != 0;
    if (text.size() >= mostKept && !mayStartPager) {
        Flush();
        Write(text);
        return;
    }
    kept.append(text);
    if (mayStartPager) {
        lines += std::size_t(std::count(text.begin(), text.end(), '\n'));
        if (lines < height)
            return;
        StartPager();
    }
    if (kept.size() >= mostKept)
        Flush();
}

void Terminal::Flush()
{
    Write(kept);
    kept.clear();
}

void Terminal::Write(std::string_view text)
{
    if (sink != nullptr) {
        sink->append(text);
        return;
    }
    if (failed || unread)
        return;
    const int error = WriteAll(output, text);
    unread = error == EPIPE;  // nobody who would read on is nobody to tell
    if (error == 0 || unread)
        return;
    failed = true;
    Error("standard output", {}, std::generic_category().message(error));
}

bool Terminal::Finish()
{
    EndProgress();
    Flush();
    return !failed;
}

void Terminal::ShowLive(std::string_view text)
{
    if (!ShowsLive())
        return;
    EraseLive();
    Flush();
    WriteAll(output, text);
    liveLines = std::size_t(std::count(text.begin(), text.end(), '\n'));
}

void Terminal::EraseLive()
{
    if (liveLines != 0)
        WriteAll(output, "\x1b[" + std::to_string(liveLines) + "A\r\x1b[J");
    liveLines = 0;
}

void Terminal::StartPager()
{
    mayPage = false;
    std::string command(Environment("SCRIVEL_PAGER"));
    if (command.empty())
        command = Environment("PAGER");
    if (command.empty())
        command = "less";
    if (command == "cat" || !IsThere(command))
        return;

    int ends[2];
    if (pipe(ends) != 0)
        return;
    if (Environment("LESS").empty())
        setenv("LESS", "FRX", 1);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[0], STDIN_FILENO);
    posix_spawn_file_actions_addclose(&actions, ends[0]);
    posix_spawn_file_actions_addclose(&actions, ends[1]);
    std::string shell = "sh";
    std::string option = "-c";
    char* const arguments[] = {shell.data(), option.data(), command.data(), nullptr};
    pid_t process = 0;
    if (posix_spawn(&process, "/bin/sh", &actions, nullptr, arguments, environ) == 0) {
        pager = process;
        output = ends[1];
    } else {
        close(ends[1]);
    }
    close(ends[0]);
    posix_spawn_file_actions_destroy(&actions);
}

void Terminal::Error(std::string_view file, std::optional<std::uint64_t> line, std::string_view what)
{
    std::string text(file == "-" ? std::string_view("standard input") : file);
    if (line)
        text += ":" + std::to_string(*line);
    Error(text + ": " + std::string(what));
}

void Terminal::Error(std::string_view what)
{
    EndProgress();
    Flush();
    WriteAll(STDERR_FILENO, "scrivel: " + Printable(std::string(what)) + "\n");
}

void Terminal::Progress(std::string_view file, std::uint64_t done, std::optional<std::uint64_t> size)
{
    if (!errorIsTerminal || (outputIsTerminal && lines != 0) || pager != 0)
        return;
    const auto now = std::chrono::steady_clock::now();
    if (now - started < progressAfter || now - progressAt < progressEvery)
        return;
    progressAt = now;
    progressShown = true;
    std::string text = "\r\x1b[K" + Printable(std::string(file)) + "  ";
    if (size && *size != 0) {
        constexpr std::uint64_t cells = 20;
        const std::uint64_t filled = std::min(cells, cells * done / *size);
        text += "[" + std::string(filled, '#') + std::string(cells - filled, '.') + "] " +
                std::to_string(std::min<std::uint64_t>(100, 100 * done / *size)) + " %";
    } else {
        text += std::to_string(done / 1000 / 1000) + " MB";
    }
    WriteAll(STDERR_FILENO, text);
}

void Terminal::EndProgress()
{
    if (progressShown)
        WriteAll(STDERR_FILENO, "\r\x1b[K");
    progressShown = false;
}

void MakePrintable(std::string& text, std::size_t from)
{
    unsigned char all = 0;
    const auto begin = text.begin() + std::ptrdiff_t(from);
    std::transform(begin, text.end(), begin, [&](char c) {
        const auto byte = static_cast<unsigned char>(c);
        all |= byte;
        return byte < ' ' || byte == 0x7f ? '?' : c;
    });
    if (all < 0x80)
        return;
    for (std::size_t at = from; at < text.size(); ++at)
        if (const std::size_t size = LengthOfControl(std::string_view(text).substr(at)); size != 0)
            text.replace(at, size, "?");
}

std::string Printable(std::string text)
{
    MakePrintable(text, 0);
    return text;
}

}  // namespace ScrivelTool
