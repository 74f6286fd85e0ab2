#include "Tarnwick/Panes/Alarm.h"

namespace tw {

Alarm::Alarm(std::shared_ptr<Executor> mainContext, std::shared_ptr<Clock> clock, std::function<void()> what)
    : executor(std::move(mainContext)),
      time(std::move(clock)),
      action(std::make_shared<std::function<void()>>(std::move(what)))
{
}

void Alarm::set(std::chrono::nanoseconds delay)
{
    cancel();
    waiting = std::stop_source();
    spawn({executor, waiting.get_token()}, ring(action, time, delay));
}

void Alarm::cancel()
{
    waiting.request_stop();
}

Task<void> Alarm::ring(std::weak_ptr<std::function<void()>> weak, std::shared_ptr<Clock> clock,
                       std::chrono::nanoseconds delay)
{
    co_await clock->sleep(delay);
    auto const context = co_await currentContext();
    // It can have been called off after the clock rang and before this goes on.
    auto const wanted = weak.lock();
    if (wanted && !context.stop.stop_requested())
        (*wanted)();
}

} // namespace tw
