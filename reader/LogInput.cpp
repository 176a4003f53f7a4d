// Files, pipes, compressed files and folders. Tested by tests/reader/LogInputTest.cpp.

#include "scrivel/LogInput.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

#include "Decompressor.h"

namespace ScrivelReader
{

namespace
{

std::string ErrorText(int number)
{
    return std::generic_category().message(number);
}

template <std::size_t size>
bool BeginsWith(const std::string& bytes, const unsigned char (&magic)[size])
{
    return bytes.size() >= size && std::memcmp(bytes.data(), magic, size) == 0;
}

/// A file, a pipe or standard input, as its bytes are.
class FileInput final : public LogInput
{
public:
    /// When more was to come than the file holds, why it didn't.
    FileInput(int itsDescriptor, bool itsToClose, std::string itsCutOff = {})
        : descriptor(itsDescriptor), toClose(itsToClose), cutOff(std::move(itsCutOff)), error(cutOff)
    {
        struct stat status
        {
        };
        if (fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode)) {
            isFile = true;
            size = std::uint64_t(status.st_size);
            const off_t at = lseek(descriptor, 0, SEEK_CUR);
            atStart = at == 0;
        }
        isPipe = S_ISFIFO(status.st_mode);
    }
    ~FileInput() override
    {
        if (toClose)
            close(descriptor);
    }
    FileInput(const FileInput&) = delete;
    FileInput& operator=(const FileInput&) = delete;

    /// A pipe that is opened without waiting reads as an empty file until someone writes into it. Waits
    /// for that, but not for ever.
    bool WaitForWriter()
    {
        constexpr int milliseconds = 3000;
        pollfd pipe = {descriptor, POLLIN, 0};
        if (isPipe && poll(&pipe, 1, milliseconds) == 0) {
            char first = 0;
            const ssize_t got = read(descriptor, &first, 1);
            if (got == 0) {
                error = "nobody writes into this pipe";
                return false;
            }
            if (got > 0) {
                peeked.push_back(first);
            }
        }
        const int flags = fcntl(descriptor, F_GETFL);
        if (flags >= 0) {
            fcntl(descriptor, F_SETFL, flags & ~O_NONBLOCK);
        }
        return true;
    }

    /// The first bytes, which Read then gives again.
    bool Peek(std::size_t count)
    {
        std::array<char, 16> bytes{};
        while (peeked.size() < count) {
            const std::optional<std::size_t> got = ReadOnce(bytes.data(), count - peeked.size());
            if (!got)
                return false;
            if (*got == 0)
                break;
            peeked.append(bytes.data(), *got);
        }
        return true;
    }
    const std::string& Peeked() const { return peeked; }

    std::optional<std::size_t> Read(char* buffer, std::size_t count) override
    {
        if (!peeked.empty()) {
            const std::size_t taken = peeked.copy(buffer, count);
            peeked.erase(0, taken);
            consumed += taken;
            return taken;
        }
        const std::optional<std::size_t> got = ReadOnce(buffer, count);
        consumed += got.value_or(0);
        const bool isAtEnd = got && *got == 0;
        return isAtEnd && IsCutOff() ? std::nullopt : got;
    }

    std::string Error() const override { return error; }
    bool IsCutOff() const override { return !cutOff.empty() && error == cutOff; }
    std::optional<int> Descriptor() const override
    {
        return isFile && atStart ? std::make_optional(descriptor) : std::nullopt;
    }
    std::uint64_t Consumed() const override { return consumed; }
    std::optional<std::uint64_t> Size() const override
    {
        return isFile ? std::make_optional(size) : std::nullopt;
    }

private:
    std::optional<std::size_t> ReadOnce(char* buffer, std::size_t count)
    {
        ssize_t got = 0;
        do
            got = read(descriptor, buffer, count);
        while (got < 0 && errno == EINTR);
        if (got < 0) {
            error = ErrorText(errno);
            return {};
        }
        return std::size_t(got);
    }

    int descriptor;
    bool toClose;
    std::string cutOff;
    bool isFile = false;
    bool isPipe = false;
    bool atStart = false;
    std::uint64_t size = 0;
    std::uint64_t consumed = 0;
    std::string peeked;
    std::string error;
};

class CompressedInput final : public LogInput
{
public:
    CompressedInput(std::unique_ptr<FileInput> itsFile, std::unique_ptr<Decompressor> itsDecompressor)
        : file(std::move(itsFile)), decompressor(std::move(itsDecompressor)), buffer(64 * 1024)
    {
    }

    std::optional<std::size_t> Read(char* out, std::size_t size) override
    {
        while (true) {
            if (from == to && !fileEnded) {
                const std::optional<std::size_t> got = file->Read(buffer.data(), buffer.size());
                if (!got) {
                    error = file->Error();
                    return {};
                }
                from = 0;
                to = *got;
                fileEnded = *got == 0;
            }
            const auto step = decompressor->Decompress(buffer.data() + from, to - from, out, size);
            if (!step)
                return CutOff("the compressed data are damaged");
            from += step->consumed;
            if (step->produced != 0)
                return step->produced;
            if (fileEnded && step->consumed == 0) {
                if (decompressor->AtEnd())
                    return 0;
                return CutOff("the compressed data end too early");
            }
        }
    }

