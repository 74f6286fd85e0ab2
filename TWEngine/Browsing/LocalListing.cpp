#include "TWEngine/Browsing/LocalListing.h"

#include "TWCore/Async/Cancelled.h"
#include "TWEngine/Browsing/LocalProviderError.h"

#include <cerrno>
#include <cstring>
#include <limits>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

namespace tw {

namespace {

/// Room for a folder of ordinary size without growing: 256 names of 64 bytes.
constexpr std::size_t initialNameBytes = 16384;
constexpr std::size_t initialEntries = 256;

/// How many entries are read between two looks at the stop token: some milliseconds of a slow disk.
constexpr std::size_t entriesBetweenStopChecks = 1024;

/// An entry points into the storage with 32 bits.
constexpr std::size_t maxNameBytes = std::numeric_limits<std::uint32_t>::max();

struct CloseDirectory {
    void operator()(DIR *directory) const { closedir(directory); }
};

using Directory = std::unique_ptr<DIR, CloseDirectory>;

EntryKind kindOfMode(mode_t mode)
{
    switch (mode & S_IFMT) {
    case S_IFDIR:
        return EntryKind::directory;
    case S_IFLNK:
        return EntryKind::symlink;
    case S_IFREG:
        return EntryKind::file;
    case S_IFIFO:
        return EntryKind::fifo;
    case S_IFSOCK:
        return EntryKind::socket;
    case S_IFBLK:
        return EntryKind::blockDev;
    case S_IFCHR:
        return EntryKind::charDev;
    default:
        return EntryKind::unknown;
    }
}

EntryKind kindOfRecord(unsigned char type)
{
    switch (type) {
    case DT_FIFO:
        return EntryKind::fifo;
    case DT_CHR:
        return EntryKind::charDev;
    case DT_DIR:
        return EntryKind::directory;
    case DT_BLK:
        return EntryKind::blockDev;
    case DT_REG:
        return EntryKind::file;
    case DT_LNK:
        return EntryKind::symlink;
    case DT_SOCK:
        return EntryKind::socket;
    default:
        return EntryKind::unknown;
    }
}

bool isListed(std::string_view name)
{
    return !name.empty() && name != "." && name != "..";
}

} // namespace

Entry localEntry(int directory, dirent const &record)
{
    constexpr mode_t permissionBits = 07777; // with set-user-id, set-group-id and sticky
    Entry entry;
    struct stat status;
    if (fstatat(directory, record.d_name, &status, AT_SYMLINK_NOFOLLOW) == 0) {
        entry.kind = kindOfMode(status.st_mode);
        entry.size = status.st_size;
        entry.mtime = status.st_mtim.tv_sec;
        entry.mode = static_cast<std::uint16_t>(status.st_mode & permissionBits);
    } else {
        entry.kind = kindOfRecord(record.d_type);
    }
    return entry;
}

DirectorySnapshot readLocalDirectory(std::string const &path, std::stop_token const &stop)
{
    // The system would take such a path for the part before the NUL, and list another folder.
    if (path.contains('\0'))
        throw LocalProviderError::CannotOpen(path, ENOENT);
    Directory const directory(opendir(path.c_str()));
    if (!directory)
        throw LocalProviderError::CannotOpen(path, errno);
    auto const descriptor = dirfd(directory.get());

    std::string names;
    names.reserve(initialNameBytes);
    std::vector<Entry> entries;
    entries.reserve(initialEntries);
    bool truncated = false;
    for (;;) {
        errno = 0;
        auto const *const record = readdir(directory.get());
        // A part that is taken for the whole would say that the rest is gone.
        if (!record && errno != 0)
            throw LocalProviderError::CannotOpen(path, errno);
        if (!record)
            break;
        std::string_view const name = record->d_name;
        if (!isListed(name))
            continue;
        if (names.size() + name.size() > maxNameBytes) {
            truncated = true;
            break;
        }
        auto entry = localEntry(descriptor, *record);
        entry.nameOffset = static_cast<std::uint32_t>(names.size());
        entry.nameLength = static_cast<std::uint32_t>(name.size());
        names += name;
        entries.push_back(entry);
        if (entries.size() % entriesBetweenStopChecks == 0 && stop.stop_requested())
            throw Cancelled();
    }
    // A listing is held for long, and its doubling arrays would cost up to twice of what is in them.
    names.shrink_to_fit();
    return {path, std::make_shared<std::string const>(std::move(names)), std::move(entries),
            std::chrono::system_clock::now(), truncated};
}

} // namespace tw
