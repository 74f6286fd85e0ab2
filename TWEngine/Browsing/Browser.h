#pragma once

#include "TWCore/Async/Clock.h"
#include "TWCore/Provider/FileSystemProvider.h"
#include "TWCore/Provider/FileSystemWriter.h"
#include "TWEngine/Browsing/ListingCache.h"
#include "TWEngine/Browsing/PersistentListings.h"
#include "TWEngine/Runtime/SharedTask.h"
#include "TWEngine/Runtime/Strand.h"
#include "TWEngine/Runtime/UpdateStream.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace tw {

/// What `Browser::open` answers.
struct OpenResult {
    DirectorySnapshot snapshot;
    bool isStale = false; ///< a newer one is being fetched, and comes through `updates` if it differs
    bool wasCold = false; ///< it had to be fetched while the caller waited
};

/// Thrown by `Browser::open`.
class BrowserError : public std::exception {
public:
    class NotADirectory;
};

/// The provider answered, but without the path that was asked for.
class BrowserError::NotADirectory final : public BrowserError {
public:
    explicit NotADirectory(std::string where) : path(std::move(where)), description(path + " is not a directory") {}

    char const *what() const noexcept override { return description.c_str(); }

    std::string const path;

private:
    std::string const description;
};

/// Answers for the listings of one connection: from memory, from the store, or from the provider.
///
/// Stale while revalidating: a listing younger than the time to live is served as fresh, an older one at once and
/// marked stale, with a refetch behind it. And scanning ahead: one fetch of a host brings several levels of the tree,
/// so that the folders entered next are there already; a scan that proves slow or is cut short is made less deep.
///
/// Threads: serialised on its own strand; every operation may be called from anywhere.
/// Lifetime: shared; a scan in flight does not keep it alive.
/// Errors: what the provider throws reaches everyone who waits in `open` for that fetch, unchanged; a background scan
/// swallows it, and the cached listing stays.
class Browser : public std::enable_shared_from_this<Browser> {
public:
    struct Config {
        int interactiveDepth = 1; ///< of a fetch that a person waits for
        int prefetchDepth = 3;    ///< of a scan behind the user's back
        std::chrono::duration<double> ttl{30.0};
        std::size_t maxCachedBytes = 128U << 20U; ///< of name storage, the dominating cost
        std::chrono::duration<double> slowFetchThreshold{1.5};
        /// Rewriting an unchanged listing into the store more often than this buys nothing.
        std::chrono::duration<double> persistInterval{60.0};
    };

    struct Stats {
        int opens = 0;
        int cacheHits = 0;
        int coldFetches = 0;
        int diskHits = 0;
        int prefetches = 0;

        double hitRate() const { return opens == 0 ? 0.0 : static_cast<double>(cacheHits) / opens; }
    };

    /// What a Browser is made with beside its provider. Without a `persistentCacheIdentity` of the provider, the store
    /// is not used.
    struct Collaborators {
        Strand strand;
        std::shared_ptr<Clock> clock;
        std::shared_ptr<PersistentListings> store; ///< may be null
    };

    Browser(std::shared_ptr<FileSystemProvider> provider, Collaborators collaborators, Config config);

    /// The listing of `path`: fresh, or stale with a newer one on its way through `updates`.
    /// Throws BrowserError::NotADirectory when the provider answered without it.
    Task<OpenResult> open(std::string path);

    /// What memory holds of `path`, without a fetch or any other effect.
    Task<std::optional<DirectorySnapshot>> cached(std::string path);

    /// What memory or the store would give for `path`, fresh or not; without a fetch, and for somebody who wants to
    /// know whether there is something to show before the provider is up.
    Task<std::optional<DirectorySnapshot>> remembered(std::string path);

    /// Starts a revalidation now, whatever the age. Ends without waiting for it.
    Task<void> refresh(std::string path);

    /// Starts a background scan unless `path` is fresh in memory. Ends without waiting for it.
    Task<void> prefetch(std::string path);

    /// Forgets `path`, and what was scanned along with it, in memory, and `path` in the store.
    Task<void> invalidate(std::string path);

    /// Empties the memory. Running fetches and the store stay as they are.
    Task<void> invalidateAll();

    /// Creates one directory, and forgets what was known of it and of its parent.
    ///
    /// This and the other writes go through the provider's FileSystemWriter. Afterwards, also after a failure, since
    /// part may have been done, they forget in memory and in the store: the paths, all that is below them, and their
    /// parents. A listing that began before the write ended does not bring any of it back. Throws what the writer
    /// throws, and FileOperationError::Unsupported where there is no writer.
    Task<void> makeDirectory(std::string path);

    /// Deletes each of the paths.
    Task<void> remove(std::vector<std::string> paths);

