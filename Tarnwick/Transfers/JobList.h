#pragma once

#include "Tarnwick/Transfers/Job.h"

#include <functional>
#include <memory>
#include <vector>

namespace tw {

/// All work under way that the user is shown, in the order of its beginning: what the sheets, the strip, quitting and
/// the machine's sleep depend on.
///
/// Threads: main context only.
/// Lifetime: shared; work that is under way keeps it.
class JobList {
public:
    using Now = std::function<Job::Time()>;

    explicit JobList(Now clock = &std::chrono::steady_clock::now) : now(std::move(clock)) {}

    std::shared_ptr<Job> begin(std::string title, std::function<void()> onCancel);

    /// The work is no longer under way.
    void end(std::shared_ptr<Job> const &work);

    void update(Job &work, ProgressState const &state) { work.update(now(), state); }

    Job::Look lookAt(Job &work) const { return work.lookAt(now()); }

    std::chrono::nanoseconds ageOf(Job const &work) const { return now() - work.startedAt; }

    /// Where it is to be shown from now on.
    void move(std::shared_ptr<Job> const &work, Job::Place place);

    std::vector<std::shared_ptr<Job>> const &underWay() const noexcept { return works; }

    bool isUnderWay(Job const &work) const;

    std::vector<std::shared_ptr<Job>> inBackground() const;

    void cancelAll() const;

    /// Called when work begins, ends or moves. Observers live as long as the list.
    void observe(std::function<void()> observer) { observers.push_back(std::move(observer)); }

    struct End {
        std::string title;
        std::string conclusion;
        std::chrono::nanoseconds duration;
    };

    /// Called when work has ended, if it said how.
    std::function<void(End const &)> onEnd;

private:
    void changed() const;

    Now const now;
    std::vector<std::shared_ptr<Job>> works;
    std::vector<std::function<void()>> observers;
};

} // namespace tw
