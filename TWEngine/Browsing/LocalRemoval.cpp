#include "TWEngine/Browsing/LocalRemoval.h"

#include "TWCore/Async/Cancelled.h"
#include "TWCore/Model/FileOperationError.h"
#include "TWEngine/Browsing/LocalProviderError.h"
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
    Removal(std::string const &path, std::stop_token const &token) : root(path), stop(token) {}

    void run()
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

private:
    /// A folder on the way from the root to where the walk is.
    struct Level {
        std::string name; ///< in the folder above; of the root, its path
        dev_t device;
        ino_t inode;
    };

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
        if (!isRoot && status.st_dev != way.front().device)
            fail(EBUSY, name);
        open(::openat(folder, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC), isRoot ? "" : name);
        way.push_back({name, status.st_dev, status.st_ino});
        return false;
    }

    void open(int descriptor, std::string const &name)
    {
        auto folder = openFolder(FileDescriptor(descriptor));
        if (!folder)
            fail(errno, name);
        here = std::move(folder);
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

    /// Goes up, removes the folder it comes from, and reads on. What was read there before is gone.
    void leave()
    {
        auto const above = ::openat(::dirfd(here.get()), "..", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        open(above, "");
        auto const left = way.back().name;
        way.pop_back();
        struct stat status;
        if (::fstat(::dirfd(here.get()), &status) != 0)
            fail(errno);
        // Somebody has moved the folder meanwhile. What is above it now is not ours to delete.
        if (status.st_dev != way.back().device || status.st_ino != way.back().inode)
            fail(ENOENT, left);
        if (::unlinkat(::dirfd(here.get()), left.c_str(), AT_REMOVEDIR) != 0)
            fail(errno, left);
    }

    std::string const &root;
    std::stop_token const &stop;
    std::vector<Level> way;
    OpenFolder here;
};

} // namespace

void removeForGood(std::string const &path, std::stop_token const &stop)
{
    Removal(path, stop).run();
}

} // namespace tw
