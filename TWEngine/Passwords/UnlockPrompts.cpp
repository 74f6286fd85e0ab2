#include "TWEngine/Passwords/UnlockPrompts.h"

namespace tw {

Task<bool> UnlockPrompts::unlock(std::string host)
{
    return onStrand(strand, unlockHere(shared_from_this(), std::move(host)));
}

Task<bool> UnlockPrompts::unlockHere(std::shared_ptr<UnlockPrompts> self, std::string host)
{
    auto const context = co_await currentContext();
    if (context.stop.stop_requested() || self->asked.contains(host))
        co_return false;
    auto const isReadable = self->ask(host, context.stop);
    if (!context.stop.stop_requested())
        self->asked.insert(std::move(host));
    co_return isReadable;
}

} // namespace tw
