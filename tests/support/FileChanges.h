// What the system is told to do with the file of a log, and what a disk may have of that when the machine
// dies.

#ifndef SCRIVEL_TESTS_SUPPORT_FILECHANGES_H
#define SCRIVEL_TESTS_SUPPORT_FILECHANGES_H

#include "support/Platform.h"

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace ScrivelTest
{

struct FileChange
{
    enum class Kind
    {
        Write,
        Cut,
        Synchronised,
        Named,
        FolderSynchronised
    };

    Kind kind;
    std::size_t offset = 0;  ///< of a write; where a cut leaves the end
    std::string bytes{};
    unsigned int note = 0;  ///< what the recorder's `note` said when it came

    /// Of a write: a page of the file comes from two pages of memory, between which the kernel stops when
    /// it has to bring in the second one.
    bool fromTwoPages = false;

    std::string folder{};  ///< the one that was synchronised, from the root folder on
};

/// Makes a change of the first `length` bytes of its text, as a system does that doesn't die.
void Apply(const FileChange& change, std::size_t length, std::string& file);
void Apply(const FileChange& change, std::string& file);

/// Records all changes of files while it lives. The disk itself is not waited for.
class FileChanges
{
public:
    explicit FileChanges(std::function<unsigned int()> note = [] { return 0U; });

    std::vector<FileChange> changes;

    /// How waiting for the disk ends. What has failed is not recorded.
    std::function<int()> synchronise = [] { return 0; };

    /// Lets those fail with EIO whose numbers are given; the first is 1.
    void FailSynchronisations(const std::vector<unsigned int>& numbers);

private:
    int Synchronise(FileChange::Kind kind);
    int SynchroniseAll(int file);
    void Add(FileChange::Kind kind, off_t offset = 0, std::string bytes = {});

    std::function<unsigned int()> note;
    StubOf<&Platform::pwrite> writes;
    StubOf<&Platform::ftruncate> cuts;
    StubOf<&Platform::fdatasync> synchronisations;
    StubOf<&Platform::fsync> synchronisationsOfAll;
    StubOf<&Platform::linkat> names;
};

/// The disk under a file. Of what was changed since the last synchronisation it has any pages, each of
/// them as any of its changes left it, and the size after any of them; what is missing before the end is
/// zeros.
class Disk
{
public:
    explicit Disk(std::string fileAtFirst = {}) : synchronised(std::move(fileAtFirst)) {}

    void Add(const FileChange& change);

    /// How many parts of pages, and cuts, it may lack.
    std::size_t Pending() const;

    /// What it may have; `below` chooses a number that is less than the one given. That
    /// the file has grown it knows when it has the bytes, or later; that it was cut, before or after it
    /// has zeros in the place of what the last page had.
    using Choice = std::function<std::size_t(std::size_t)>;
    std::string AnyState(const Choice& below) const;

    /// The same of a disk that may know of a file's size before it has its bytes: with zeros at the end.
    std::string AnyStateOfAnySize(const Choice& below) const;

private:
    std::string Draw(const Choice& below, bool sizeComesAfterBytes) const;

    std::string synchronised;
    std::vector<FileChange> pending;
};

}  // namespace ScrivelTest

#endif
