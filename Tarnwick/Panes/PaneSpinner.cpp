#include "Tarnwick/Panes/PaneSpinner.h"

namespace tw {

struct PaneSpinner::State {
    std::function<void()> changed;
    int late = 0; ///< how much work has been under way for longer than the delay
};

struct PaneSpinner::Begun {
    explicit Begun(std::weak_ptr<State> of) : state(std::move(of)) {}

    Begun(Begun const &) = delete;
    Begun &operator=(Begun const &) = delete;

    ~Begun()
    {
        waiting.request_stop();
        auto const shown = state.lock();
        if (isLate && shown && --shown->late == 0)
            shown->changed();
    }

    void becomeLate()
    {
        isLate = true;
        auto const shown = state.lock();
        if (shown && ++shown->late == 1)
            shown->changed();
    }

    std::weak_ptr<State> const state;
    std::stop_source waiting;
    bool isLate = false;
};

PaneSpinner::PaneSpinner(std::shared_ptr<Executor> mainContext, std::shared_ptr<Clock> clock,
                         std::function<void()> changed)
    : executor(std::move(mainContext)),
      time(std::move(clock)),
      state(std::make_shared<State>(State{.changed = std::move(changed)}))
{
}

PaneSpinner::Work PaneSpinner::begin() const
{
    auto const work = std::make_shared<Begun>(state);
    spawn({executor, work->waiting.get_token()}, ripen(work, time));
    return work;
}

PaneSpinner::Work PaneSpinner::beginLong() const
{
    auto const work = std::make_shared<Begun>(state);
    work->becomeLate();
    return work;
}

bool PaneSpinner::isSpinning() const
{
    return state->late > 0;
}

Task<void> PaneSpinner::ripen(std::weak_ptr<Begun> weak, std::shared_ptr<Clock> clock)
{
    co_await clock->sleep(delay);
    // Work can have ended after the clock rang and before this goes on.
    if (auto const work = weak.lock())
        work->becomeLate();
}

} // namespace tw
