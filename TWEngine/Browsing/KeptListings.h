#pragma once

#include "TWCore/Async/Clock.h"
#include "TWEngine/Browsing/PersistentListings.h"
#include "TWEngine/Browsing/RecentMap.h"

#include <chrono>

namespace tw {

/// The listings of one Browser that outlive the process. Without a store, nothing is kept.
///
/// Saving and forgetting are begun in the order of the calls, and not waited for.
///
/// Threads: none of its own; used on the executor that it was made with.
class KeptListings {
public:
    /// Scans whose last saving is remembered. A forgotten one is saved once more than need be.
    static constexpr std::size_t rememberedScans = 1024;

    /// `identity` is the provider's `persistentCacheIdentity`; without one, `store` is not used.
    KeptListings(std::shared_ptr<PersistentListings> store, std::optional<std::string> identity,
                 std::shared_ptr<Executor> executor, std::shared_ptr<Clock> clock);

    bool hasStore() const noexcept { return store != nullptr; }

    /// What is kept of `path`. Only with a store.
    Task<std::optional<DirectorySnapshot>> load(std::string path) const;

    /// Saves what the scan of `root` at that depth brought. If nothing `changed`, at most once in `interval`.
    void save(std::string const &root, int depth, Listings listings, bool changed,
              std::chrono::duration<double> interval);

    /// Forgets `path`. Its next scan is saved at once.
    void forget(std::string const &path);

    /// Forgets `path` and all below it.
    void forgetTree(std::string const &path);

private:
    // Constant after construction.
    std::shared_ptr<PersistentListings> const store;
    std::string const identity;
    std::shared_ptr<Executor> const executor;
    std::shared_ptr<Clock> const clock;

    RecentMap<Timestamp> lastSaved{rememberedScans}; ///< by root, a NUL and the depth
};

} // namespace tw