    std::string Error() const override { return error; }
    bool IsCutOff() const override { return isCutOff; }
    std::optional<int> Descriptor() const override { return {}; }
    std::uint64_t Consumed() const override { return file->Consumed(); }
    std::optional<std::uint64_t> Size() const override { return file->Size(); }

private:
    std::nullopt_t CutOff(std::string_view why)
    {
        error = why;
        isCutOff = true;
        return std::nullopt;
    }

    std::unique_ptr<FileInput> file;
    std::unique_ptr<Decompressor> decompressor;
    std::vector<char> buffer;
    std::size_t from = 0;
    std::size_t to = 0;
    bool fileEnded = false;
    bool isCutOff = false;
    std::string error;
};

bool IsLogName(std::string_view name)
{
    for (const std::string_view ending : {".xml", ".xml.gz", ".xml.zst"})
        if (name.size() > ending.size() && name.substr(name.size() - ending.size()) == ending)
            return true;
    return false;
}

}  // namespace

std::unique_ptr<LogInput> OpenLog(const std::string& path, std::string& error)
{
    const bool isStandardInput = path == "-";
    const int descriptor =
        isStandardInput ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
    if (descriptor < 0) {
        error = ErrorText(errno);
        return nullptr;
    }
    auto file = std::make_unique<FileInput>(descriptor, !isStandardInput);
    if ((!isStandardInput && !file->WaitForWriter()) || !file->Peek(sizeof zstdMagic)) {
        error = file->Error();
        return nullptr;
    }
    const bool isGzip = BeginsWith(file->Peeked(), gzipMagic);
    const bool isZstd = BeginsWith(file->Peeked(), zstdMagic);
    if (!isGzip && !isZstd)
        return file;

    std::unique_ptr<Decompressor> decompressor = isGzip ? MakeGzip() : MakeZstd();
    if (decompressor == nullptr) {
        error = std::string("this build doesn't read files compressed by ") + (isGzip ? "gzip" : "zstd");
        return nullptr;
    }
    return std::make_unique<CompressedInput>(std::move(file), std::move(decompressor));
}

int MakeUnnamedFile(std::string& error)
{
    const char* folder = std::getenv("TMPDIR");
    std::string name =
        std::string(folder == nullptr || *folder == '\0' ? "/tmp" : folder) + "/scrivel-XXXXXX";
    const int descriptor = mkostemp(name.data(), O_CLOEXEC);
    if (descriptor < 0) {
        error = "no temporary file: " + ErrorText(errno);
    } else {
        unlink(name.c_str());
    }
    return descriptor;
}

std::unique_ptr<LogInput> OpenLogAnywhere(const std::string& path, std::string& error)
{
    std::unique_ptr<LogInput> input = OpenLog(path, error);
    if (input == nullptr || input->Descriptor())
        return input;

    const int descriptor = MakeUnnamedFile(error);
    if (descriptor < 0) {
        return nullptr;
    }
    std::vector<char> buffer(64 * 1024);
    while (true) {
        const std::optional<std::size_t> got = input->Read(buffer.data(), buffer.size());
        if (!got && !input->IsCutOff()) {
            error = input->Error();
            break;
        }
        if (!got || *got == 0) {
            lseek(descriptor, 0, SEEK_SET);
            return std::make_unique<FileInput>(descriptor, true, input->Error());
        }
        std::size_t written = 0;
        while (written < *got) {
            const ssize_t result = write(descriptor, buffer.data() + written, *got - written);
            if (result < 0 && errno != EINTR)
                break;
            written += result < 0 ? 0 : std::size_t(result);
        }
        if (written < *got) {
            error = "no room for the decompressed log: " + ErrorText(errno);
            break;
        }
    }
    close(descriptor);
    return nullptr;
}

std::optional<std::vector<std::string>> LogsAt(const std::string& path, std::string& error)
{
    namespace fs = std::filesystem;
    std::error_code code;
    if (path == "-" || !fs::is_directory(path, code))
        return std::vector<std::string>{path};

    std::vector<std::string> found;
    for (fs::recursive_directory_iterator at(path, code), end; !code && at != end; at.increment(code)) {
        std::error_code ignored;
        if (IsLogName(at->path().filename().string()) && at->is_regular_file(ignored))
            found.push_back(at->path().string());
    }
    if (code) {
        error = code.message();
        return {};
    }
    std::sort(found.begin(), found.end());
    return found;
}

std::vector<std::string_view> CompressedFormats()
{
    std::vector<std::string_view> formats;
    if (hasGzip)
        formats.push_back("gzip");
    if (hasZstd)
        formats.push_back("zstd");
    return formats;
}

std::vector<std::string_view> MissingFormats()
{
    std::vector<std::string_view> formats;
    if (!hasGzip)
        formats.push_back("gzip");
    if (!hasZstd)
        formats.push_back("zstd");
    return formats;
}

}  // namespace ScrivelReader
