// Where bytes of logs come from: files, standard input, compressed ones, folders of them.

#ifndef SCRIVEL_READER_LOGINPUT_H
#define SCRIVEL_READER_LOGINPUT_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ScrivelReader
{

/// One log, opened for reading from its first byte to its last. Whether it is compressed is seen from
/// its first bytes, not from its name. A compressed file that is cut short or damaged is read up to
/// there; then that is an error of Read.
class LogInput
{
public:
    virtual ~LogInput() = default;

    /// How many bytes were read; 0 at the end; nothing when reading failed, and Error() says why.
    virtual std::optional<std::size_t> Read(char* buffer, std::size_t size) = 0;
    virtual std::string Error() const = 0;
    /// Whether Error() is that a compressed file is cut short or damaged: LogReader::Finish takes it.
    virtual bool IsCutOff() const = 0;

    /// A file that can be read at any place, and isn't compressed: its descriptor. It stays the input's.
    virtual std::optional<int> Descriptor() const = 0;
    /// How far the file itself has been read, compressed or not, and its size when that is known.
    virtual std::uint64_t Consumed() const = 0;
    virtual std::optional<std::uint64_t> Size() const = 0;
};

/// "-" is standard input. Null when the file can't be read, and error says why.
std::unique_ptr<LogInput> OpenLog(const std::string& path, std::string& error);

/// The same, decompressed into a file without a name when it can't be read at any place. When
/// that one is cut off, IsCutOff() is true from the beginning.
std::unique_ptr<LogInput> OpenLogAnywhere(const std::string& path, std::string& error);

/// A file for reading and writing that is gone when it is closed, in TMPDIR or /tmp. -1 when there is no
/// place for it, and error says why.
int MakeUnnamedFile(std::string& error);

/// The logs that a path names: itself, or the .xml, .xml.gz and .xml.zst files in a folder and below,
/// sorted by name. Nothing when the folder can't be read, and error says why.
std::optional<std::vector<std::string>> LogsAt(const std::string& path, std::string& error);

/// Compressed formats that this build reads, and those that it left out.
std::vector<std::string_view> CompressedFormats();
std::vector<std::string_view> MissingFormats();

}  // namespace ScrivelReader

#endif
