#include "Tarnwick/Transfers/Job.h"

#include <utility>

namespace tw {

void Job::update(Time now, ProgressState newState)
{
    if (newState.item.empty())
        newState.item = std::move(state.item);
    // A host counts the blocks of its disk, and a file with holes has more bytes than that.
    if (newState.total && newState.bytes > *newState.total)
        newState.total.reset();
    state = std::move(newState);
    pace.note(now, state.done());
}

Job::Look Job::lookAt(Time now)
{
    pace.note(now, state.done());
    auto const whole = state.whole();
    return {.state = state,
            .speed = state.countsBytes() ? pace.speed() : std::nullopt,
            .left = whole ? pace.timeLeft(*whole) : std::nullopt,
            .isCancelled = isCancelled()};
}

void Job::cancel()
{
    if (auto const once = std::exchange(onCancel, nullptr))
        once();
}

} // namespace tw
