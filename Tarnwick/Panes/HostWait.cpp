#include "Tarnwick/Panes/HostWait.h"

#include "TWEngine/SSH/HostAccess.h"

namespace tw {

struct HostWait::State {
    std::shared_ptr<Executor> executor;
    std::shared_ptr<Clock> clock;
    std::function<void()> changed;
    std::stop_source stop = {};
    HostStatus status = {};
    bool isRipe = false;
    bool isTicking = false;

    bool hasNews() const
    {
        using Phase = HostStatus::Phase;
        switch (status.phase) {
        case Phase::silent:
            return true; // there was no answer for a while already
        case Phase::reaching:
        case Phase::loggingIn:
        case Phase::asking:
        case Phase::waitingForShell:
            return isRipe;
        default:
            return false;
        }
    }

    static void update(std::shared_ptr<State> const &self)
    {
        if (self->hasNews() && !self->isTicking) {
            self->isTicking = true;
            spawn({self->executor, self->stop.get_token()}, tick(self, self->clock));
        }
        self->changed();
    }

    /// Until the number of seconds changes.
    std::chrono::nanoseconds untilNextSecond() const
    {
        std::chrono::nanoseconds const passed = clock->steadyNow() - status.since;
        return std::chrono::seconds(1) - passed % std::chrono::seconds(1);
    }
};

HostWait::HostWait(std::shared_ptr<Executor> mainContext, std::shared_ptr<Clock> clock,
                   std::shared_ptr<FileSystemProvider> ofTheHost, std::function<void()> changed)
    : provider(std::move(ofTheHost)),
      state(std::make_shared<State>(
          State{.executor = std::move(mainContext), .clock = std::move(clock), .changed = std::move(changed)}))
{
    if (!std::dynamic_pointer_cast<HostAccess>(provider))
        return;
    TaskContext const context{state->executor, state->stop.get_token()};
    spawn(context, follow(state, provider));
    spawn(context, ripen(state, state->clock));
}

HostWait::~HostWait()
{
    state->stop.request_stop();
    state->changed = [] {}; // a task may hold the state for the rest of its turn
}

std::optional<HostWait::News> HostWait::news() const
{
    if (!state->hasNews())
        return std::nullopt;
    auto const passed = state->clock->steadyNow() - state->status.since;
    return News{state->status.phase, std::chrono::floor<std::chrono::seconds>(passed)};
}

Task<void> HostWait::follow(std::weak_ptr<State> weak, std::shared_ptr<FileSystemProvider> provider)
{
    auto const access = std::dynamic_pointer_cast<HostAccess>(provider);
    auto stream = co_await access->statuses();
    for (;;) {
        auto const status = co_await stream.next();
        auto const self = weak.lock();
        if (!self || !status)
            co_return;
        self->status = *status;
        State::update(self);
    }
}

Task<void> HostWait::ripen(std::weak_ptr<State> weak, std::shared_ptr<Clock> clock)
{
    co_await clock->sleep(patience);
    auto const self = weak.lock();
    if (!self)
        co_return;
    self->isRipe = true;
    State::update(self);
}

Task<void> HostWait::tick(std::weak_ptr<State> weak, std::shared_ptr<Clock> clock)
{
    for (;;) {
        auto self = weak.lock();
        if (!self)
            co_return;
        auto const pause = self->untilNextSecond();
        self.reset();
        co_await clock->sleep(pause);
        self = weak.lock();
        if (!self)
            co_return;
        if (!self->hasNews()) {
            self->isTicking = false;
            co_return;
        }
        self->changed();
    }
}

} // namespace tw
