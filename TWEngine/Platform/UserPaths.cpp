#include "TWEngine/Platform/UserPaths.h"

#include "TWEngine/Platform/HomeFolder.h"

namespace tw {

namespace {

std::string absoluteOr(Environment const &environment, std::string const &name, std::string const &fallback)
{
    auto const found = environment.find(name);
    return found != environment.end() && found->second.starts_with('/') ? found->second : fallback;
}

} // namespace

UserPaths UserPaths::from(Environment const &environment)
{
    auto const home = HomeFolder::in(environment);
    auto const cachesOfAll = absoluteOr(environment, "XDG_CACHE_HOME", home + "/.cache");
    auto const caches = cachesOfAll + "/com.velmora.Tarnwick";
    auto const state = absoluteOr(environment, "XDG_STATE_HOME", home + "/.local/state") + "/Tarnwick";
    return {.caches = caches,
            .edits = caches + "/edits",
            .scratch = caches + "/scratch",
            .lifeLog = state + "/life.log",
            .thumbnails = cachesOfAll + "/thumbnails"};
}

UserPaths UserPaths::ofThisUser()
{
    return from(inheritedEnvironment());
}

} // namespace tw
