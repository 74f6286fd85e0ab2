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
/// Threads: serialised on a strand of its own; every operation may be called from anywhere. The strand runs on
/// interactive threads, since its calls block and a person waits for `load`. A `load` waits for one turn of a `trim`
/// at most.
/// Lifetime: shared. Closing may write, so `close` is awaited before the last reference goes.
/// Cancellation: an operation that has started is finished, except `trim`, which stops at its next turn.
/// Errors: none. On a full disk or under a lock of another process, a listing is not found or not remembered. A damaged
/// file is deleted and made anew.
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

    /// Opens the store in that folder, which only its user may enter; makes the folder if it is missing. Null if the
    /// store cannot be opened.
    ///
    /// Blocks for some milliseconds, and for less than two seconds if another process holds a lock.
    static std::shared_ptr<ListingStore> create(WorkerPool const &workers, std::shared_ptr<Clock> clock,
                                                std::string const &directory, Limits limits);

    ~ListingStore() override;

    /// The stored listing, if it is not older than `maxAge`.
    Task<std::optional<DirectorySnapshot>> load(std::string provider, std::string path) override;

    Task<void> save(std::string provider, Listings listings) override;
    Task<void> remove(std::string provider, std::string path) override;
    Task<void> removeTree(std::string provider, std::string path) override;
    Task<void> removeAll(std::string provider);

    /// Deletes the rows that are older than `maxAge`, and then the oldest rows until the rest fits into `maxBytes`.
    Task<void> trim();

    Task<Statistics> statistics();

    /// Closes the database. Later operations do nothing.
    Task<void> close();

private:
    ListingStore(Strand ground, std::shared_ptr<Clock> time, Limits bounds, std::unique_ptr<ListingDatabase> opened);

    static Task<void> trimHere(std::shared_ptr<ListingStore> self);

    /// Runs `use(ListingDatabase &)` on the strand, if there is a database.
    template <class Use>
    Task<std::invoke_result_t<Use, ListingDatabase &>> withDatabase(Use use);

    /// The same for a caller on the strand. A database that `use` finds damaged is replaced.
    template <class Use>
    std::invoke_result_t<Use, ListingDatabase &> useDatabase(Use use);

    // Constant after construction.
    Strand const strand;
    std::shared_ptr<Clock> const clock;
    Limits const limits;

    // On the strand.
    std::unique_ptr<ListingDatabase> database; ///< null after `close`, or if a damaged file could not be replaced
    std::int64_t hits = 0;
    std::int64_t misses = 0;
};

} // namespace tw
