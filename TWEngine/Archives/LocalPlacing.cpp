#include "TWEngine/Archives/LocalPlacing.h"

#include "TWCore/Model/FileOperationError.h"
#include "TWEngine/Archives/RightsCleaning.h"
#include "TWEngine/Browsing/FolderAccess.h"
#include "TWEngine/Browsing/LocalProviderError.h"
#include "TWEngine/Browsing/LocalRemoval.h"

#include <filesystem>
#include <fstream>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tw::LocalPlacing {

namespace {

using ArchiveChild::Job;
using ArchivePlacing::All;
using ArchivePlacing::File;
using ArchivePlacing::Members;
using Left = std::optional<ArchivePlacing::Any>;

std::string_view lastName(std::string_view path)
{
    return path.substr(path.rfind('/') + 1);
}

[[noreturn]] void fail(Job const &job, std::string words)
{
    throw FileOperationError::Failed(job.operation, job.path, std::move(words));
}

[[noreturn]] void fail(Job const &job, std::string const &path, int error)
{
    fail(job, path + ": " + systemText(error));
}

/// The kind of what is there, without following a link; 0: nothing is.
mode_t kindAt(std::string const &path)
{
    struct stat status;
    return ::lstat(path.c_str(), &status) == 0 ? status.st_mode & S_IFMT : 0;
}

bool isFolder(std::string const &path)
{
    return kindAt(path) == S_IFDIR;
}

enum class Existing { stays, isReplaced };

int rename(std::string const &from, std::string const &to, Existing existing)
{
    if (existing == Existing::isReplaced)
        return ::rename(from.c_str(), to.c_str());
    if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0)
        return 0;
    // Some file systems do not know the flag. The caller has looked.
    return errno == EINVAL || errno == ENOSYS ? ::rename(from.c_str(), to.c_str()) : -1;
}

void moveTo(std::string const &from, std::string const &to, Existing existing, Job const &job)
{
    if (auto const error = renameWithAccess(from, [&] { return rename(from, to, existing); }); error != 0)
        fail(job, to, error);
}

/// What new files of this process are not given. To ask by umask(2) would change it for all threads.
mode_t userMask()
{
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        mode_t mask = 0;
        if (word == "Umask:" && status >> std::oct >> mask)
            return mask;
    }
    return 077;
}

bool holdsOnly(std::string const &folder, std::string_view name)
{
    std::error_code error;
    std::filesystem::directory_iterator entry(folder, error);
    return !error && entry != std::filesystem::directory_iterator() && entry->path().filename().native() == name &&
           entry.increment(error) == std::filesystem::directory_iterator() && !error;
}

bool isClean(std::string const &staging, Job const &job, std::stop_token const &stop)
{
    try {
        return ::geteuid() != 0 || cleanRights(staging, stop);
    } catch (std::system_error const &failure) {
        fail(job, staging, failure.code().value());
    }
}

Left put(All const &all, Job const &job, std::stop_token const &stop)
{
    if (!isClean(all.staging, job, stop))
        return all;
    if (kindAt(all.target) != 0)
        fail(job, all.target + " is there already");
    auto const inner = all.staging + "/" + all.stem;
    struct stat status;
    if (isFolder(inner) && holdsOnly(all.staging, all.stem)) {
        moveTo(inner, all.target, Existing::stays, job);
        if (::rmdir(all.staging.c_str()) != 0)
            fail(job, all.staging, errno);
    } else if (::stat(all.staging.c_str(), &status) == 0 &&
               // The folder was nobody else's until here.
               ::chmod(all.staging.c_str(), (status.st_mode & 07777U) | (0777U & ~userMask())) == 0) {
        moveTo(all.staging, all.target, Existing::stays, job);
    } else {
        fail(job, all.staging, errno);
    }
    return std::nullopt;
}

Left put(Members const &some, Job const &job, std::stop_token const &stop)
{
    if (!isClean(some.staging, job, stop))
        return some;
    Members left{some.staging, some.target, {}};
    for (auto const &member : some.members) {
        auto const from = some.staging + "/" + member;
        auto const to = some.target + "/" + std::string(lastName(member));
        if (kindAt(from) == 0)
            fail(job, member + " is not in the archive");
        if (isFolder(from) && isFolder(to))
            left.members.push_back(member);
        else if (isFolder(to))
            fail(job, to + " is a folder");
        else
            moveTo(from, to, Existing::isReplaced, job);
    }
    if (!left.members.empty())
        return left;
    // An archive can give folders any mode.
    removeForGood(some.staging, stop, LockedFolders::go);
    return std::nullopt;
}

Left put(File const &one, Job const &job, std::stop_token const & /*stop*/)
{
    struct stat status;
    if (::stat(one.target.c_str(), &status) == 0 && S_ISDIR(status.st_mode))
        fail(job, one.target + " is a folder");
    moveTo(one.file, one.target, Existing::isReplaced, job);
    auto const staging = one.file.substr(0, one.file.rfind('/'));
    if (::rmdir(staging.c_str()) != 0)
        fail(job, staging, errno);
    return std::nullopt;
}

} // namespace

void makeStaging(std::string const &staging, Job const &job)
{
    if (::mkdir(staging.c_str(), 0700) != 0)
        fail(job, staging, errno);
}

std::optional<ArchivePlacing::Any> place(ArchivePlacing::Any const &placing, Job const &job,
                                         std::stop_token const &stop)
{
    return std::visit([&](auto const &one) { return put(one, job, stop); }, placing);
}

} // namespace tw::LocalPlacing
