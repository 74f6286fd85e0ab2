#include "TWEngine/Browsing/LocalRemoval.h"

#include "TWCore/Async/Cancelled.h"
#include "TWCore/Model/FileOperationError.h"
#include "TWEngine/Browsing/FolderAccess.h"
#include "TWEngine/Browsing/LocalProviderError.h"
#include "TWEngine/Browsing/MountPoint.h"
#include "TWEngine/Runtime/OpenFolder.h"

#include <cerrno>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>

namespace tw {

namespace {

/// A walk that goes down into folders and comes up again behind them. It holds one open folder, and not one for each
/// level, since a tree may be deeper than a process can have files open.
class Removal {
public:
    Removal(std::string const &path, std::stop_token const &token, LockedFolders what)
        : root(path), stop(token), locked(what)
    {
    }

    void run()
    {
        try {
            removeRoot();
        } catch (...) {
            lockAgain();
            throw;
        }
    }

private:
    /// A folder on the way from the root to where the walk is.
    struct Level {
        std::string name; ///< in the folder above; of the root, its path
        dev_t device;
        ino_t inode;
        std::optional<mode_t> mode; ///< that it had, if it was locked
    };

    void removeRoot()
    {
        auto const slash = root.rfind('/');
        if (root.contains('\0') || slash == std::string::npos || slash + 1 == root.size())
            fail(ENOENT);
        auto const above = slash == 0 ? "/" : root.substr(0, slash);
        FileDescriptor const folder(::open(above.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        if (!folder)
            fail(errno);
        auto const name = root.substr(slash + 1);
        if (removeOrEnter(folder.get(), name))
            return;
        walk();
        if (::unlinkat(folder.get(), name.c_str(), AT_REMOVEDIR) != 0)
            fail(errno);
    }

    [[noreturn]] void fail(int error, std::string const &name = {}) const
    {
        std::string path = root;
        for (std::size_t index = 1; index < way.size(); ++index)
            path += '/' + way[index].name;
        throw FileOperationError::Failed("delete", name.empty() ? path : path + '/' + name, systemText(error));
    }

    /// False if it is a folder, in which the walk is now.
    bool removeOrEnter(int folder, std::string const &name)
    {
        if (stop.stop_requested())
            throw Cancelled();
        if (::unlinkat(folder, name.c_str(), 0) == 0)
            return true;
        auto const error = errno;
        auto const isRoot = way.empty();
        struct stat status;
        if (::fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0)
            fail(errno, isRoot ? "" : name);
        if (!S_ISDIR(status.st_mode))
            fail(error, isRoot ? "" : name);
        if (isMountPoint(folder, name) || (!isRoot && status.st_dev != way.front().device))
            fail(EBUSY, isRoot ? "" : name);
        auto const isLocked = (status.st_mode & S_IRWXU) != S_IRWXU;
        auto access =
            isLocked && locked == LockedFolders::go ? FolderAccess::give(folder, name, S_IRWXU) : std::nullopt;
        auto inner =
            openFolder(FileDescriptor(::openat(folder, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC)));
        if (!inner)
            fail(errno, isRoot ? "" : name);
        way.push_back({name, status.st_dev, status.st_ino, {}});
        here = std::move(inner);
        if (access)
            way.back().mode = access->keep();
        return false;
    }

    /// Empties the root.
    void walk()
    {
        for (;;) {
            auto const *const entry = nextEntry(here);
            if (!entry && errno != 0)
                fail(errno);
            if (!entry && way.size() == 1)
                return;
            if (!entry)
                leave();
            else
                removeOrEnter(::dirfd(here.get()), entry->d_name);
        }
    }

    OpenFolder openAbove() const
    {
        return openFolder(FileDescriptor(::openat(::dirfd(here.get()), "..", O_RDONLY | O_DIRECTORY | O_CLOEXEC)));
    }

    bool isHere(Level const &level) const
    {
        struct stat status;
        return ::fstat(::dirfd(here.get()), &status) == 0 && status.st_dev == level.device &&
               status.st_ino == level.inode;
    }

    /// Goes up, removes the folder it comes from, and reads on. What was read there before is gone.
    void leave()
    {
        auto above = openAbove();
        if (!above)
            fail(errno);
        auto const left = std::exchange(here, std::move(above));
        auto const level = std::move(way.back());
        way.pop_back();
        // Somebody has moved the folder meanwhile. What is above it now is not ours to delete.
        auto const isMoved = !isHere(way.back());
        if (!isMoved && ::unlinkat(::dirfd(here.get()), level.name.c_str(), AT_REMOVEDIR) == 0)
            return;
        auto const error = isMoved ? ENOENT : errno;
        if (level.mode)
            ::fchmod(::dirfd(left.get()), *level.mode);
        fail(error, level.name);
    }

    /// For the folders on the way, when the walk ends early.
    void lockAgain()
    {
        for (; !way.empty() && here && isHere(way.back()); way.pop_back()) {
            if (way.back().mode)
                ::fchmod(::dirfd(here.get()), *way.back().mode);
            here = openAbove();
        }
    }

    std::string const &root;
    std::stop_token const &stop;
    LockedFolders const locked;
    std::vector<Level> way;
    OpenFolder here;
};

} // namespace

void removeForGood(std::string const &path, std::stop_token const &stop, LockedFolders locked)
{
    Removal(path, stop, locked).run();
}

} // namespace tw
