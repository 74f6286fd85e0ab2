#include "TWEngine/Passwords/SessionBus.h"

#include "TWEngine/Passwords/BusSession.h"

#include <cstdlib>

#include <sys/stat.h>

namespace tw::SessionBus {

std::string address()
{
    // NOLINTBEGIN(concurrency-mt-unsafe): nobody sets variables
    if (auto const *const address = std::getenv("DBUS_SESSION_BUS_ADDRESS"); address && *address != '\0')
        return std::string_view(address).starts_with("unix:") ? address : "";
    auto const *const folder = std::getenv("XDG_RUNTIME_DIR");
    // NOLINTEND(concurrency-mt-unsafe)
    if (!folder || *folder == '\0')
        return {};
    auto const socket = std::string(folder) + "/bus";
    struct stat status{};
    if (::stat(socket.c_str(), &status) != 0 || !S_ISSOCK(status.st_mode))
        return {};
    auto *const escaped = g_dbus_address_escape_value(socket.c_str());
    auto address = std::string("unix:path=") + escaped;
    g_free(escaped);
    return address;
}

bool answers(std::chrono::milliseconds limit)
{
    auto const where = address();
    return !where.empty() && BusSession(where, limit).connection() != nullptr;
}

} // namespace tw::SessionBus
