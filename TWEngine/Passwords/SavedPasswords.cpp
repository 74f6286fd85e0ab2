#include "TWEngine/Passwords/SavedPasswords.h"

#include "TWEngine/Passwords/ProcessTable.h"
#include "TWEngine/Passwords/SSHPassword.h"

#include <unistd.h>

namespace tw {

SavedPasswords SavedPasswords::ofThisSession()
{
    return {.exists = [](std::string const &host) { return SSHPassword::exists(host); }, .helper = ownExecutable()};
}

std::optional<std::string> SavedPasswords::ownExecutable()
{
    auto const executable = ProcessTable::ofThisSystem().executableOf(::getpid());
    if (!executable || ::access(executable->path.c_str(), X_OK) != 0)
        return std::nullopt;
    return executable->path;
}

} // namespace tw
