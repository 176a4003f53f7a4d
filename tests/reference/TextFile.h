// A file stream whose file is a string: it behaves as std::ofstream does, and its owner sees what the
// last flush left.

#ifndef SCRIVEL_TESTS_REFERENCE_TEXTFILE_H
#define SCRIVEL_TESTS_REFERENCE_TEXTFILE_H

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <ostream>
#include <streambuf>
#include <string>

namespace ScrivelTest
{

/// A string with a put position. Text after the end leaves a hole of zeros.
class TextFileBuffer : public std::streambuf
{
public:
    bool isOpen = false;
    std::string text;
    std::string flushed;
    std::size_t position = 0;

protected:
    int_type overflow(int_type character) override
    {
        const char c = traits_type::to_char_type(character);
        return xsputn(&c, 1) == 1 ? character : traits_type::eof();
    }

    std::streamsize xsputn(const char* characters, std::streamsize length) override
    {
        if (!isOpen) {
            return 0;
        }
        if (length == 0) {
            return 0;  // after the end of the file no text makes no hole
        }
        const auto count = static_cast<std::size_t>(length);
        text.resize(std::max(text.size(), position + count), '\0');
        text.replace(position, count, characters, count);
        position += count;
        return length;
    }

    int sync() override
    {
        if (isOpen) {
            flushed = text;
        }
        return 0;
    }

    pos_type seekoff(off_type offset, std::ios_base::seekdir from, std::ios_base::openmode) override
    {
        off_type place = offset;
        if (from == std::ios_base::cur) {
            place += static_cast<off_type>(position);
        } else if (from == std::ios_base::end) {
            place += static_cast<off_type>(text.size());
        }
        if (!isOpen || place < 0) {
            return pos_type(off_type(-1));
        }
        position = static_cast<std::size_t>(place);
        return pos_type(place);
    }

    pos_type seekpos(pos_type place, std::ios_base::openmode mode) override
    {
        return seekoff(off_type(place), std::ios_base::beg, mode);
    }
};

class TextFile : public std::ostream
{
public:
    TextFile() : std::ostream(nullptr) { rdbuf(&buffer); }

    void open(const std::string& fileName)
    {
        const std::filesystem::path folder = std::filesystem::path(fileName).parent_path();
        if (buffer.isOpen) {
            setstate(failbit);
        } else if (!folder.empty() && !std::filesystem::exists(folder)) {
            errno = ENOENT;
            setstate(failbit);
        } else {
            clear();
            buffer.isOpen = true;
            buffer.text.clear();
            buffer.flushed.clear();
            buffer.position = 0;
            name = fileName;
        }
    }

    void close()
    {
        if (!buffer.isOpen) {
            setstate(failbit);
        } else {
            buffer.flushed = buffer.text;
            buffer.isOpen = false;
        }
    }

    /// The name of the file that was opened last, empty when none was.
    const std::string& Name() const { return name; }

    /// What the file holds on disk.
    const std::string& Flushed() const { return buffer.flushed; }

private:
    TextFileBuffer buffer;
    std::string name;
};

}  // namespace ScrivelTest

#endif
