#include "TWEngine/SSH/ControlPath.h"

#include "TWEngine/Platform/PrivateFolder.h"

#include <cstdio>
#include <cstdlib>

#include <unistd.h>

namespace tw::ControlPath {

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

std::optional<std::string> folder(Place const &place)
{
    auto path = place.base + "/.tw-" + std::to_string(place.user);
    return PrivateFolder::make(place.user, path) ? std::optional(std::move(path)) : std::nullopt;
}

std::string sessionFolder()
{
    auto const *const variable = std::getenv("XDG_RUNTIME_DIR"); // NOLINT(concurrency-mt-unsafe): nobody changes it
    return variable ? variable : "";
}

std::optional<std::string> runtimeFolder(std::string const &session, Place const &place)
{
    // A longer one leaves too little room for the name of a socket.
    constexpr std::size_t longest = 70;
    if (session.starts_with('/') && session.size() <= longest && PrivateFolder::isPrivateTo(place.user, session))
        return session;
    return folder(place);
}

std::optional<std::string> make(std::string_view host, Place const &place)
{
    auto const parent = folder(place);
    return parent ? std::optional(*parent + '/' + socketName(host)) : std::nullopt;
}

std::string beside(std::string const &path, int number)
{
    return path + '.' + std::to_string(number);
}

} // namespace tw::ControlPath
