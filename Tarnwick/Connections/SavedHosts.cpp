#include "Tarnwick/Connections/SavedHosts.h"

#include "TWCore/Async/Outcome.h"
#include "Tarnwick/Connections/SSHConfig.h"

namespace tw {

SavedHosts::SavedHosts(std::shared_ptr<Executor> context, WorkerPool const &readers, std::string configuration)
    : mainContext(std::move(context)), workers(readers), path(std::move(configuration))
{
}

Task<SavedHosts::Names> SavedHosts::names()
{
    if (!last || *lastHasBegun) {
        auto const hasBegun = std::make_shared<bool>(false);
        last = Reading::start(mainContext, read(last, hasBegun, &workers, path));
        lastHasBegun = hasBegun;
    }
    return last->wait();
}

Task<SavedHosts::Names> SavedHosts::read(std::optional<Reading> before, std::shared_ptr<bool> hasBegun,
                                         WorkerPool const *workers, std::string path)
{
    if (before)
        co_await outcomeOf(before->wait());
    *hasBegun = true;
    auto names = co_await SSHConfig::hosts(*workers, std::move(path));
    co_return names;
}

Task<void> SavedHosts::finish() const
{
    return endOf(last);
}

Task<void> SavedHosts::endOf(std::optional<Reading> reading)
{
    if (reading)
        co_await outcomeOf(reading->wait());
}

} // namespace tw
