#include "TWEngine/Transfer/HostSlots.h"

#include "TWEngine/Runtime/Completion.h"

#include <deque>
#include <map>

namespace tw {

struct HostSlots::State {
    using Waiter = std::shared_ptr<Completion<Done>>;

    struct Host {
        std::size_t inUse = 0;
        std::deque<Waiter> waiting;
    };

    /// Null if the caller has a slot at once.
    Waiter enter(std::string const &name)
    {
        std::lock_guard const lock(mutex);
        auto &host = hosts[name];
        if (host.inUse < atOnce) {
            ++host.inUse;
            return nullptr;
        }
        return host.waiting.emplace_back(std::make_shared<Completion<Done>>());
    }

    /// The next who still waits has the slot.
    void leave(std::string const &name)
    {
        std::lock_guard const lock(mutex);
        auto const found = hosts.find(name);
        auto &waiting = found->second.waiting;
        while (!waiting.empty()) {
            auto const next = std::move(waiting.front());
            waiting.pop_front();
            if (next->succeed({}))
                return;
        }
        if (--found->second.inUse == 0)
            hosts.erase(found);
    }

    std::mutex mutex;
    // Under the mutex.
    std::map<std::string, Host> hosts;
};

std::shared_ptr<HostSlots> const &HostSlots::shared()
{
    static auto const slots = std::make_shared<HostSlots>();
    return slots;
}

HostSlots::HostSlots() : state(std::make_shared<State>()) {}

Task<HostSlots::Slot> HostSlots::take(std::string host)
{
    return wait(state, std::move(host));
}

Task<HostSlots::Slot> HostSlots::wait(std::shared_ptr<State> state, std::string host)
{
    if (auto const waiter = state->enter(host))
        co_await State::Waiter::element_type::wait(waiter);
    co_return Slot(nullptr, [state, host](std::nullptr_t) { state->leave(host); });
}

} // namespace tw
