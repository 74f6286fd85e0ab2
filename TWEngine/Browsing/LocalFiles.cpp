#include "TWEngine/Browsing/LocalFiles.h"

#include "TWCore/Model/ReadError.h"
#include "TWEngine/Browsing/LocalProviderError.h"
#include "TWEngine/Runtime/FileDescriptor.h"
#include "TWEngine/Runtime/Uninterrupted.h"
#include "TWEngine/Runtime/WholeFile.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>

#include <fcntl.h>
#include <sys/stat.h>

namespace tw::LocalFiles {

namespace {

namespace fs = std::filesystem;

/// The system would take such a path for the part before the NUL, which is another file.
bool canBeNamed(std::string const &path)
{
    return !path.contains('\0');
}

FileDescriptor openFile(std::string const &path, int flags, mode_t mode = 0)
{
    if (!canBeNamed(path)) {
        errno = ENOENT;
        return FileDescriptor();
    }
    // Not blocking: a pipe with nobody at its other end must not hold a worker without end.
    return FileDescriptor(
        uninterrupted([&] { return ::open(path.c_str(), flags | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, mode); }));
}

/// A name in the folder of `target` that nobody has. Not made from its name, which may be as long as names can be.
///
/// Empty, with errno set, if there can be none.
std::string nameBeside(std::string const &target)
{
    auto name = (fs::path(target).parent_path() / ".tw-download-XXXXXX").string();
    FileDescriptor const reserved(mkostemp(name.data(), O_CLOEXEC));
    return reserved ? name : "";
}

/// Whether `target` lies below the folder `path`, by whatever names.
bool isBelow(std::string const &path, std::string const &target)
{
    std::error_code failure;
    auto const folder = fs::canonical(path, failure);
    if (failure || !fs::is_directory(folder, failure))
        return false;
    auto const place = fs::canonical(fs::path(target).parent_path(), failure);
    return !failure && std::ranges::mismatch(folder, place).in1 == folder.end();
}

} // namespace

FileDescriptor open(std::string const &path)
{
    auto file = openFile(path, O_RDONLY);
    if (!file)
        throw ReadError::NotReadable(path, systemText(errno));
    return file;
}

std::string readChunk(std::string const &path, std::int64_t offset, std::size_t length)
{
    auto const file = open(path);
    if (::lseek(file.get(), std::max<std::int64_t>(offset, 0), SEEK_SET) < 0)
        throw ReadError::NotReadable(path, systemText(errno));
    std::string bytes;
    if (auto const error = WholeFile::readUpTo(file.get(), length, bytes); error != 0)
        throw ReadError::NotReadable(path, systemText(error));
    return bytes;
}

std::int64_t size(std::string const &path)
{
    struct stat status;
    if (!canBeNamed(path))
        throw ReadError::NotReadable(path, systemText(ENOENT));
    if (::lstat(path.c_str(), &status) != 0)
        throw ReadError::NotReadable(path, systemText(errno));
    return status.st_size;
}

void copyTo(std::string const &path, std::string const &target)
{
    std::error_code ignored;
    if (!canBeNamed(path) || !canBeNamed(target))
        throw ReadError::NotReadable(path, systemText(ENOENT));
    if (path == target || fs::equivalent(path, target, ignored))
        return;
    if (isBelow(path, target))
        throw ReadError::NotReadable(path, "a folder cannot be copied into itself");
    auto const copy = nameBeside(target);
    if (copy.empty())
        throw ReadError::NotReadable(path, systemText(errno));
    std::error_code failure;
    fs::remove(copy, failure);
    fs::copy(path, copy, fs::copy_options::recursive | fs::copy_options::copy_symlinks, failure);
    if (!failure) {
        // What is in the way goes only now. If it will not go, the renaming says why.
        if (fs::is_directory(fs::symlink_status(target, ignored)))
            fs::remove_all(target, ignored);
        fs::rename(copy, target, failure);
    }
    if (failure) {
        fs::remove_all(copy, ignored);
        throw ReadError::NotReadable(path, systemText(failure.value()));
    }
}

void writeInto(std::string const &source, std::string const &target)
{
    std::string bytes;
    {
        auto const file = openFile(source, O_RDONLY);
        if (!file)
            throw PlatformError(errno);
        if (auto const error = WholeFile::readUpTo(file.get(), bytes.max_size(), bytes); error != 0)
            throw PlatformError(error);
    }
    auto file = openFile(target, O_WRONLY | O_TRUNC);
    if (!file) {
        constexpr mode_t asTheUserWants = 0666; // less the umask
        file = openFile(target, O_WRONLY | O_CREAT, asTheUserWants);
        if (!file)
            throw PlatformError(errno);
    }
    if (auto const error = WholeFile::write(file.get(), bytes); error != 0)
        throw PlatformError(error);
    if (auto const error = WholeFile::close(std::move(file)); error != 0)
        throw PlatformError(error);
}

} // namespace tw::LocalFiles
