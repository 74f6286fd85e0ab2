#include "TWEngine/Instance/InstanceSocket.h"

#include "TWEngine/Platform/PrivateFolder.h"

#include <array>
#include <cstdio>

#include <sys/un.h>

namespace tw::InstanceSocket {

namespace {

std::string valueOf(Environment const &environment, char const *variable)
{
    auto const found = environment.find(variable);
    return found != environment.end() ? found->second : std::string();
}

bool isPlain(char character)
{
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
           (character >= '0' && character <= '9') || character == '-';
}

/// ":0.1" is another screen of the display ":0".
std::string withoutScreen(std::string display)
{
    auto const colon = display.rfind(':');
    auto const dot = display.find('.', colon == std::string::npos ? display.size() : colon);
    return display.substr(0, dot);
}

} // namespace

std::string displayName(Environment const &environment)
{
    auto display = valueOf(environment, "WAYLAND_DISPLAY");
    if (display.empty())
        display = withoutScreen(valueOf(environment, "DISPLAY"));
    std::string name;
    for (auto const character : display) {
        std::array<char, 4> code{};
        std::snprintf(code.data(), code.size(), "_%02x", static_cast<unsigned char>(character));
        name += isPlain(character) ? std::string(1, character) : std::string(code.data());
    }
    return name;
}

std::optional<std::string> pathFor(Environment const &environment, uid_t user)
{
    auto const folder = valueOf(environment, "XDG_RUNTIME_DIR");
    auto const display = displayName(environment);
    auto path = folder + "/tarnwick-window-" + display;
    auto const fits = path.size() < sizeof(sockaddr_un::sun_path);
    if (display.empty() || !folder.starts_with('/') || !fits || !PrivateFolder::isPrivateTo(user, folder))
        return std::nullopt;
    return path;
}

} // namespace tw::InstanceSocket
