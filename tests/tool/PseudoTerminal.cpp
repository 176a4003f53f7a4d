#include "tool/PseudoTerminal.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace ScrivelTest
{

void Screen::Write(const std::string& bytes)
{
    for (const char byte : bytes) {
        if (sequence.empty() && byte != '\x1b') {
            Put(byte);
            continue;
        }
        sequence += byte;
        if (sequence.size() > 2 && byte >= '@') {
            Obey(byte, std::size_t(std::atoi(sequence.c_str() + 2)));
            sequence.clear();
        }
    }
}

void Screen::Put(char byte)
{
    const bool goesOn = (static_cast<unsigned char>(byte) & 0xc0) == 0x80;
    if (byte == '\r') {
        column = 0;
    } else if (byte == '\n') {
        NextRow();
    } else if (goesOn) {
        rows[row][column - 1] += byte;
    } else {
        if (column == PseudoTerminal::columns) {
            NextRow();
            column = 0;
        }
        rows[row].resize(std::max(rows[row].size(), column + 1), " ");
        rows[row][column++] = byte;
    }
}

void Screen::Obey(char command, std::size_t number)
{
    if (command == 'A') {
        row -= std::min(row, number);
    } else if (command == 'J') {
        rows[row].resize(std::min(rows[row].size(), column));
        rows.resize(row + 1);
    } else if (command != 'm') {
        ADD_FAILURE() << "unknown to this terminal: " << command;
    }
}

void Screen::NextRow()
{
    if (++row == rows.size()) {
        rows.emplace_back();
    }
    if (row == PseudoTerminal::height) {
        gone.push_back(rows.front());
        rows.erase(rows.begin());
        --row;
    }
}

std::string Screen::Text() const
{
    std::string text;
    for (const auto* const part : {&gone, &rows}) {
        for (const Row& each : *part) {
            for (const std::string& character : each) {
                text += character;
            }
            text += '\n';
        }
    }
    text.pop_back();  // the cursor's row has not ended
    return text;
}

PseudoTerminal::PseudoTerminal(const std::string& folder, const std::vector<std::string>& arguments)
    : terminal(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC))
{
    if (terminal < 0 || grantpt(terminal) != 0 || unlockpt(terminal) != 0) {
        ADD_FAILURE() << "no terminal to be had";
        return;
    }
    const int side = open(ptsname(terminal), O_RDWR | O_NOCTTY | O_CLOEXEC);
    winsize size{};
    size.ws_col = columns;
    size.ws_row = height;
    ioctl(side, TIOCSWINSZ, &size);

    std::vector<std::string> words = {SCRIVEL_PROGRAM};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> line;
    for (std::string& word : words) {
        line.push_back(word.data());
    }
    line.push_back(nullptr);
    process = fork();
    if (process == 0) {
        for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
            dup2(side, stream);
        }
        unsetenv("COLUMNS");
        unsetenv("NO_COLOR");
        setenv("TERM", "xterm", 1);
        if (chdir(folder.c_str()) == 0) {
            execv(line[0], line.data());
        }
        _exit(127);
    }
    close(side);
}

PseudoTerminal::~PseudoTerminal()
{
    if (process > 0) {
        kill(process, SIGKILL);
        waitpid(process, nullptr, 0);
    }
    close(terminal);
}

bool PseudoTerminal::ReadMore()
{
    constexpr int longestSilence = 20000;
    pollfd waiting = {terminal, POLLIN, 0};
    char bytes[4096];
    // Reading fails once the program has closed its side.
    const ssize_t got = poll(&waiting, 1, longestSilence) == 1 ? read(terminal, bytes, sizeof bytes) : -1;
    if (got <= 0) {
        return false;
    }
    written.append(bytes, std::size_t(got));
    screen.Write(std::string(bytes, std::size_t(got)));
    return true;
}

std::string PseudoTerminal::ScreenWith(const std::string& text)
{
    // What runs is drawn again and again: that it comes can't be waited for by silence.
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    const auto isThere = [&] {
        const std::string seen = screen.Text();
        return seen.find(text) != std::string::npos && seen.back() == '\n';
    };
    while (!isThere() && std::chrono::steady_clock::now() < end && ReadMore()) {
    }
    return screen.Text();
}

std::string PseudoTerminal::ScreenAtEnd()
{
    while (ReadMore()) {
    }
    return screen.Text();
}

}  // namespace ScrivelTest
