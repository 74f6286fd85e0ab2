#pragma once

#include "TWCore/Model/FetchPriority.h"
#include "TWEngine/Browsing/ForgottenPaths.h"

#include <chrono>
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace tw {

/// Decides which listings one Browser fetches, in which order and how many at a time.
///
/// What a caller waits for begins at once, and is joined only by callers that may have an answer to a question asked
/// that early. Scans in the background have a fixed number of places. Of the scans that a moving cursor asks for, one
/// runs and the newest waits: the folders that the cursor has left are not worth a scan.
///
/// It fetches nothing itself. The owner begins the fetches that it returns, cancels those that it names, and reports
/// each end.
///
/// Threads: none of its own; used by one owner at a time.
class FetchSchedule {
public:
    using Time = std::chrono::steady_clock::time_point;

    /// Why a scan in the background is wanted.
    enum class Reason {
        revalidate, ///< a stale listing is on show
        ahead,      ///< the folders below one that is on show
        cursor,     ///< the cursor is on the folder
    };

    struct Wish {
        std::string root;
        int depth = 1;
        /// Interactive for a folder whose listing is too long for the room that a host gives to background scans.
        FetchPriority priority = FetchPriority::background;
        Reason reason = Reason::revalidate;
    };

    /// A fetch that runs.
    struct Fetch {
        std::uint64_t number = 0; ///< in the order in which fetches begin
        std::string root;
        int depth = 1;
        FetchPriority priority = FetchPriority::background;
        std::optional<Reason> reason; ///< none: callers wait for it
        Time began;
        int callers = 0; ///< that wait for it now
        bool isCancelled = false;

        /// Whether its answer may be as long as it is. A host gives a background scan less room.
        bool hasAllRoom() const { return priority == FetchPriority::interactive; }
    };

    /// What the owner does next.
    struct Orders {
        std::vector<Fetch> begin;
        std::vector<std::uint64_t> cancel;
    };

    /// Scans behind a listing on show that run at a time. A session answers in order: more would only stand in line
    /// before the scan of the folder that is on show next. One would leave the line idle for a round trip.
    static constexpr std::size_t placesBehind = 4;
    /// Scans behind a listing on show that wait for a place. Beyond it, the oldest is dropped: its folder stays stale
    /// until it is opened again.
    static constexpr std::size_t waitingBehind = 64;
    /// A background scan that has run this long is cancelled when its place is wanted: on a mount that has died it
    /// would keep the place until the mount comes back. Where a fetch cannot be cancelled, it ends as it would have.
    static constexpr std::chrono::seconds stuckAfter{3};

    /// A running fetch of `root` at that depth that a caller who asks now may wait for: not in the background, and not
    /// stale.
    Fetch const *joinable(std::string const &root, int depth) const;

    /// The number of the running fetch that already reads `root` at that depth, also if callers wait for it. The new
    /// scan is then not needed.
    std::optional<std::uint64_t> runningScan(std::string const &root, int depth) const;

    /// Counts the callers that wait for a running fetch. Ignored for a fetch that has ended.
    void join(std::uint64_t number);
    void leave(std::uint64_t number);

    /// Called before `beginAwaited`. Returns the fetches to cancel: those that may be long, and that no caller waits
    /// for any more. Their answer would be worth keeping, but not worth a wait of the caller who comes now.
    std::vector<std::uint64_t> cancelLeft();

    /// Begins a fetch that a caller waits for, whatever else runs.
    Fetch beginAwaited(std::string const &root, int depth, Time now);

    /// Begins a scan, keeps it for later, or drops it since a running fetch does the same.
    Orders want(Wish wish, Time now);

    /// Notes that a fetch has ended, and what may begin in its place. False from `isRunning` afterwards.
    Orders end(std::uint64_t number, Time now);

    bool isRunning(std::uint64_t number) const { return running.contains(number); }

    std::size_t runningCount() const noexcept { return running.size(); }

    std::size_t waitingCount() const noexcept { return behind.size() + (atCursor ? 1 : 0); }

    /// The number of the fetch that began last.
    std::uint64_t lastBegun() const noexcept { return lastNumber; }

    /// Notes that a path was forgotten: what running fetches bring of it is stale.
    void forget(std::string const &path, ForgottenPaths::Reach reach);

    bool isStale(std::string const &path, std::uint64_t fetch) const { return forgotten.isStale(path, fetch); }

    /// How often a path was forgotten.
    std::uint64_t forgettings() const noexcept { return forgotten.changes(); }

    /// Forgets all fetches. What they bring afterwards is not wanted.
    void clear();

private:
    enum class Lane { behind, cursor };

    bool isCovered(Wish const &wish) const;
    void keep(Wish wish);
    Fetch const &add(Fetch fetch);
    Orders fillPlaces(Time now);
    void fill(Lane lane, std::size_t places, Time now, Orders &orders);
    bool isStartable(Wish const &wish) const;
    bool hasStartable(Lane lane) const;
    std::optional<Wish> takeNext(Lane lane);

    std::map<std::uint64_t, Fetch> running; ///< by number
    std::deque<Wish> behind;                ///< the oldest first
    std::optional<Wish> atCursor;
    ForgottenPaths forgotten;
    std::uint64_t lastNumber = 0;
};

} // namespace tw
