#include "TWEngine/Platform/PrivateFile.h"

#include "TWEngine/Platform/NewPrivateFile.h"
#include "TWEngine/Runtime/FileDescriptor.h"
#include "TWEngine/Runtime/WholeFile.h"

#include <cerrno>
#include <filesystem>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tw::PrivateFile {

namespace {

constexpr mode_t forItsUser = 0600;
constexpr mode_t allRights = 0777;
constexpr mode_t folderForItsUser = 0700;

/// Null for anything but a plain file. O_NONBLOCK, because opening a pipe for writing waits for a reader.
FileDescriptor openPlain(std::string const &file, int flags)
{
    FileDescriptor opened(::open(file.c_str(), flags | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, forItsUser));
    struct stat status;
    if (!opened || ::fstat(opened.get(), &status) != 0 || !S_ISREG(status.st_mode))
        return FileDescriptor();
    return opened;
}

std::optional<std::size_t> sizeOf(int descriptor)
{
    struct stat status;
    if (::fstat(descriptor, &status) != 0)
        return std::nullopt;
    return static_cast<std::size_t>(status.st_size);
}

/// Fewer bytes if the file has become shorter since its size was read.
std::optional<std::string> readFrom(int descriptor, std::size_t offset, std::size_t bytes)
{
    std::string text;
    if (::lseek(descriptor, static_cast<off_t>(offset), SEEK_SET) < 0 ||
        WholeFile::readUpTo(descriptor, bytes, text) != 0)
        return std::nullopt;
    return text;
}

} // namespace

bool makeFolderOf(std::string const &file)
{
    std::string path;
    for (auto const &part : std::filesystem::path(file).parent_path()) {
        path = (std::filesystem::path(path) / part).string();
        if (::mkdir(path.c_str(), folderForItsUser) != 0 && errno != EEXIST && errno != EROFS && errno != EACCES)
            return false;
    }
    struct stat status;
    return ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool make(std::string const &file)
{
    // Only a new file is opened: closing a file releases every lock that this process has on it, see fcntl(2).
    FileDescriptor const made(::open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, forItsUser));
    struct stat status;
    if (::lstat(file.c_str(), &status) != 0 || !S_ISREG(status.st_mode))
        return false;
    return (status.st_mode & allRights) == forItsUser || ::chmod(file.c_str(), forItsUser) == 0;
}

std::optional<std::string> read(std::string const &file, std::size_t maxBytes)
{
    auto const opened = openPlain(file, O_RDONLY);
    auto const size = opened ? sizeOf(opened.get()) : std::nullopt;
    if (!size || *size > maxBytes)
        return std::nullopt;
    return readFrom(opened.get(), 0, *size);
}

std::optional<std::string> readEnd(std::string const &file, std::size_t bytes)
{
    auto const opened = openPlain(file, O_RDONLY);
    auto const size = opened ? sizeOf(opened.get()) : std::nullopt;
    if (!size || *size <= bytes)
        return std::nullopt;
    return readFrom(opened.get(), *size - bytes, bytes);
}

bool append(std::string const &file, std::string_view text)
{
    auto const opened = openPlain(file, O_WRONLY | O_APPEND | O_CREAT);
    return opened && WholeFile::write(opened.get(), text) == 0;
}

bool replace(std::string const &file, std::string_view text)
{
    NewPrivateFile next(file);
    return next.fill(text) == 0 && next.replaceTarget() == 0;
}

} // namespace tw::PrivateFile
