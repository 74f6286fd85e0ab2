#include "TWEngine/Browsing/LocalFacts.h"

#include "TWCore/Model/FileOperationError.h"
#include "TWEngine/Browsing/LocalProviderError.h"
#include "TWEngine/Browsing/MountPoint.h"
#include "TWEngine/Runtime/OpenFolder.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <linux/fs.h>
#include <linux/magic.h>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/statfs.h>

namespace tw {

namespace {

/// Of a folder, as many names are looked at for one with a letter in it.
constexpr int mostNamesTried = 10'000;

/// Of HFS+, which the headers of the kernel do not name.
constexpr std::uint32_t hfsPlusMagic = 0x482B;

/// The levels of a path: each takes two bytes of it at least.
constexpr std::size_t mostLevels = PATH_MAX / 2;

[[noreturn]] void fail(std::string const &path, int error)
{
    throw FileOperationError::Failed("reading", path, systemText(error));
}

/// Errors that mean: nothing has this name.
bool isFree(int error)
{
    return error == ENOENT || error == ENOTDIR || error == ENAMETOOLONG || error == EINVAL;
}

FileIdentity identityOf(struct stat const &status)
{
    return {.device = status.st_dev, .inode = status.st_ino};
}

std::string realPathOf(std::string const &folder)
{
    std::unique_ptr<char, decltype(&std::free)> const path(::realpath(folder.c_str(), nullptr), &std::free);
    if (!path)
        fail(folder, errno);
    return path.get();
}

/// The folder and all above it.
std::vector<FileIdentity> wayOf(std::string const &folder, int descriptor)
{
    std::vector<FileIdentity> way;
    FileDescriptor above;
    for (auto here = descriptor; way.size() < mostLevels; here = above.get()) {
        struct stat status;
        if (::fstat(here, &status) != 0)
            fail(folder, errno);
        if (!way.empty() && way.back() == identityOf(status))
            return way; // the root is its own parent
        way.push_back(identityOf(status));
        FileDescriptor next(::openat(here, "..", O_PATH | O_DIRECTORY | O_CLOEXEC));
        if (!next)
            fail(folder, errno);
        above = std::move(next);
    }
    return way;
}

/// The name with each letter of ASCII in its other case; empty if there is no letter.
std::string otherCase(std::string name)
{
    auto hasLetter = false;
    for (auto &byte : name) {
        if ((byte < 'a' || byte > 'z') && (byte < 'A' || byte > 'Z'))
            continue;
        byte = static_cast<char>(byte ^ 0x20);
        hasLetter = true;
    }
    return hasLetter ? name : "";
}

/// Whether both cases of a name that is there are one file. A link may lead to its other case, so links say nothing.
std::optional<bool> takesForOne(int folder, std::string const &name)
{
    auto const other = otherCase(name);
    struct stat status;
    if (other.empty() || ::fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0 || S_ISLNK(status.st_mode))
        return std::nullopt;
    struct stat otherStatus;
    return ::fstatat(folder, other.c_str(), &otherStatus, AT_SYMLINK_NOFOLLOW) == 0 &&
           identityOf(status) == identityOf(otherStatus);
}

/// ext4, F2FS and tmpfs have folders that do, among others that do not.
bool isMarkedSo(int folder)
{
    int flags = 0; // the kernel writes an int, whatever the name of the request says
    return ::ioctl(folder, FS_IOC_GETFLAGS, &flags) == 0 && (flags & FS_CASEFOLD_FL) != 0;
}

/// For a folder in which no name says it, such as the root of an empty disk. Servers of SMB nearly always do.
bool isOnSuchADisk(int folder)
{
    constexpr std::array<std::uint32_t, 5> types{MSDOS_SUPER_MAGIC, EXFAT_SUPER_MAGIC, CIFS_SUPER_MAGIC,
                                                 SMB2_SUPER_MAGIC, hfsPlusMagic};
    struct statfs status;
    return ::fstatfs(folder, &status) == 0 &&
           std::ranges::find(types, static_cast<std::uint32_t>(status.f_type)) != types.end();
}

bool takesCasesForOne(int descriptor, std::string const &realPath, std::vector<FileIdentity> const &way)
{
    auto const names = openFolder(FileDescriptor(::openat(descriptor, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC)));
    if (names && isMarkedSo(::dirfd(names.get())))
        return true;
    for (auto tried = 0; names && tried < mostNamesTried; ++tried) {
        auto const *const entry = nextEntry(names);
        if (!entry)
            break;
        if (auto const answer = takesForOne(descriptor, entry->d_name))
            return *answer;
    }
    // The folder's own name speaks for it only on the same file system.
    auto const slash = realPath.rfind('/');
    auto const isWithin = way.size() >= 2 && way[0].device == way[1].device;
    FileDescriptor const above(::openat(descriptor, "..", O_PATH | O_DIRECTORY | O_CLOEXEC));
    auto const answer = isWithin && above ? takesForOne(above.get(), realPath.substr(slash + 1)) : std::nullopt;
    return answer.value_or(isOnSuchADisk(descriptor));
}

std::optional<FolderFacts::Occupant> occupantOf(int folder, std::string const &folderPath, std::string const &name)
{
    struct stat status;
    if (name.contains('\0'))
        return std::nullopt;
    if (::fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
        if (isFree(errno))
            return std::nullopt;
        fail(folderPath + '/' + name, errno);
    }
    return FolderFacts::Occupant{.name = name,
                                 .kind = entryKindOfMode(status.st_mode),
                                 .size = status.st_size,
                                 .mtime = status.st_mtim.tv_sec,
                                 .identity = identityOf(status),
                                 .isMountPoint = isMountPoint(folder, name)};
}

} // namespace

FolderFacts localFactsAbout(std::string const &folder, std::vector<std::string> const &names)
{
    using State = FolderFacts::State;
    if (folder.contains('\0'))
        return {.state = State::missing};
    FileDescriptor const opened(::open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!opened) {
        auto const error = errno;
        struct stat status;
        // A link to nothing has the name as well.
        if (::lstat(folder.c_str(), &status) == 0 && (error == ENOTDIR || error == ENOENT))
            return {.state = State::notAFolder};
        if (isFree(error))
            return {.state = State::missing};
        fail(folder, error);
    }
    FolderFacts facts{.state = State::present, .realPath = realPathOf(folder)};
    facts.way = wayOf(folder, opened.get());
    facts.takesCasesForOne = takesCasesForOne(opened.get(), facts.realPath, facts.way);
    for (auto const &name : names) {
        if (auto taken = occupantOf(opened.get(), folder, name))
            facts.taken.push_back(*std::move(taken));
    }
    return facts;
}

} // namespace tw
