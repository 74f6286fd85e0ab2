#include "Tarnwick/Dragging/DragRest.h"

#include <utility>

namespace tw {

DragRest::DragRest(std::shared_ptr<Executor> mainContext, std::shared_ptr<Clock> clock)
    : alarm(std::move(mainContext), std::move(clock), [this] {
          if (auto const due = std::exchange(action, nullptr))
              due();
      })
{
}

void DragRest::on(std::string const &key, std::chrono::milliseconds delay, std::function<void()> what)
{
    if (key == rested)
        return;
    rested = key;
    action = std::move(what);
    alarm.set(delay);
}

void DragRest::off()
{
    rested.clear();
    action = nullptr;
    alarm.cancel();
}

} // namespace tw
