#include "tests/hosts/SeparationFolder.h"

#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tw::test {

namespace {

/// Enough for sshd, and unlike the 0755 of every service.
constexpr mode_t ourMode = 0700;

} // namespace

SeparationFolder::SeparationFolder(std::string wanted) : path(std::move(wanted))
{
    // Somebody else may remove it between the making and the locking.
    while (!folder || !isStillAtItsPath()) {
        if (::mkdir(path.c_str(), ourMode) != 0 && errno != EEXIST)
            throw std::system_error(errno, std::generic_category(), path);
        folder = FileDescriptor(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        if (!folder && errno != ENOENT)
            throw std::system_error(errno, std::generic_category(), path);
        if (folder && ::flock(folder.get(), LOCK_SH) != 0)
            throw std::system_error(errno, std::generic_category(), path);
    }
}

SeparationFolder::~SeparationFolder()
{
    if (::flock(folder.get(), LOCK_EX | LOCK_NB) == 0 && isOurs() && isStillAtItsPath())
        ::rmdir(path.c_str());
}

bool SeparationFolder::isStillAtItsPath() const
{
    struct stat held{};
    struct stat there{};
    return ::fstat(folder.get(), &held) == 0 && ::stat(path.c_str(), &there) == 0 && held.st_ino == there.st_ino &&
           held.st_dev == there.st_dev;
}

bool SeparationFolder::isOurs() const
{
    constexpr mode_t permissions = 07777;
    struct stat held{};
    return ::fstat(folder.get(), &held) == 0 && (held.st_mode & permissions) == ourMode;
}

} // namespace tw::test
