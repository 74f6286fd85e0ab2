#include "TWEngine/Platform/UserPaths.h"

#include <pwd.h>
#include <unistd.h>

namespace tw {

namespace {

std::string absoluteOr(Environment const &environment, std::string const &name, std::string const &fallback)
{
    auto const found = environment.find(name);
    return found != environment.end() && found->second.starts_with('/') ? found->second : fallback;
}

/// Empty if the password database does not know the user, as in some containers.
std::string accountHome()
{
    passwd record{};
    passwd *found = nullptr;
    std::vector<char> texts(16 << 10); // much more than any home is long
    if (getpwuid_r(getuid(), &record, texts.data(), texts.size(), &found) != 0 || !found || !found->pw_dir)
        return {};
    return found->pw_dir;
}

} // namespace

UserPaths UserPaths::from(Environment const &environment, std::string const &accountHome)
{
    auto const home = absoluteOr(environment, "HOME", accountHome);
    auto const caches = absoluteOr(environment, "XDG_CACHE_HOME", home + "/.cache") + "/com.velmora.Tarnwick";
    auto const state = absoluteOr(environment, "XDG_STATE_HOME", home + "/.local/state") + "/Tarnwick";
    return {.caches = caches, .edits = caches + "/edits", .lifeLog = state + "/life.log"};
}

UserPaths UserPaths::ofThisUser()
{
    return from(inheritedEnvironment(), accountHome());
}

} // namespace tw
