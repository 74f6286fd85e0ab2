#include "TWEngine/Transfer/CopyingChild.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

#include <sys/stat.h>

namespace tw {

namespace {

std::int64_t fieldIn(std::string const &file, std::string_view name)
{
    std::ifstream lines(file);
    std::string word;
    std::int64_t value = 0;
    while (lines >> word)
        if (word == name)
            return lines >> value ? value : 0;
    return 0;
}

bool isBelow(std::string const &path, std::string const &folder)
{
    return path.starts_with(folder) && (folder.ends_with('/') || path.substr(folder.size()).starts_with('/'));
}

std::string below(std::string const &path, std::string const &folder)
{
    auto const rest = path.substr(folder.size());
    return rest.starts_with('/') ? rest.substr(1) : rest;
}

std::string canonical(std::string const &folder)
{
    std::error_code error;
    auto const path = std::filesystem::canonical(folder, error);
    return error ? folder : path.string();
}

} // namespace

CopyingChild CopyingChild::look(pid_t process, std::string const &from, std::string const &to)
{
    auto const place = "/proc/" + std::to_string(process);
    CopyingChild child{.written = fieldIn(place + "/io", "wchar:")};
    std::error_code error;
    auto const source = canonical(from);
    auto const target = canonical(to);
    for (std::filesystem::directory_iterator entry(place + "/fd", error), end; !error && entry != end;
         entry.increment(error)) {
        std::error_code gone;
        auto const file = std::filesystem::read_symlink(entry->path(), gone).string();
        struct stat status;
        if (gone || ::stat(entry->path().c_str(), &status) != 0 || !S_ISREG(status.st_mode))
            continue;
        if (isBelow(file, target)) {
            // The kernel copies a large file in pieces of up to 2 GiB, and counts a piece only when it is done. The
            // size grows meanwhile.
            auto const counted = fieldIn(place + "/fdinfo/" + entry->path().filename().string(), "pos:");
            child.written += std::max<std::int64_t>(0, status.st_size - counted);
        } else if (isBelow(file, source)) {
            child.item = below(file, source);
        }
    }
    return child;
}

} // namespace tw
