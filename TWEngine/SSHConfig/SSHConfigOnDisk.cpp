#include "TWEngine/SSHConfig/SSHConfigOnDisk.h"

#include "TWEngine/Browsing/LocalProviderError.h"
#include "TWEngine/Runtime/FileDescriptor.h"
#include "TWEngine/Runtime/Uninterrupted.h"
#include "TWEngine/Runtime/WholeFile.h"
#include "TWEngine/SSHConfig/SSHConfigError.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>

#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tw::SSHConfigOnDisk {

namespace {

namespace fs = std::filesystem;

constexpr mode_t ownersFile = S_IRUSR | S_IWUSR;
constexpr mode_t ownersFolder = S_IRWXU;

[[noreturn]] void failWriting(std::string const &path, int error)
{
    throw SSHConfigError::NotWritable(path, systemText(error));
}

/// Where the bytes are: links are followed, the last of which may lead to a file that is not there yet.
std::string targetOf(std::string const &path)
{
    constexpr int mostLinks = 40; // as many as the system itself follows
    fs::path target = path;
    for (int links = 0; links <= mostLinks; ++links) {
        std::error_code noLink;
        auto const next = fs::read_symlink(target, noLink);
        if (noLink)
            return target.string();
        target = target.parent_path() / next; // an absolute one replaces all
    }
    throw SSHConfigError::NotReadable(path, systemText(ELOOP));
}

/// A file on its way to its name. Gone with the object, unless it got there.
class NewFile {
public:
    /// In the folder of `target`, since a file changes its name in one step only within a file system.
    explicit NewFile(std::string const &target)
        : finalName(target),
          name((fs::path(target).parent_path() / ".tw-config-XXXXXX").string()),
          file(::mkostemp(name.data(), O_CLOEXEC)) // 0600 from the first moment on
    {
        if (!file)
            failWriting(finalName, errno);
    }

    ~NewFile()
    {
        if (!name.empty())
            ::unlink(name.c_str());
    }

    NewFile(NewFile const &) = delete;
    NewFile &operator=(NewFile const &) = delete;

    void fill(std::string_view text) const
    {
        if (auto const error = WholeFile::write(file.get(), text); error != 0)
            failWriting(finalName, error);
        // Before it has its name: after a crash the name must not lead to a file without bytes.
        if (::fchmod(file.get(), ownersFile) != 0 || ::fsync(file.get()) != 0)
            failWriting(finalName, errno);
    }

    void replaceTarget()
    {
        if (::rename(name.c_str(), finalName.c_str()) != 0)
            failWriting(finalName, errno);
        name.clear();
    }

    /// Not in place of a file that is there.
    void becomeTarget() const
    {
        if (::link(name.c_str(), finalName.c_str()) != 0 && errno != EEXIST)
            failWriting(finalName, errno);
    }

private:
    std::string const finalName;
    std::string name;
    FileDescriptor const file;
};

/// Makes the new name last. The bytes are safe by now, so that a folder that cannot be synchronised is no failure.
void synchroniseFolderOf(std::string const &path)
{
    FileDescriptor const folder(::open(fs::path(path).parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (folder)
        ::fsync(folder.get());
}

/// Only of what was there at the very first time.
void keepBackup(std::string const &path, std::string_view text)
{
    auto const backup = path + ".tw-backup";
    std::error_code ignored;
    if (fs::symlink_status(backup, ignored).type() != fs::file_type::not_found)
        return;
    NewFile const copy(backup);
    copy.fill(text);
    copy.becomeTarget();
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
    auto const *const user = ::getpwuid(::getuid()); // NOLINT(concurrency-mt-unsafe): copied at once
    auto const *const home = user && user->pw_dir ? user->pw_dir : "";
    return std::string(home) + "/.ssh/config";
}

std::optional<std::string> read(std::string const &path)
{
    // Not blocking: a pipe with nobody at its other end must not hold a worker for ever.
    FileDescriptor const file(
        uninterrupted([&] { return ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY); }));
    if (!file && (errno == ENOENT || errno == ENOTDIR))
        return std::nullopt;
    struct stat status{};
    if (!file || ::fstat(file.get(), &status) != 0)
        throw SSHConfigError::NotReadable(path, systemText(errno));
    if (!S_ISREG(status.st_mode))
        throw SSHConfigError::NotReadable(path, "not a file");

    // Its size is not asked for: it may grow, and that of some files is 0.
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
    NewFile copy(target);
    copy.fill(text);
    // Looked at again: writing may have taken its time.
    if (read(target) != before)
        throw SSHConfigError::ChangedMeanwhile(path);
    copy.replaceTarget();
    synchroniseFolderOf(target);
}

} // namespace tw::SSHConfigOnDisk
