#include "TWEngine/Store/StoreFolder.h"

#include "TWCore/Check.h"

#include <cerrno>
#include <filesystem>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

namespace tw {

namespace {

constexpr mode_t folderMode = S_IRWXU;
constexpr mode_t fileMode = S_IRUSR | S_IWUSR;
constexpr mode_t allRights = S_IRWXU | S_IRWXG | S_IRWXO;

constexpr char databaseName[] = "listings.sqlite";

/// What SQLite puts beside the database. Before the database itself, since of what is left of an interrupted removal a
/// journal without its database must not be: it would be played back into the next one.
constexpr char const *companionNames[] = {"listings.sqlite-journal", "listings.sqlite-wal", "listings.sqlite-shm"};

/// How long another process may take to open the database or to replace it.
constexpr std::chrono::milliseconds longestWait{500};

void makePrivateFolder(std::filesystem::path const &path)
{
    std::filesystem::path made;
    for (auto const &component : path) {
        made /= component;
        ::mkdir(made.c_str(), folderMode); // mostly there already; whether it is, shows when it is opened
    }
    ::chmod(path.c_str(), folderMode);
}

void makePrivate(int folder, char const *name)
{
    struct stat status;
    if (::fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISREG(status.st_mode) &&
        (status.st_mode & allRights) != fileMode)
        ::fchmodat(folder, name, fileMode, 0);
}

/// Asks for a lock until `isSettled`, and answers whether it came to that. flock(2) knows only a wait without an end
/// and none at all, so a refusal is asked about again.
template <class Condition>
bool askUntil(Condition isSettled)
{
    constexpr std::chrono::milliseconds pause{2};
    auto const deadline = std::chrono::steady_clock::now() + longestWait;
    while (!isSettled()) {
        if (std::chrono::steady_clock::now() >= deadline)
            return false;
        std::this_thread::sleep_for(pause);
    }
    return true;
}

} // namespace

std::optional<StoreFolder> StoreFolder::open(std::string const &directory)
{
    makePrivateFolder(directory);
    std::error_code failure;
    auto const path = std::filesystem::canonical(directory, failure);
    if (failure)
        return std::nullopt;
    StoreFolder folder(path, FileDescriptor(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)));
    if (!folder.descriptor || !folder.lock())
        return std::nullopt;
    return folder;
}

std::string StoreFolder::databasePath() const
{
    return root + '/' + databaseName;
}

bool StoreFolder::preparePrivateFile() const
{
    // Private from the first moment on. Closing it loses no lock of SQLite's, since nobody else can have it open yet.
    constexpr int flags = O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    FileDescriptor const made(::openat(descriptor.get(), databaseName, flags, fileMode));
    struct stat status;
    if (::fstatat(descriptor.get(), databaseName, &status, AT_SYMLINK_NOFOLLOW) != 0 || !S_ISREG(status.st_mode))
        return false;
    makePrivate(descriptor.get(), databaseName);
    for (auto const *const name : companionNames)
        makePrivate(descriptor.get(), name);
    return true;
}

bool StoreFolder::lock()
{
    // Neither alone nor shared: on a file system that knows no locks.
    return askUntil([this] { return tryToBeAlone() || errno != EWOULDBLOCK || tryToShare(); });
}

bool StoreFolder::tryToShare()
{
    if (::flock(descriptor.get(), LOCK_SH | LOCK_NB) != 0)
        return false;
    use = Use::shared;
    return true;
}

bool StoreFolder::tryToBeAlone()
{
    use = ::flock(descriptor.get(), LOCK_EX | LOCK_NB) == 0 ? Use::alone : Use::unlocked;
    return use == Use::alone;
}

void StoreFolder::share()
{
    if (use != Use::alone)
        return;
    // The system changes a lock by giving it back first, see flock(2), and somebody else may be quicker. He is done
    // soon.
    use = Use::unlocked;
    askUntil([this] { return tryToShare() || errno != EWOULDBLOCK; });
}

void StoreFolder::removeDatabase() const
{
    check(isAlone(), "a database is removed that another process may have open");
    for (auto const *const name : companionNames)
        ::unlinkat(descriptor.get(), name, 0);
    ::unlinkat(descriptor.get(), databaseName, 0);
}

} // namespace tw
