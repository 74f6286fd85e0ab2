#include "TWEngine/Editing/EditStaging.h"

#include "TWCore/Model/FileOperationError.h"
#include "TWCore/Model/LocalName.h"
#include "TWCore/Model/PercentCoding.h"
#include "TWEngine/Browsing/LocalProviderError.h"
#include "TWEngine/Browsing/LocalRemoval.h"
#include "TWEngine/Platform/PrivateFile.h"
#include "TWEngine/Platform/PrivateFolder.h"
#include "TWEngine/Platform/RandomDigits.h"
#include "TWEngine/Platform/Scratch.h"

#include <cerrno>
#include <charconv>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <sstream>

#include <sys/stat.h>

namespace tw::EditStaging {

namespace {

constexpr std::size_t tokenBytes = 8;

/// The longest path of Linux, percent-coded, and the other fields.
constexpr std::size_t mostRecordBytes = 65536;

constexpr auto recordName = "record";
constexpr auto endMarkName = "editors-ended";

std::string recordOf(Copy const &copy)
{
    return copy.folder + '/' + recordName;
}

/// A line for each field, since a path may hold any byte.
std::string textOf(Record const &record)
{
    auto const &stamp = record.uploaded;
    return PercentCoding::encoded(record.connection) + '\n' + PercentCoding::encoded(record.path) + '\n' +
           PercentCoding::encoded(record.version) + '\n' + record.mode + '\n' +
           (stamp ? std::to_string(stamp->size) + ' ' + std::to_string(stamp->mtime) : "") + '\n';
}

std::optional<Record> recordIn(std::string const &text)
{
    std::istringstream lines(text);
    Record record;
    std::string stamp;
    if (!std::getline(lines, record.connection) || !std::getline(lines, record.path) ||
        !std::getline(lines, record.version) || !std::getline(lines, record.mode) || !std::getline(lines, stamp))
        return std::nullopt;
    for (auto *const field : {&record.connection, &record.path, &record.version})
        *field = PercentCoding::decoded(*field);
    std::istringstream numbers(stamp);
    if (Stamp uploaded; numbers >> uploaded.size >> uploaded.mtime)
        record.uploaded = uploaded;
    return record.path.starts_with('/') ? std::optional(record) : std::nullopt;
}

std::string copyPath(std::string const &folder, Record const &record)
{
    // The editor shows the path, so the host is in it.
    return folder + '/' + LocalName::safe(record.connection) + '/' +
           LocalName::safe(record.path.substr(record.path.rfind('/') + 1));
}

std::string parentOf(std::string const &path)
{
    return path.substr(0, path.rfind('/'));
}

void makePrivate(std::string const &folder, uid_t user)
{
    if (!PrivateFolder::make(user, folder))
        throw FileOperationError::Failed("create", folder, "it is no folder that only its user can enter");
}

std::string folderName(std::string const &token, Place const &place)
{
    return token + '-' + std::to_string(place.process) + '-' + place.boot;
}

struct Owned {
    std::string token;
    pid_t process = 0;
    std::string boot;
};

/// Nothing if the folder is not ours.
std::optional<Owned> ownerOf(std::string const &name)
{
    auto const dash = name.find('-');
    if (dash != 2 * tokenBytes)
        return std::nullopt;
    Owned owned{.token = name.substr(0, dash), .process = 0, .boot = {}};
    auto const *const end = name.data() + name.size();
    auto const parsed = std::from_chars(name.data() + dash + 1, end, owned.process);
    if (parsed.ec != std::errc() || owned.process <= 0 || parsed.ptr == end || *parsed.ptr != '-')
        return std::nullopt;
    owned.boot.assign(parsed.ptr + 1, end);
    return owned;
}

/// Numbers of processes begin anew with each start of the machine: the number of a killed program soon has another
/// owner.
bool isAlive(Owned const &owned, Place const &place)
{
    return owned.boot == place.boot && (::kill(owned.process, 0) == 0 || errno != ESRCH);
}

/// True if an editor has left nothing that could be the missing copy under another name.
bool isEmpty(std::string const &folder)
{
    std::error_code failure;
    return std::filesystem::is_empty(folder, failure) && !failure;
}

/// A record that is written while its folder is removed would keep the folder.
std::mutex writingOfRecords;

/// Nothing if the copy needs no further care.
std::optional<Copy> take(std::string const &folder, Owned const &owned, Place const &place)
{
    auto const mine = place.base + '/' + folderName(owned.token, place);
    // Of two programs that start at the same time, one gets the folder.
    if (::rename(folder.c_str(), mine.c_str()) != 0)
        return std::nullopt;
    Copy copy{.folder = mine, .path = {}, .token = owned.token, .record = {}};
    auto const text = PrivateFile::read(recordOf(copy), mostRecordBytes);
    auto const record = text ? recordIn(*text) : std::nullopt;
    if (!record)
        return std::nullopt;
    copy.record = *record;
    copy.path = copyPath(mine, *record);
    auto const now = stampOf(copy.path);
    if (record->uploaded && now && now != record->uploaded) {
        ::unlink(endMark(copy).c_str()); // those editors were started by another process
        return copy;
    }
    // An editor that was killed may have left the missing copy under another name.
    if (!record->uploaded || now || isEmpty(parentOf(copy.path)))
        remove(copy);
    return std::nullopt;
}

} // namespace

std::string bootOfThisSystem()
{
    std::ifstream file("/proc/sys/kernel/random/boot_id");
    std::string boot;
    std::getline(file, boot);
    return boot;
}

Copy make(Record record, Place const &place)
{
    PrivateFile::makeFolderOf(place.base);
    makePrivate(place.base, place.user);
    auto token = randomDigits(tokenBytes);
    auto const folder = place.base + '/' + folderName(token, place);
    Copy copy{
        .folder = folder, .path = copyPath(folder, record), .token = std::move(token), .record = std::move(record)};
    makePrivate(copy.folder, place.user);
    makePrivate(parentOf(copy.path), place.user);
    Scratch::makeFile(copy.path);
    keep(copy);
    return copy;
}

void keep(Copy const &copy)
{
    std::lock_guard const lock(writingOfRecords);
    if (!PrivateFile::replace(recordOf(copy), textOf(copy.record)))
        throw FileOperationError::Failed("create", recordOf(copy), systemText(errno));
}

void remove(Copy const &copy)
{
    std::lock_guard const lock(writingOfRecords);
    try {
        removeForGood(copy.folder, {});
    } catch (std::exception const &) {
        // The next launch tries again.
    }
}

std::optional<Stamp> stampOf(std::string const &path)
{
    struct stat status;
    if (::lstat(path.c_str(), &status) != 0)
        return std::nullopt;
    constexpr std::int64_t nanoseconds = 1'000'000'000;
    return Stamp{status.st_size, status.st_mtim.tv_sec * nanoseconds + status.st_mtim.tv_nsec};
}

std::string endMark(Copy const &copy)
{
    return copy.folder + '/' + endMarkName;
}

std::int64_t endedEditors(Copy const &copy)
{
    auto const mark = stampOf(endMark(copy));
    return mark ? mark->size : 0;
}

std::vector<Copy> takeOver(Place const &place)
{
    std::vector<Copy> found;
    if (!PrivateFolder::isPrivateTo(place.user, place.base))
        return found;
    std::vector<std::pair<std::string, Owned>> left;
    std::error_code ignored;
    for (auto each = std::filesystem::directory_iterator(place.base, ignored);
         each != std::filesystem::directory_iterator(); each.increment(ignored)) {
        auto const owned = ownerOf(each->path().filename().native());
        if (owned && !isAlive(*owned, place))
            left.emplace_back(each->path().native(), *owned);
    }
    for (auto const &[folder, owned] : left) {
        if (auto copy = take(folder, owned, place))
            found.push_back(*std::move(copy));
    }
    return found;
}

} // namespace tw::EditStaging
