#pragma once

#include "Tarnwick/Operations/ProgressState.h"
#include "Tarnwick/Transfers/TransferPace.h"

#include <functional>
#include <string>

namespace tw {

/// Some work under way, as a user is shown it.
///
/// Threads: main context only.
/// Lifetime: shared by the work's handle and the views; `JobList` knows it while it is under way.
class Job {
public:
    using Time = TransferPace::Time;

    enum class Place { sheet, background };

    /// What the views show of it.
    struct Look {
        ProgressState state;
        std::optional<double> speed = {}; ///< bytes a second; nothing if no bytes are counted
        std::optional<std::chrono::seconds> left = {};
        bool isCancelled = false; ///< and has not ended yet
    };

    Job(std::string titleOfWork, std::function<void()> whatEndsIt, Time now)
        : title(std::move(titleOfWork)), startedAt(now), onCancel(std::move(whatEndsIt))
    {
    }

    std::string const title;
    Time const startedAt;

    /// An empty item stands for the one before.
    void update(Time now, ProgressState state);

    /// How far it is by now.
    Look lookAt(Time now);

    /// Asks the work to end, once.
    void cancel();

    bool isCancelled() const noexcept { return !onCancel; }

    Place place() const noexcept { return shownAt; }

    std::string conclusion = {}; ///< how it has ended; empty until then, and for what nobody needs to hear of

private:
    friend class JobList;

    ProgressState state;
    TransferPace pace;
    std::function<void()> onCancel; ///< null once it has run
    Place shownAt = Place::sheet;   ///< the list tells its observers
};

} // namespace tw
