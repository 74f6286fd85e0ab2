#include "Tarnwick/Transfers/Job.h"

#include <utility>

namespace tw {

void Job::update(Time now, ProgressState newState)
{
    if (newState.item.empty())
        newState.item = std::move(state.item);
    state = std::move(newState);
    pace.note(now, state.bytes);
}

Job::Look Job::lookAt(Time now)
{
    pace.note(now, state.bytes);
    return {.state = state,
            .speed = pace.speed(),
            .left = state.total ? pace.timeLeft(*state.total) : std::nullopt,
            .isCancelled = isCancelled()};
}

void Job::cancel()
{
    if (auto const once = std::exchange(onCancel, nullptr))
        once();
}

} // namespace tw
