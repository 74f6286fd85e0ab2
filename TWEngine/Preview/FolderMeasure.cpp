#include "TWEngine/Preview/FolderMeasure.h"

#include "TWEngine/Runtime/FileLanes.h"

#include <filesystem>

namespace tw::FolderMeasure {

namespace {

namespace fs = std::filesystem;

/// A walk through the names of one folder, each with all that is below it.
struct Walk {
    fs::directory_iterator next{};
    Measure sum{.bytes = 0, .files = 0};

    bool isOver() const { return next == fs::directory_iterator(); }

    void begin(std::string const &folder)
    {
        std::error_code unreadable;
        next = fs::directory_iterator(folder, fs::directory_options::skip_permission_denied, unreadable);
    }

    /// Goes on for one step, and at least by one name.
    void goOn(std::stop_token const &stop)
    {
        auto const until = Measure::Clock::now() + step;
        std::error_code unreadable;
        do {
            if (isOver())
                return;
            if (auto const part = Measure::here(next->path().native(), stop))
                sum += *part;
            next.increment(unreadable);
        } while (!unreadable && !stop.stop_requested() && Measure::Clock::now() < until);
    }
};

Task<Measure> perform(FileLanes *lanes, std::string folder, Progress progress)
{
    auto const context = co_await currentContext();
    auto const walk = std::make_shared<Walk>();
    auto const inLane = [&](auto work) {
        return lanes->run(folder, FileLanes::LastLink::follow, WorkPriority::background, std::move(work));
    };
    co_await inLane([walk](std::string const &place) { walk->begin(place); });
    while (!walk->isOver()) {
        co_await inLane([walk, stop = context.stop](std::string const &) { walk->goOn(stop); });
        if (progress && !walk->isOver())
            progress(walk->sum);
    }
    co_return walk->sum;
}

} // namespace

Task<Measure> run(FileLanes &lanes, std::string folder, Progress progress)
{
    return perform(&lanes, std::move(folder), std::move(progress));
}

} // namespace tw::FolderMeasure
