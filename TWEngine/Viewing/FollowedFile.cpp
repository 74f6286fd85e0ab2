#include "TWEngine/Viewing/FollowedFile.h"

#include "TWCore/Async/Outcome.h"
#include "TWCore/Model/PollInterval.h"
#include "TWEngine/Runtime/EngineRuntime.h"

namespace tw {

namespace {

using Facts = ViewedFile::Facts;

/// How often a file may be missing in a row. Whatever writes a log begins a new one within that.
constexpr int mostMisses = 5;
constexpr std::chrono::seconds pauseAfterMiss(1);

using Watch = std::shared_ptr<FolderWatch>;

Task<Watch> watchOf(EngineRuntime *engine, std::string path)
{
    auto watch = co_await engine->files().run(
        path, FileLanes::LastLink::follow, WorkPriority::background,
        [engine, path](std::string const & /*place*/) { return engine->directoryEvents().watch(path); });
    co_return watch;
}

/// Until it is worth looking again. The watch, as long as it lasts.
Task<Watch> pause(EngineRuntime *engine, Watch watch, int misses, PollInterval pace)
{
    if (watch && misses == 0) {
        auto const event = co_await watch->next();
        co_return event == FolderWatch::Event::gone ? nullptr : watch;
    }
    using Nanoseconds = std::chrono::nanoseconds;
    auto const interval = std::chrono::duration_cast<Nanoseconds>(std::chrono::duration<double>(pace.seconds()));
    co_await engine->clock()->sleep(misses > 0 ? Nanoseconds(pauseAfterMiss) : interval);
    co_return watch;
}

} // namespace

Task<Facts> FollowedFile::next(FollowedFile file, std::optional<Facts> known)
{
    auto *const engine = &file.engine;
    auto const hasEvents = file.news == News::events;
    PollInterval pace;
    Watch watch;
    int misses = 0;
    // Events that came before the watch are found by looking; a question that was just asked is not asked again.
    for (auto waits = known && !hasEvents;; waits = true) {
        if (waits)
            watch = co_await pause(engine, watch, misses, pace);
        if (hasEvents && !watch)
            watch = co_await watchOf(engine, file.path);
        auto const begin = engine->clock()->steadyNow();
        auto outcome = co_await outcomeOf(file.look());
        pace.observed(std::chrono::duration<double>(engine->clock()->steadyNow() - begin).count());
        if (outcome.value && (!known || *outcome.value != *known))
            co_return *std::move(outcome.value);
        misses = outcome.value ? 0 : misses + 1;
        if (!outcome.value && (!known || misses > mostMisses))
            std::rethrow_exception(outcome.failure);
    }
}

} // namespace tw
