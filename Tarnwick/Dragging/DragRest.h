#pragma once

#include "Tarnwick/Panes/Alarm.h"

#include <functional>
#include <string>

namespace tw {

/// Does something once a drag has rested on one thing for a while.
///
/// Threads: main context only.
class DragRest {
public:
    DragRest(std::shared_ptr<Executor> mainContext, std::shared_ptr<Clock> clock);

    /// The drag is on the thing that `key` names. While that stays the same, the time goes on, and the action is done
    /// once.
    void on(std::string const &key, std::chrono::milliseconds delay, std::function<void()> action);

    /// The drag is on nothing of this kind.
    void off();

private:
    std::string rested; ///< empty: nothing
    std::function<void()> action;
    Alarm alarm;
};

} // namespace tw
