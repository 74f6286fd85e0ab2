#include "TWEngine/SSHConfig/SSHConfigOnDisk.h"

#include "TWEngine/Browsing/LocalProviderError.h"
#include "TWEngine/Platform/HomeFolder.h"
#include "TWEngine/Platform/NewPrivateFile.h"
#include "TWEngine/Runtime/FileDescriptor.h"
#include "TWEngine/Runtime/Uninterrupted.h"
#include "TWEngine/Runtime/WholeFile.h"
#include "TWEngine/SSHConfig/SSHConfigError.h"

#include <cerrno>
#include <filesystem>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tw::SSHConfigOnDisk {

namespace {

namespace fs = std::filesystem;

constexpr mode_t ownersFolder = S_IRWXU;

[[noreturn]] void failWriting(std::string const &path, int error)
{
    throw SSHConfigError::NotWritable(path, systemText(error));
}

/// The file that holds the bytes: links are followed, and the last one may lead to a missing file.
std::string targetOf(std::string const &path)
{
    constexpr int mostLinks = 40; // as many as the system itself follows
    fs::path target = path;
    for (int links = 0; links <= mostLinks; ++links) {
        std::error_code noLink;
        auto const next = fs::read_symlink(target, noLink);
        if (noLink)
            return target.string();
        target = target.parent_path() / next; // an absolute path replaces the whole path
    }
    throw SSHConfigError::NotReadable(path, systemText(ELOOP));
}

/// For the calls that return an error number.
void require(int error, std::string const &path)
{
    if (error != 0)
        failWriting(path, error);
}

/// Writes the new name to the disk. The bytes are on the disk already, so an error here is no failure.
void synchroniseFolderOf(std::string const &path)
{
    FileDescriptor const folder(::open(fs::path(path).parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (folder)
        ::fsync(folder.get());
}

/// Keeps only the first version.
void keepBackup(std::string const &path, std::string_view text)
{
    auto const backup = path + ".tw-backup";
    std::error_code ignored;
    if (fs::symlink_status(backup, ignored).type() != fs::file_type::not_found)
        return;
    NewPrivateFile const copy(backup);
    require(copy.fill(text), backup);
    if (auto const error = copy.becomeTarget(); error != EEXIST)
        require(error, backup);
}

void makeFolderOf(std::string const &path)
{
    auto const folder = fs::path(path).parent_path();
    std::error_code ignored;
    fs::create_directories(folder.parent_path(), ignored);
    if (::mkdir(folder.c_str(), ownersFolder) != 0 && errno != EEXIST)
        failWriting(path, errno);
}

} // namespace

std::string pathOfThisUser()
{
    // As ssh itself does it, which never asks HOME: hosts from another file would be names that ssh does not know.
    return HomeFolder::ofAccount() + "/.ssh/config";
}

std::optional<std::string> read(std::string const &path)
{
    // O_NONBLOCK: a pipe without a writer must not block the worker.
    FileDescriptor const file(
        uninterrupted([&] { return ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY); }));
    if (!file && (errno == ENOENT || errno == ENOTDIR))
        return std::nullopt;
    struct stat status{};
    if (!file || ::fstat(file.get(), &status) != 0)
        throw SSHConfigError::NotReadable(path, systemText(errno));
    if (!S_ISREG(status.st_mode))
        throw SSHConfigError::NotReadable(path, "not a file");

    // Without asking for its size: the file may grow, and some files report 0.
    std::string text;
    if (auto const error = WholeFile::readUpTo(file.get(), maxBytes + 1, text); error != 0)
        throw SSHConfigError::NotReadable(path, systemText(error));
    if (text.size() > maxBytes)
        throw SSHConfigError::NotReadable(path, "too large");
    text.shrink_to_fit();
    return text;
}

void write(std::string const &path, std::optional<std::string> const &before, std::string const &text)
{
    auto const target = targetOf(path);
    makeFolderOf(path);
    if (read(target) != before)
        throw SSHConfigError::ChangedMeanwhile(path);
    if (before)
        keepBackup(path, *before);
    NewPrivateFile copy(target);
    require(copy.fill(text), target);
    // Checked again, since writing takes time.
    if (read(target) != before)
        throw SSHConfigError::ChangedMeanwhile(path);
    require(copy.replaceTarget(), target);
    synchroniseFolderOf(target);
}

} // namespace tw::SSHConfigOnDisk
