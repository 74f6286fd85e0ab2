#include "TWEngine/Passwords/SavedPasswords.h"

#include "TWEngine/Passwords/ProcessTable.h"
#include "TWEngine/Passwords/UnlockPrompts.h"
#include "TWEngine/Runtime/EngineRuntime.h"

#include <unistd.h>

namespace tw {

SavedPasswords SavedPasswords::ofThisSession(EngineRuntime &engine)
{
    auto const prompts = std::make_shared<UnlockPrompts>(
        Strand(engine.workers().executor(WorkPriority::interactive)),
        [](std::string const &host, std::stop_token giveUp) { return SSHPassword::unlock(host, std::move(giveUp)); });
    return {.find = [](std::vector<std::string> const &accounts) { return SSHPassword::find(accounts); },
            .unlock = [prompts](std::string account) { return prompts->unlock(std::move(account)); },
            .helper = ownExecutable()};
}

std::optional<std::string> SavedPasswords::ownExecutable()
{
    auto const executable = ProcessTable::ofThisSystem().executableOf(::getpid());
    if (!executable || ::access(executable->path.c_str(), X_OK) != 0)
        return std::nullopt;
    return executable->path;
}

} // namespace tw
