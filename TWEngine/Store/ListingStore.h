#pragma once

#include "TWCore/Async/Clock.h"
#include "TWEngine/Browsing/PersistentListings.h"
#include "TWEngine/Runtime/Strand.h"
#include "TWEngine/Runtime/WorkerPool.h"

#include <chrono>
#include <cstdint>
#include <memory>

namespace tw {

class ListingDatabase;

/// Keeps listings across restarts, in one SQLite database for all connections, so that a folder that was visited last
/// week is on screen before its host has been reached.
///
/// Threads: serialised on a strand of its own; every operation may be called from anywhere. The strand stands on the
/// pool's interactive threads, since its calls block and a person waits for `load`: it queues behind no scan of the
/// background, and never behind all of a `trim`, which lets others go first again and again.
/// Lifetime: shared. Closing may write, so `close` is awaited before the last reference goes.
/// Cancellation: an operation that has begun is finished, but for `trim`, which stops at its next turn.
/// Errors: none, of any operation. A full disk, a lock that others hold or a damaged file means that a listing is not
/// found or not remembered. A file that proves damaged is not used any more, and the next start makes a new one.
class ListingStore final : public PersistentListings, public std::enable_shared_from_this<ListingStore> {
public:
    struct Limits {
        std::int64_t maxBytes = 200 << 20; ///< of blobs, held by `trim`
        std::chrono::duration<double> maxAge = std::chrono::days(7);
    };

    struct Statistics {
        std::int64_t hits = 0; ///< of `load`
        std::int64_t misses = 0;
        std::int64_t rows = 0;
        std::int64_t bytes = 0; ///< of blobs
    };

    /// The store in that folder, which is made if need be and is then for its user only. Null if it cannot be opened.
    ///
    /// Blocks for some milliseconds, and for less than two seconds whatever other processes do.
    static std::shared_ptr<ListingStore> create(WorkerPool const &workers, std::shared_ptr<Clock> clock,
                                                std::string const &directory, Limits limits);

    ~ListingStore() override;

    /// The stored listing, if it is not older than `maxAge`.
    Task<std::optional<DirectorySnapshot>> load(std::string provider, std::string path) override;

    Task<void> save(std::string provider, Listings listings) override;
    Task<void> remove(std::string provider, std::string path) override;
    Task<void> removeTree(std::string provider, std::string path) override;
    Task<void> removeAll(std::string provider);

    /// Deletes what is too old, and of the rest the oldest until it fits.
    Task<void> trim();

    Task<Statistics> statistics();

    /// Closes the database. Everything that is asked later does nothing.
    Task<void> close();

private:
    ListingStore(Strand ground, std::shared_ptr<Clock> time, Limits bounds, std::unique_ptr<ListingDatabase> opened);

    static Task<void> trimHere(std::shared_ptr<ListingStore> self);

    /// Runs `use(ListingDatabase &)` on the strand, if there is a database.
    template <class Use>
    Task<std::invoke_result_t<Use, ListingDatabase &>> withDatabase(Use use);

    /// The same, for one who is on the strand.
    template <class Use>
    std::invoke_result_t<Use, ListingDatabase &> useDatabase(Use use);

    // Constant after construction.
    Strand const strand;
    std::shared_ptr<Clock> const clock;
    Limits const limits;

    // On the strand.
    std::unique_ptr<ListingDatabase> database; ///< null once it is closed or found damaged
    std::int64_t hits = 0;
    std::int64_t misses = 0;
};

} // namespace tw
