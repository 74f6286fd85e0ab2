#include "TWEngine/Platform/Scratch.h"

#include "TWCore/Check.h"
#include "TWCore/Model/FileOperationError.h"
#include "TWEngine/Browsing/LocalProviderError.h"
#include "TWEngine/Browsing/LocalRemoval.h"
#include "TWEngine/Platform/PrivateFile.h"
#include "TWEngine/Platform/PrivateFolder.h"
#include "TWEngine/Platform/RandomDigits.h"
#include "TWEngine/Runtime/FileDescriptor.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <filesystem>
#include <functional>
#include <optional>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>

namespace tw::Scratch {

namespace {

/// The attribute in which this desktop's programs keep where a file was downloaded from.
constexpr auto originAttribute = "user.xdg.origin.url";

constexpr std::string_view folderPrefix = "Tarnwick-";

constexpr mode_t executeBits = S_IXUSR | S_IXGRP | S_IXOTH;

[[noreturn]] void fail(std::string const &path, std::string const &reason)
{
    throw FileOperationError::Failed("create", path, reason);
}

/// Sets the mode of a folder of the user's. A link is left alone, and is refused by the check that follows.
void restrict(std::string const &folder, uid_t user)
{
    FileDescriptor const opened(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat status;
    if (opened && ::fstat(opened.get(), &status) == 0 && status.st_uid == user)
        ::fchmod(opened.get(), S_IRWXU);
}

void makePrivate(std::string const &folder, uid_t user)
{
    if (PrivateFolder::make(user, folder))
        return;
    restrict(folder, user);
    if (!PrivateFolder::isPrivateTo(user, folder))
        fail(folder, "it is no folder that only its user can enter");
}

/// The process that a folder's name ends with; nothing if the name is not ours.
std::optional<pid_t> processOf(std::string_view name)
{
    if (!name.starts_with(folderPrefix))
        return std::nullopt;
    auto const digits = name.substr(name.rfind('-') + 1);
    pid_t process = 0;
    auto const [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), process);
    auto const isWhole = error == std::errc() && end == digits.data() + digits.size();
    return isWhole && process > 0 ? std::optional(process) : std::nullopt;
}

void removeFolder(std::filesystem::path const &folder)
{
    try {
        // Folders that were fetched have the rights of their origin.
        removeForGood(folder.native(), {}, LockedFolders::go);
    } catch (std::exception const &) {
        // What is left is tried again by the next launch.
    }
}

void removeWhere(std::function<bool(pid_t)> const &isToGo, Place const &place)
{
    if (!PrivateFolder::isPrivateTo(place.user, place.base))
        return;
    std::error_code ignored;
    for (auto each = std::filesystem::directory_iterator(place.base, ignored);
         each != std::filesystem::directory_iterator(); each.increment(ignored)) {
        auto const process = processOf(each->path().filename().native());
        if (process && isToGo(*process))
            removeFolder(each->path());
    }
}

} // namespace

std::string directory(std::string_view label, Place const &place)
{
    check(std::ranges::all_of(label, [](char sign) { return sign >= 'a' && sign <= 'z'; }), "a label is letters only");
    PrivateFile::makeFolderOf(place.base);
    makePrivate(place.base, place.user);
    auto folder =
        place.base + '/' + std::string(folderPrefix) + std::string(label) + '-' + std::to_string(place.process);
    makePrivate(folder, place.user);
    return folder;
}

std::string newFolder(std::string_view label, Place const &place)
{
    constexpr std::size_t randomBytes = 4;
    auto folder = directory(label, place) + "/tw-" + std::string(label) + '-' + randomDigits(randomBytes);
    if (::mkdir(folder.c_str(), S_IRWXU) != 0)
        fail(folder, systemText(errno));
    return folder;
}

void makeFile(std::string const &path)
{
    ::unlink(path.c_str());
    FileDescriptor const made(
        ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (!made)
        fail(path, systemText(errno));
}

void markAsFetched(std::string const &path, std::string_view label)
{
    FileDescriptor const file(::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    struct stat status;
    if (!file || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode))
        throw FileOperationError::Failed("mark", path, file ? "it is no file" : systemText(errno));
    if (::fchmod(file.get(), status.st_mode & ACCESSPERMS & ~executeBits) != 0)
        throw FileOperationError::Failed("mark", path, systemText(errno));
    auto const origin = "ssh://" + std::string(label);
    ::fsetxattr(file.get(), originAttribute, origin.data(), origin.size(), 0);
}

bool isMarkedAsFetched(std::string const &path)
{
    return ::getxattr(path.c_str(), originAttribute, nullptr, 0) >= 0;
}

void remove(Place const &place)
{
    removeWhere([](pid_t process) { return ::kill(process, 0) != 0 && errno == ESRCH; }, place);
}

void remove(pid_t process, Place const &place)
{
    removeWhere([process](pid_t each) { return each == process; }, place);
}

} // namespace tw::Scratch
