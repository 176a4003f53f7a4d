// The fixtures of tests that look at the log's stream and at its file.

#ifndef SCRIVEL_TESTS_STREAM_STREAMTEST_H
#define SCRIVEL_TESTS_STREAM_STREAMTEST_H

#include "scrivel/LogStream.h"

#include "support/GeneratorTest.h"
#include "support/Memory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include <sys/mman.h>
#include <sys/types.h>

namespace ScrivelTest
{

inline constexpr std::size_t pageSize = 4096;
inline constexpr unsigned int forEver = std::numeric_limits<unsigned int>::max();  ///< to FailWrites

/// A stream, and the file "log" that it is opened on.
class StreamTest : public ScratchTest
{
protected:
    void Open()
    {
        log.open("log");
        ASSERT_TRUE(log.good());
    }

    static std::string File() { return FileText("log"); }

    /// The descriptor of the open log.
    static int Descriptor()
    {
        const std::filesystem::path file = std::filesystem::canonical("log");
        for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
            std::error_code gone;
            if (std::filesystem::read_symlink(entry.path(), gone) == file) {
                return std::stoi(entry.path().filename());
            }
        }
        ADD_FAILURE() << "the log is not open";
        return -1;
    }

    static void ResetCounts()
    {
        platform.write.Reset();
        platform.pwrite.Reset();
        platform.pread.Reset();
        platform.lseek.Reset();
        platform.ftruncate.Reset();
        platform.fstat.Reset();
    }

    static unsigned int CallsOnTheFile()
    {
        return platform.write.Calls() + platform.pwrite.Calls() + platform.pread.Calls() +
               platform.lseek.Calls() + platform.ftruncate.Calls() + platform.fstat.Calls();
    }

    /// Lets all writes from number `first` to number `last` fail with ENOSPC.
    void FailWrites(unsigned int first, unsigned int last)
    {
        FailWritesThat([=](unsigned int number) { return number >= first && number <= last; });
    }

    /// Lets those writes fail with ENOSPC whose numbers do as `fails` says.
    template <typename Fails>
    void FailWritesThat(Fails fails)
    {
        platform.pwrite.Reset();
        failing.emplace(platform.pwrite,
                        [=](int file, const void* bytes, std::size_t size, off_t position) -> ssize_t {
                            if (fails(platform.pwrite.Calls())) {
                                errno = ENOSPC;
                                return -1;
                            }
                            return platform.pwrite.Real(file, bytes, size, position);
                        });
    }

    Scrivel2::LogStream log;
    std::optional<StubOf<&Platform::pwrite>> failing;
};

/// A document that grows by a flush over its end tag.
class GrowingDocument : public StreamTest
{
protected:
    static constexpr const char* endTag = "</log>\n";

    /// Opens a document that ends in `tail`, with about `size` bytes before it.
    std::string Begin(std::size_t size, const std::string& lastBefore = "<b/>\n",
                      const std::string& tail = endTag)
    {
        if (log.is_open()) {
            log.close();
        }
        Open();
        std::string document = "<log>\n";
        const std::size_t rest = size - std::min(size, document.size());
        document.append(rest - std::min(rest, lastBefore.size()), ' ');
        document += rest < lastBefore.size() ? "" : lastBefore;
        log << document << tail << std::flush;
        return document;
    }

    /// Replaces the end tag by `text` and an end tag.
    void Grow(const std::string& text)
    {
        log.seekp(-static_cast<std::streamoff>(std::string(endTag).size()), std::ios_base::end);
        log << text << endTag << std::flush;
    }

    static std::string Element(std::size_t length)
    {
        return "<a>" + std::string(std::max<std::size_t>(length, 7) - 7, 'x') + "</a>";
    }

    /// An element of about that length which ends in tags with blanks between them: those can be closed
    /// up.
    static std::string Indented(std::size_t length)
    {
        const std::string begin = "<c>\n    ";
        const std::string end = "\n    </c>\n";
        return begin + Element(length - std::min(length, begin.size() + end.size())) + end;
    }

    /// From now on stops each write at each page boundary, where a kill can end it, and looks at the
    /// file.
    void StopBetweenPages()
    {
        ResetCounts();
        watching.emplace(
            platform.pwrite, [this](int file, const void* bytes, std::size_t size, off_t position) {
                const auto first = static_cast<std::size_t>(position);
                for (std::size_t page = first / pageSize + 1; page * pageSize < first + size; ++page) {
                    platform.pwrite.Real(file, bytes, page * pageSize - first, position);
                    EXPECT_TRUE(IsDocument(File())) << "stopped at page " << page << ":\n" << File();
                    ++stops;
                }
                return platform.pwrite.Real(file, bytes, size, position);
            });
    }

    /// From now on stops each write at each page of memory that it takes text from, where a kill can end
    /// it when that page has been paged out, and looks at the file.
    void StopAtPagesOfMemory()
    {
        ResetCounts();
        watching.emplace(
            platform.pwrite, [this](int file, const void* bytes, std::size_t size, off_t position) {
                const auto first = reinterpret_cast<std::uintptr_t>(bytes);
                for (std::uintptr_t page = (first / pageSize + 1) * pageSize; page < first + size;
                     page += pageSize) {
                    void* const gone = reinterpret_cast<void*>(page);
                    const std::size_t rest = (first + size - page + pageSize - 1) / pageSize * pageSize;
                    EXPECT_EQ(mprotect(gone, rest, PROT_NONE), 0);
                    const ssize_t written = platform.pwrite.Real(file, bytes, size, position);
                    mprotect(gone, rest, PROT_READ | PROT_WRITE);
                    EXPECT_EQ(written, static_cast<ssize_t>(page - first));
                    EXPECT_TRUE(IsDocument(File()))
                        << "stopped after " << written << " bytes from " << position << " on:\n"
                        << File();
                    ++stops;
                }
                return platform.pwrite.Real(file, bytes, size, position);
            });
    }

    /// From now on notes the size of each write.
    void RecordSizes()
    {
        sizes.clear();
        watching.emplace(platform.pwrite,
                         [this](int file, const void* bytes, std::size_t size, off_t position) {
                             sizes.push_back(size);
                             return platform.pwrite.Real(file, bytes, size, position);
                         });
    }

    unsigned int stops = 0;
    std::vector<std::size_t> sizes;
    std::optional<StubOf<&Platform::pwrite>> watching;
};

}  // namespace ScrivelTest

#endif
