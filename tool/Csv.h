// Comma-separated values, as RFC 4180 has them.

#ifndef SCRIVEL_TOOL_CSV_H
#define SCRIVEL_TOOL_CSV_H

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

namespace ScrivelTool
{

/// One line with its end. What holds a comma, a quote or a line end stands in quotes.
inline std::string CsvLine(const std::vector<std::string>& cells)
{
    std::string line;
    std::size_t size = 0;
    for (const std::string& cell : cells)
        size += cell.size() + std::size_t(std::count(cell.begin(), cell.end(), '"')) + 3;
    line.reserve(size);
    for (const std::string& cell : cells) {
        line += &cell == &cells.front() ? "" : ",";
        if (cell.find_first_of(",\"\r\n") == std::string::npos) {
            line += cell;
            continue;
        }
        line += '"';
        for (const char c : cell)
            line.append(c == '"' ? 2 : 1, c);
        line += '"';
    }
    line += '\n';
    return line;
}

}  // namespace ScrivelTool

#endif
