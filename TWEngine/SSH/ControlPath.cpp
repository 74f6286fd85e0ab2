#include "TWEngine/SSH/ControlPath.h"

#include <cstdio>

#include <sys/stat.h>
#include <unistd.h>

namespace tw::ControlPath {

namespace {

/// For anybody but the owner.
constexpr mode_t foreignRights = S_IRWXG | S_IRWXO;

/// As it is now. A link is not followed: its maker decides where it leads.
bool isSafe(std::string const &folder, uid_t user)
{
    struct stat status;
    return lstat(folder.c_str(), &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == user &&
           (status.st_mode & foreignRights) == 0;
}

} // namespace

Place Place::ofThisUser()
{
    return {.user = getuid()};
}

std::string socketName(std::string_view host)
{
    // The low halves of the start value and the prime of 64-bit FNV-1a, in 32 bits. It is no hash that has a name, and
    // must stay this one: programs of two versions that run side by side share their connections by it.
    constexpr std::uint32_t start = 0x84222325;
    constexpr std::uint32_t factor = 435;
    auto hash = start;
    for (auto const byte : host)
        hash = (hash ^ static_cast<unsigned char>(byte)) * factor;
    char digits[2 * sizeof hash + 1];
    std::snprintf(digits, sizeof digits, "%08x", hash);
    return digits;
}

std::optional<std::string> make(std::string_view host, Place const &place)
{
    auto const folder = place.base + "/.tw-" + std::to_string(place.user);
    // Private from the first moment on. If it is there already, or cannot be made, the look at it tells.
    mkdir(folder.c_str(), S_IRWXU);
    if (!isSafe(folder, place.user))
        return std::nullopt;
    return folder + '/' + socketName(host);
}

std::string beside(std::string const &path, int number)
{
    return path + '.' + std::to_string(number);
}

} // namespace tw::ControlPath
