#include "TWEngine/Browsing/FolderAccess.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>

namespace tw {

namespace {

constexpr mode_t allRights = 07777;

/// fchmod(2) takes no descriptor of a folder that may not be read.
bool setMode(FileDescriptor const &folder, mode_t mode)
{
    return ::chmod(("/proc/self/fd/" + std::to_string(folder.get())).c_str(), mode) == 0;
}

} // namespace

std::optional<FolderAccess> FolderAccess::give(int parent, std::string const &name, mode_t rights)
{
    FileDescriptor folder(::openat(parent, name.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat status;
    if (!folder || ::fstat(folder.get(), &status) != 0 || (status.st_mode & rights) == rights)
        return std::nullopt;
    auto const mode = status.st_mode & allRights;
    if (!setMode(folder, mode | rights))
        return std::nullopt;
    return FolderAccess(std::move(folder), mode);
}

FolderAccess::~FolderAccess()
{
    if (folder)
        setMode(folder, before);
}

mode_t FolderAccess::keep()
{
    FileDescriptor const closed(std::move(folder));
    return before;
}

int renameWithAccess(std::string const &from, std::function<int()> const &rename)
{
    if (rename() == 0)
        return 0;
    if (errno != EACCES)
        return errno;
    auto const access = FolderAccess::give(AT_FDCWD, from, S_IWUSR);
    if (!access)
        return EACCES;
    return rename() == 0 ? 0 : errno;
}

} // namespace tw