    /// Renames, or moves within the provider.
    Task<void> rename(std::string from, std::string to);

    /// Every listing that a later fetch finds to differ from the one it replaces, from now on until either side ends.
    Task<UpdateStream<DirectorySnapshot>> updates();

    /// Brings the provider up. Throws what it throws.
    Task<void> connect();

    /// Stops all fetches, ends all update streams and takes the provider down. Cached listings stay.
    Task<void> shutdown();

    Task<Stats> stats();

    std::string providerName() const { return provider->displayName(); }

    std::shared_ptr<FileSystemProvider> const &providerRef() const noexcept { return provider; }

    /// The provider as one that can change files, or null.
    std::shared_ptr<FileSystemWriter> writer() const { return std::dynamic_pointer_cast<FileSystemWriter>(provider); }

private:
    /// Why a fetch starts.
    enum class Reason { cold, revalidate, prefetch };

    /// One scan of one root at one depth; at most one of each runs at a time.
    struct Scan {
        std::string key; ///< the root, a NUL, the depth
        std::string root;
        int depth = 1;
        FetchPriority priority = FetchPriority::background;
        std::uint64_t number = 0; ///< in the order in which they begin
        Reason reason = Reason::prefetch;

        /// A host gives a scan behind the user's back less room for its answer. What a person waits for is taken as it
        /// comes.
        bool hasAllRoom() const { return priority == FetchPriority::interactive; }
    };

    struct Running {
        SharedTask<bool> task;
        std::uint64_t number;
    };

    /// The public operations, on the strand.
    static Task<OpenResult> openHere(std::shared_ptr<Browser> self, std::string path);
    static Task<std::optional<DirectorySnapshot>> rememberedHere(std::shared_ptr<Browser> self, std::string path);
    static Task<UpdateStream<DirectorySnapshot>> updatesHere(std::shared_ptr<Browser> self);
    static Task<void> shutdownHere(std::shared_ptr<Browser> self);
    void invalidateHere(std::string const &path);

    using Write = std::function<Task<void>(FileSystemWriter &)>;
    static Task<void> writeHere(std::shared_ptr<Browser> self, Write write, std::vector<std::string> touched);
    void forgetTree(std::string const &path);

    /// Runs a plain function on the strand.
    template <class Function>
    Task<std::invoke_result_t<Function>> onOwnStrand(Function function);

    std::optional<OpenResult> openWarm(std::string const &path);
    OpenResult openStored(DirectorySnapshot snapshot, std::string const &path);
    void ensureHorizon(std::string const &path);
    void startFetch(std::string const &root, int depth, Reason reason);
    SharedTask<bool> fetchToAwait(std::string const &root);
    SharedTask<bool> launch(std::string const &root, int depth, Reason reason, FetchPriority priority);
    bool isOvertaken(std::string const &path, std::uint64_t number) const;
    /// Whether it told what is to be known of its root. False: what it brought is not good enough, or too old, and a
    /// further fetch is not.
    static Task<bool> performFetch(std::weak_ptr<Browser> weak, Scan scan);
    void takeIn(Scan const &scan, Listings listings, std::chrono::duration<double> elapsed);
    void askForLess(Scan const &scan);
    void forgetScan(Scan const &scan);
    void persist(Scan const &scan, Listings listings, bool changed);
    void publish(DirectorySnapshot const &snapshot) const;

    int horizon(std::string const &path) const;
    double ageOf(ListingCache::Group const &group) const;

    // Constant after construction.
    std::shared_ptr<FileSystemProvider> const provider;
    Strand const strand;
    std::shared_ptr<Clock> const clock;
    std::optional<std::string> const persistIdentity;
    std::shared_ptr<PersistentListings> const store;
    Config const config;

    // On the strand.
    ListingCache cache;
    std::unordered_map<std::string, Timestamp> lastPersist;
    std::unordered_map<std::string, Running> inFlight;
    std::vector<Running> overtaken; ///< running too, but nobody joins them
    std::unordered_map<std::string, int> depthOverride;
    /// Folders of which a scan behind the user's back brings a part only, even one level of them.
    std::unordered_set<std::string> wideFolders;
    /// The last scan that had begun when a path was invalidated, while any of those still runs: what it brings may be
    /// what was to be forgotten.
    std::unordered_map<std::string, std::uint64_t> invalidatedAt;
    /// The same of paths that were forgotten together with all below them.
    std::unordered_map<std::string, std::uint64_t> treeForgottenAt;
    std::uint64_t forgettings = 0; ///< how often anything was forgotten
    std::unordered_map<std::uint64_t, UpdateStream<DirectorySnapshot>::Sender> updateSinks;
    std::uint64_t lastNumber = 0;
    Stats counters;
};

} // namespace tw
