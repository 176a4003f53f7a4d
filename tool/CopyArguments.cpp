// One log in, one out. Tested by tests/tool/RecoverTest.cpp and tests/tool/CutTest.cpp.

#include "CopyArguments.h"

#include <vector>

#include "FileBytes.h"
#include "Options.h"
#include "OutputFile.h"

namespace ScrivelTool
{

using namespace ScrivelReader;

namespace
{

/// Whether a strict parser accepts what was written.
bool IsWhole(const OutputFile& file, const std::string& path, Terminal& terminal)
{
    FileBytes bytes(file.Descriptor(), path, terminal);
    LogHandler nobody;
    ReadOptions options;
    options.contents = false;
    LogReader reader(nobody, options);
    std::vector<char> buffer(64 * 1024);
    for (std::uint64_t at = 0; at < bytes.Size();) {
        const auto got = bytes.ReadAt(at, buffer.data(), buffer.size());
        if (!got || *got == 0) {
            return false;
        }
        reader.Feed({buffer.data(), *got});
        at += *got;
    }
    return reader.Finish().whole;
}

}  // namespace

void CopyArguments::AddTo(Options& options)
{
    logs.AddTo(options, "one log, or - for standard input; .gz and .zst too");
    options.Required("-o,--output", "FILE", output, "the file to be written");
    options.Flag("--force", force, "replace the file if there is one");
}

std::optional<Copied> CopyArguments::Copy(const Copying& copying, Terminal& terminal) const
{
    logs.Prepare(terminal);
    if (logs.Paths().size() != 1) {
        terminal.Error("one log at a time");
        return {};
    }
    std::string error;
    const std::unique_ptr<LogInput> input = OpenLogAnywhere(Log(), error);
    if (input == nullptr) {
        terminal.Error(Log(), {}, error);
        return {};
    }
    const std::unique_ptr<OutputFile> file =
        OutputFile::Make(output, force ? Existing::Replace : Existing::Keep, {Log()}, error);
    if (file == nullptr) {
        terminal.Error(output, {}, error);
        return {};
    }

    FileBytes log(*input, Log(), terminal);
    auto copied = copying(
        log, [&](std::string_view bytes) { return file->Write(bytes); }, error);
    terminal.EndProgress();
    if (!copied) {
        terminal.Error(file->Error().empty() ? Log() : output, {},
                       file->Error().empty() ? error : file->Error());
        return {};
    }
    if (file->Written() == 0) {
        return copied;
    }
    // A log whose encoding isn't UTF-8 may not go together with what stands in place of its damage.
    if (file->CanBeReadBack() && !copied->end.whole && !IsWhole(*file, output, terminal)) {
        terminal.Error(Log(), {}, "what is left makes no document; is it encoded in UTF-8?");
        return {};
    }
    if (!file->Finish()) {
        terminal.Error(output, {}, file->Error());
        return {};
    }
    return copied;
}

}  // namespace ScrivelTool
