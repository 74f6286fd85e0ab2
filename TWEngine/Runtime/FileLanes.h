#pragma once

#include "TWEngine/Runtime/BlockingCall.h"
#include "TWEngine/Runtime/FileDescriptor.h"
#include "TWEngine/Runtime/HelperThreads.h"
#include "TWEngine/Runtime/MountTable.h"
#include "TWEngine/Runtime/ThreadLane.h"

#include <map>
#include <optional>

namespace tw {

/// Threads for calls on file systems of this machine: a lane of its own for each mount, since a call on a dead mount
/// does not return. A dead mount blocks only those who look at it.
///
/// The lane of a path is found from the kernel's table of mounts, which never blocks. A link can lead to another mount,
/// so the links of a path are followed first: each is read in the lane of the mount that it lies on, and the work then
/// runs in the lane of the mount at which the path ends. A link that is replaced between the two can still lead a call
/// out of its lane; that costs the lane one of its threads.
///
/// Threads: all operations may be called from anywhere.
/// Lifetime: the destructor runs what is queued and joins. It must not be called on a thread of a lane.
class FileLanes {
public:
    struct Limits {
        /// One reads a large folder while the other one serves the other pane.
        std::size_t threadsPerLane = 2; ///< of each priority
        /// Each lane at its worst holds four threads that hang. Further mounts share one lane.
        std::size_t lanes = 32;
        std::chrono::milliseconds idleTime = std::chrono::seconds(10); ///< after which a thread ends
        /// Helpers of listings at a time, so that some mounts that die in the middle of a large listing cost no more.
        std::ptrdiff_t helpers = 64;
    };

    /// Whether a path that ends with a link means what the link leads to, or the link itself.
    enum class LastLink { follow, keep };

    FileLanes() : FileLanes(Limits{}) {}

    /// `mountInfo` is in the format of /proc/self/mountinfo.
    explicit FileLanes(Limits bounds, char const *mountInfo = "/proc/self/mountinfo");
    ~FileLanes();

    FileLanes(FileLanes const &) = delete;
    FileLanes &operator=(FileLanes const &) = delete;

    /// Runs `work(place)` in the lane of `path`: a `blockingCall`. `place` is `path` without links, for questions to
    /// the table of mounts. A relative path runs in the lane of mounts that are not known.
    template <class Function>
    Task<std::invoke_result_t<Function, std::string const &>> run(std::string path, LastLink last,
                                                                  WorkPriority priority, Function work)
    {
        using Result = std::invoke_result_t<Function, std::string const &>;
        return runAtItsPlace<Result>(
            this, std::move(path), last, priority,
            std::make_shared<std::move_only_function<Result(std::string const &)>>(std::move(work)));
    }

    /// Runs `work()` in a lane for what touches the mounts of both paths: if one of them is dead, the lane of the other
    /// one stays free.
    template <class Function>
    Task<std::invoke_result_t<Function>> runBetween(std::string from, std::string to, LastLink last,
                                                    WorkPriority priority, Function work)
    {
        using Result = std::invoke_result_t<Function>;
        return runAtBoth<Result>(this, std::move(from), std::move(to), last, priority,
                                 std::move_only_function<Result()>(std::move(work)));
    }

    /// The mounts as they are now. Does not block.
    std::shared_ptr<MountTable const> mounts();

    /// Whether work for this mount would wait for other work, as it does when the mount is dead.
    bool isFull(MountTable::MountId mount, WorkPriority priority);

    HelperThreads::Budget &helpers() noexcept { return helperBudget; }

    /// Blocks until nothing is queued or running.
    void waitUntilIdle();

    /// How many pieces of work were posted so far.
    std::uint64_t posted();

private:
    /// The mounts that work touches: twice the same for one.
    using Key = std::pair<MountTable::MountId, MountTable::MountId>;

    struct Lane {
        std::shared_ptr<ThreadLane> interactive;
        std::shared_ptr<ThreadLane> background;

        std::shared_ptr<ThreadLane> const &of(WorkPriority priority) const
        {
            return priority == WorkPriority::interactive ? interactive : background;
        }
    };

    /// How often a path may lead from one mount to another one: as many links as the system itself follows.
    static constexpr int mostLinks = 40;

    /// What a walk to the place of a path came to.
    template <class Result>
    struct Arrival {
        std::string place;
        std::optional<std::conditional_t<std::is_void_v<Result>, Done, Result>> result; ///< none: `place` is elsewhere
    };

    template <class Result>
    static Arrival<Result> walk(MountTable const &table, std::string const &path, LastLink last, bool mayLeave,
                                std::move_only_function<Result(std::string const &)> &work)
    {
        auto place = followLinks(table, path, last);
        if (mayLeave && table.mountOf(place) != table.mountOf(path))
            return {std::move(place), std::nullopt};
        if constexpr (std::is_void_v<Result>) {
            work(place);
            return {std::move(place), Done()};
        } else {
            auto result = work(place);
            return {std::move(place), std::move(result)};
        }
    }

    template <class Result>
    static Task<Result> runAtItsPlace(FileLanes *self, std::string path, LastLink last, WorkPriority priority,
                                      std::shared_ptr<std::move_only_function<Result(std::string const &)>> work)
    {
        for (int moves = 0;; ++moves) {
            auto const table = self->mounts();
            auto const mount = table->mountOf(path);
            // After too many moves the system's own walk says what is wrong.
            auto arrival = co_await blockingCall<Arrival<Result>>(
                Post{self, {mount, mount}, priority}, [table, path, last, mayLeave = moves < mostLinks, work] {
                    return walk<Result>(*table, path, last, mayLeave, *work);
                });
            if (!arrival.result) {
                path = std::move(arrival.place);
                continue;
            }
            if constexpr (std::is_void_v<Result>)
                co_return;
            else
                co_return std::move(*arrival.result);
        }
    }

    template <class Result>
    static Task<Result> runAtBoth(FileLanes *self, std::string from, std::string to, LastLink last,
                                  WorkPriority priority, std::move_only_function<Result()> work)
    {
        auto const first = co_await self->placeOf(std::move(from), last, priority);
        auto const second = co_await self->placeOf(std::move(to), last, priority);
        auto const table = self->mounts();
        auto const [low, high] = std::minmax({table->mountOf(first), table->mountOf(second)});
        if constexpr (std::is_void_v<Result>) {
            co_await blockingCall<Result>(Post{self, {low, high}, priority}, std::move(work));
        } else {
            auto result = co_await blockingCall<Result>(Post{self, {low, high}, priority}, std::move(work));
            co_return result;
        }
    }

    struct Post {
        FileLanes *lanes;
        Key key;
        WorkPriority priority;

        void operator()(Work work) const { lanes->post(key, priority, std::move(work)); }
    };

    /// `path` without its links, up to the first place on another mount. Reads the links that lie on the path's mount.
    static std::string followLinks(MountTable const &table, std::string path, LastLink last);

    Task<std::string> placeOf(std::string path, LastLink last, WorkPriority priority);

    void post(Key key, WorkPriority priority, Work work);

    // Called with the mutex held.
    Lane &laneOf(Key key);
    void removeLanesAtRest();
    bool haveMountsChanged() const;

    std::vector<Lane> allLanes();

    // Constant after construction.
    Limits const limits;
    FileDescriptor const mountInfo;

    HelperThreads::Budget helperBudget;

    std::mutex mutex;
    // Under the mutex.
    std::map<Key, Lane> lanes;
    std::shared_ptr<MountTable const> table;
    std::uint64_t postedCount = 0;
};

} // namespace tw
