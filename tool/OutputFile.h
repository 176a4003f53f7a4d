// A file that a command writes. It bears its name only once it is whole.

#ifndef SCRIVEL_TOOL_OUTPUTFILE_H
#define SCRIVEL_TOOL_OUTPUTFILE_H

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace ScrivelTool
{

enum class Existing
{
    Keep,
    Replace
};

/// Until it is finished, the file has no name, so nothing is left of it when the process is killed. Where
/// the file system has no such files, it has a hidden name beside its own. What is there already and is
/// no file, as a pipe or /dev/null, is written to as it is.
class OutputFile
{
public:
    /// Null when there is such a file and it is to be kept, when it is one of the logs that are read (-
    /// is standard input), or when none can be made; error says why.
    static std::unique_ptr<OutputFile> Make(const std::string& path, Existing existing,
                                            const std::vector<std::string>& logs, std::string& error);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// False when writing failed, now or before; Error() says why.
    bool Write(std::string_view bytes);
    /// Gives the file its name.
    bool Finish();
    const std::string& Error() const { return error; }

    /// What was written, to be read by pread; nothing was when Written() is 0.
    int Descriptor() const { return descriptor; }
    std::uint64_t Written() const { return written; }
    bool CanBeReadBack() const { return kind != Kind::NoFile; }

private:
    enum class Kind
    {
        NoFile,
        Unnamed,
        Hidden,
    };

    OutputFile(std::string itsPath, Existing itsExisting, Kind itsKind, int itsDescriptor,
               std::string itsHiddenPath);
    bool Name();
    bool Hide();
    bool Fail(int number);

    const std::string path;
    const Existing existing;
    const Kind kind;
    int descriptor;
    std::string hiddenPath;  // empty while the file has no such name
    std::uint64_t written = 0;
    std::string error;
};

}  // namespace ScrivelTool

#endif
