// Records changes of a file, and makes what a disk may have of them.

#include "support/FileChanges.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <map>
#include <system_error>
#include <utility>

namespace ScrivelTest
{
namespace
{

constexpr std::size_t pageSize = 4096;

/// Calls `visit` with the page, and with the place and the bytes, of each part of a write within a page.
template <typename Visit>
void ForEachPart(const FileChange& write, Visit visit)
{
    const std::size_t end = write.offset + write.bytes.size();
    for (std::size_t begin = write.offset, next; begin < end; begin = next) {
        const std::size_t page = begin / pageSize;
        next = std::min((page + 1) * pageSize, end);
        visit(page, begin, write.bytes.substr(begin - write.offset, next - begin));
    }
}

/// What a change does to the bytes of pages: a cut makes zeros of the rest of its page.
FileChange WriteOf(const FileChange& change)
{
    FileChange write = change;
    if (change.kind == FileChange::Kind::Cut) {
        write.bytes.assign((pageSize - change.offset % pageSize) % pageSize, '\0');
    }
    return write;
}

bool ComesFromTwoPages(const FileChange& write, const void* memory)
{
    const auto from = reinterpret_cast<std::uintptr_t>(memory);
    bool doesOne = false;
    ForEachPart(write, [&](std::size_t, std::size_t offset, const std::string& bytes) {
        const std::uintptr_t first = from + (offset - write.offset);
        doesOne = doesOne || first / pageSize != (first + bytes.size() - 1) / pageSize;
    });
    return doesOne;
}

}  // namespace

void Apply(const FileChange& change, std::size_t length, std::string& file)
{
    if (change.kind == FileChange::Kind::Cut) {
        file.resize(change.offset);
    } else if (change.kind == FileChange::Kind::Write) {
        file.resize(std::max(file.size(), change.offset + length));
        file.replace(change.offset, length, change.bytes, 0, length);
    }
}

void Apply(const FileChange& change, std::string& file)
{
    Apply(change, change.bytes.size(), file);
}

FileChanges::FileChanges(std::function<unsigned int()> told)
    : note(std::move(told)),
      writes(platform.pwrite.Use([this](int file, const void* bytes, std::size_t size, off_t offset) {
          const ssize_t written = platform.pwrite.Real(file, bytes, size, offset);
          if (written > 0) {
              const auto length = static_cast<std::size_t>(written);
              Add(FileChange::Kind::Write, offset, {static_cast<const char*>(bytes), length});
              changes.back().fromTwoPages = ComesFromTwoPages(changes.back(), bytes);
          }
          return written;
      })),
      cuts(platform.ftruncate.Use([this](int file, off_t size) {
          Add(FileChange::Kind::Cut, size);
          return platform.ftruncate.Real(file, size);
      })),
      synchronisations(
          platform.fdatasync.Use([this](int) { return Synchronise(FileChange::Kind::Synchronised); })),
      synchronisationsOfAll(platform.fsync.Use([this](int file) { return SynchroniseAll(file); })),
      names(platform.linkat.Use(
          [this](int fromFolder, const char* from, int toFolder, const char* to, int flags) {
              const int result = platform.linkat.Real(fromFolder, from, toFolder, to, flags);
              if (result == 0) {
                  Add(FileChange::Kind::Named);
              }
              return result;
          }))
{
}

void FileChanges::FailSynchronisations(const std::vector<unsigned int>& numbers)
{
    synchronise = [numbers, count = 0U]() mutable {
        errno = EIO;
        return std::count(numbers.begin(), numbers.end(), ++count) > 0 ? -1 : 0;
    };
}

int FileChanges::Synchronise(FileChange::Kind kind)
{
    const int result = synchronise();
    if (result == 0) {
        Add(kind);
    }
    return result;
}

int FileChanges::SynchroniseAll(int file)
{
    struct stat status;
    if (platform.fstat.Real(file, &status) != 0 || !S_ISDIR(status.st_mode)) {
        return Synchronise(FileChange::Kind::Synchronised);
    }
    const int result = Synchronise(FileChange::Kind::FolderSynchronised);
    if (result == 0) {
        std::error_code error;
        const std::filesystem::path place = "/proc/self/fd/" + std::to_string(file);
        changes.back().folder = std::filesystem::read_symlink(place, error).string();
    }
    return result;
}

void FileChanges::Add(FileChange::Kind kind, off_t offset, std::string bytes)
{
    changes.push_back({kind, static_cast<std::size_t>(offset), std::move(bytes), note()});
}

void Disk::Add(const FileChange& change)
{
    if (change.kind == FileChange::Kind::Write || change.kind == FileChange::Kind::Cut) {
        pending.push_back(change);
    } else if (change.kind == FileChange::Kind::Synchronised) {
        for (const FileChange& done : pending) {
            Apply(done, synchronised);
        }
        pending.clear();
    }
}

std::size_t Disk::Pending() const
{
    std::size_t count = 0;
    for (const FileChange& change : pending) {
        count += change.kind == FileChange::Kind::Cut ? 1 : 0;
        ForEachPart(WriteOf(change), [&](auto&&...) { ++count; });
    }
    return count;
}

std::string Disk::AnyState(const Choice& below) const
{
    return Draw(below, true);
}

std::string Disk::AnyStateOfAnySize(const Choice& below) const
{
    return Draw(below, false);
}

std::string Disk::Draw(const Choice& below, bool sizeComesAfterBytes) const
{
    const std::size_t changesOfSize = below(pending.size() + 1);
    std::size_t size = synchronised.size();
    std::map<std::size_t, std::size_t> partsOfPage;
    std::map<std::size_t, std::size_t> partsThere;  // at least
    std::size_t sizeThen = size;
    for (std::size_t i = 0; i < pending.size(); ++i) {
        const std::size_t end = pending[i].offset + pending[i].bytes.size();
        const bool hasBytes = end > sizeThen && sizeComesAfterBytes && i < changesOfSize;
        ForEachPart(WriteOf(pending[i]), [&](std::size_t page, auto&&...) {
            ++partsOfPage[page];
            if (hasBytes) {
                partsThere[page] = partsOfPage[page];
            }
        });
        sizeThen = pending[i].kind == FileChange::Kind::Cut ? end : std::max(sizeThen, end);
        if (i < changesOfSize) {
            size = sizeThen;
        }
    }
    for (const auto& [page, parts] : partsOfPage) {
        partsThere[page] += below(parts - partsThere[page] + 1);
    }
    std::string file = synchronised;
    for (const FileChange& change : pending) {
        ForEachPart(WriteOf(change), [&](std::size_t page, std::size_t offset, std::string bytes) {
            if (partsThere[page] > 0) {
                --partsThere[page];
                Apply({FileChange::Kind::Write, offset, std::move(bytes)}, file);
            }
        });
    }
    file.resize(size);
    return file;
}

}  // namespace ScrivelTest
