// The file under a log: its descriptor, and the system calls on it, each repeated when a signal has
// interrupted it. Tested by tests/stream/OpenFileTest.cpp; what happens when one fails by
// tests/stream/FailingWritesTest.cpp.

#ifndef SCRIVEL_STREAM_OPENFILE_H
#define SCRIVEL_STREAM_OPENFILE_H

#include "scrivel/Durability.h"

#include <cassert>
#include <csignal>
#include <cstddef>
#include <string>
#include <string_view>

#include <pthread.h>
#include <sys/types.h>

namespace Scrivel2
{

class OpenFile
{
public:
    OpenFile() = default;
    ~OpenFile();
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;

    /// Creates or empties the file of that name; false, with the reason in errno, when that can't be
    /// done or what the name leads to can't seek.
    bool Open(const char* name);

    /// Makes a file that has its name from GiveName on; false, with the reason in errno, when that can't
    /// be done. Where the file system has no files without names it has its name at once, but loses it
    /// when it is closed before GiveName.
    bool Create(const char* name);

    /// Gives a file its name, for the first time; false, with the reason in errno, when there is one of
    /// that name already (EEXIST) or it can't be done. Does nothing when it has one.
    bool GiveName() { return state == Name::Given || GiveFirstName(); }

    bool IsOpen() const { return descriptor >= 0; }
    bool Close();

    /// From now on, for the death of the machine, each change and the name are done when the disk has
    /// them.
    void SetDurability(Durability wanted) { synchronises = wanted == Durability::Machine; }
    bool Synchronises() const { return synchronises; }

    /// A change of the file in progress. The thread is not cancelled in its midst. Once a write has come
    /// up against something, the signal of the file-size limit is kept back until the change is over: a
    /// process that this signal kills leaves a document too.
    class Change
    {
    public:
        explicit Change(OpenFile& changed) : file(changed)
        {
            assert(file.change == nullptr);
            file.change = this;
            pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &cancelStateBefore);
        }
        ~Change()
        {
            if (signalIsKeptBack) {
                pthread_sigmask(SIG_SETMASK, &signalsBefore, nullptr);
            }
            pthread_setcancelstate(cancelStateBefore, nullptr);
            file.change = nullptr;
        }
        Change(const Change&) = delete;
        Change& operator=(const Change&) = delete;

    private:
        friend class OpenFile;
        void KeepSignalBack();

        OpenFile& file;
        int cancelStateBefore;
        bool signalIsKeptBack = false;
        sigset_t signalsBefore;
    };

    // Each of these is done wholly, or false. All but the first belong to a change. A write that is to
    // survive the machine is on the disk when it is done; of one that was under way, any pages may be.
    bool Read(char* out, std::size_t length, off_t offset) const;
    bool Write(std::string_view bytes, off_t offset);
    bool CutAt(off_t end);

    /// Cuts off [start, end), the end of the file and markup of its own. The disk may have zeros in the
    /// place of the rest of a page before it knows that the file is shorter: by then no page comes after
    /// them.
    bool CutTrailer(off_t start, off_t end);

    /// Whether the descriptor still leads to the file that was opened, and that ends where it should: not
    /// when the host has closed the descriptor and got its number for a file of its own.
    bool IsAsLeft(off_t end) const;

private:
    enum class Name
    {
        Given,
        ToBeGiven,
        ToBeKept  ///< or else removed
    };

    bool Synchronise() const;
    bool GiveFirstName();
    bool SynchroniseName() const;
    void Remove();

    bool Identify();

    int descriptor = -1;
    bool synchronises = false;
    dev_t device = 0;
    ino_t inode = 0;
    Change* change = nullptr;
    std::string newName;
    Name state = Name::Given;
};

}  // namespace Scrivel2

#endif
