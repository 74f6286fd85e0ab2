#include "TWEngine/Archives/RightsCleaning.h"

#include "TWCore/Async/Cancelled.h"
#include "TWEngine/Runtime/OpenFolder.h"

#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tw {

namespace {

/// The walk has one descriptor open for each level.
constexpr int mostLevels = 400;

constexpr mode_t asOwnerOrGroup = S_ISUID | S_ISGID;

[[noreturn]] void fail()
{
    throw std::system_error(errno, std::system_category());
}

class Walk {
public:
    explicit Walk(std::stop_token const &token) : stop(token) {}

    bool clean(int parent, char const *name, int level)
    {
        if (level > mostLevels)
            return false;
        auto const folder =
            openFolder(FileDescriptor(::openat(parent, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC)));
        if (!folder)
            fail();
        while (auto const *const entry = nextEntry(folder)) {
            if (stop.stop_requested())
                throw Cancelled();
            if (!cleanEntry(::dirfd(folder.get()), *entry, level))
                return false;
        }
        if (errno != 0)
            fail();
        return true;
    }

private:
    bool cleanEntry(int folder, dirent const &entry, int level)
    {
        if (entry.d_type == DT_DIR)
            return clean(folder, entry.d_name, level + 1);
        if (entry.d_type == DT_LNK)
            return true;
        struct stat status;
        if (::fstatat(folder, entry.d_name, &status, AT_SYMLINK_NOFOLLOW) != 0)
            fail();
        if (S_ISDIR(status.st_mode)) // where folders do not say what their entries are
            return clean(folder, entry.d_name, level + 1);
        if ((S_ISBLK(status.st_mode) || S_ISCHR(status.st_mode)) && ::unlinkat(folder, entry.d_name, 0) != 0)
            fail();
        if (S_ISREG(status.st_mode) && (status.st_mode & asOwnerOrGroup) != 0)
            takeRights(folder, entry.d_name);
        return true;
    }

    /// By a descriptor, since the archive may have made the folder one that others write to.
    static void takeRights(int folder, char const *name)
    {
        FileDescriptor const file(::openat(folder, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
        struct stat status;
        if (!file || ::fstat(file.get(), &status) != 0 ||
            ::fchmod(file.get(), status.st_mode & 07777U & ~asOwnerOrGroup) != 0)
            fail();
    }

    std::stop_token const &stop;
};

} // namespace

bool cleanRights(std::string const &folder, std::stop_token const &stop)
{
    return Walk(stop).clean(AT_FDCWD, folder.c_str(), 0);
}

} // namespace tw
