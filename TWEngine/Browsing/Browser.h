#pragma once

#include "TWCore/Async/Clock.h"
#include "TWCore/Provider/CommandHost.h"
#include "TWCore/Provider/FileSystemProvider.h"
#include "TWCore/Provider/FileSystemWriter.h"
#include "TWEngine/Browsing/FetchSchedule.h"
#include "TWEngine/Browsing/KeptListings.h"
#include "TWEngine/Browsing/ListingBudget.h"
#include "TWEngine/Browsing/RunningFetch.h"
#include "TWEngine/Browsing/ScanDepths.h"
#include "TWEngine/Runtime/Strand.h"
#include "TWEngine/Runtime/UpdateFanOut.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace tw {

/// What `Browser::open` answers.
struct OpenResult {
    DirectorySnapshot snapshot;
    bool isStale = false; ///< a newer listing is being fetched, and comes through `updates` if it differs
    bool wasCold = false; ///< the listing was fetched while the caller waited
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
/// Errors: what the provider throws reaches every caller that waits in `open` for that fetch, unchanged. A failed scan
/// in the background is dropped, and the cached listing stays.
class Browser : public std::enable_shared_from_this<Browser> {
public:
    struct Config {
        int interactiveDepth = 1; ///< of a fetch that a person waits for
        int prefetchDepth = 3;    ///< of a scan in the background
        std::chrono::duration<double> ttl{30.0};
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
        std::shared_ptr<PersistentListings> store = {}; ///< may be null
        /// Shared with the other Browsers. Null: a budget of its own.
        std::shared_ptr<ListingBudget> memory = {};
    };

    Browser(std::shared_ptr<FileSystemProvider> provider, Collaborators collaborators, Config config);

    /// The listing of `path`: fresh, or stale with a newer one on its way through `updates`.
    /// Throws BrowserError::NotADirectory when the provider answered without it.
    ///
    /// If a cold listing takes long, `onPart` gets parts of it meanwhile, on the strand. Parts are not cached.
    /// Cancellation: the fetch goes on for other callers. One that all its callers have left goes on too, until the
    /// next fetch is awaited.
    Task<OpenResult> open(std::string path, PartTaker onPart = {});

    /// What memory holds of `path`, without a fetch or any other effect.
    Task<std::optional<DirectorySnapshot>> cached(std::string path);

    /// What memory or the store has of `path`, fresh or not, without a fetch: whether there is something to show before
    /// the provider is up.
    Task<std::optional<DirectorySnapshot>> remembered(std::string path);

    /// Starts a revalidation now, whatever the age. Ends without waiting for it.
    Task<void> refresh(std::string path);

    /// Fetches `path` behind what is on show, and ends when that has been done. A fetch that began before the call does
    /// not count. If all places for such fetches are taken, ends without waiting. Throws what the provider throws.
    Task<void> revalidate(std::string path);

    /// Starts a background scan unless `path` is fresh in memory: the cursor is on it. Ends without waiting for it. A
    /// later call supersedes the scan of an earlier one that has not begun.
    Task<void> prefetch(std::string path);

    /// Forgets `path` and fetches it anew. One fetch of a path runs at a time: callers that come meanwhile wait for its
    /// end, and share the next. `onPart` as in `open`.
    Task<OpenResult> reread(std::string path, PartTaker onPart = {});

    /// Forgets `path`, and what was scanned along with it, in memory, and `path` in the store.
    Task<void> invalidate(std::string path);

    /// Empties the memory. Running fetches and the store stay as they are.
    Task<void> invalidateAll();

    /// The most paths that a write forgets one by one; beyond, all below their folders is forgotten.
    static constexpr std::size_t mostForgottenOneByOne = 256;

    /// Creates one directory, and forgets what was known of it and of its parent.
    ///
    /// This and the other writes go through the provider's FileSystemWriter. Afterwards, also after a failure, since
    /// part may have been done, they forget in memory and in the store: the paths, all that is below them, and their
    /// parents. A listing that began before the write ended does not bring any of it back. Throws what the writer
    /// throws, and FileOperationError::Unsupported where there is no writer.
    Task<void> makeDirectory(std::string path);

    /// Deletes each of the paths.
    Task<void> remove(std::vector<std::string> paths);

    /// Deletes each of the paths, and nothing can bring them back.
    Task<void> removePermanently(std::vector<std::string> paths, LockedFolders locked = LockedFolders::stay);

    /// Deletes a folder if its listing is empty, and fails if it is not.
    Task<void> removeEmptyFolder(std::string path);

    /// Renames, or moves within the provider.
    Task<void> rename(std::string from, std::string to);
    Task<void> moveAll(std::vector<FileSystemWriter::Move> moves, FileSystemWriter::Existing existing);

    /// Forgets as after a write what something else has written, or deleted, under `names` in `folder`: a transfer.
    Task<void> wroteInto(std::string folder, std::vector<std::string> names);

    /// See FileSystemWriter; these change nothing. Throw as the writes do.
    Task<FolderFacts> factsAbout(std::string folder, std::vector<std::string> names);
    Task<Survey> survey(std::string folder, std::vector<std::string> names,
                        Survey::Detail detail = Survey::Detail::sums);
    Task<void> sync(std::string folder);

    /// Every listing that a later fetch finds to differ from the one it replaces, from now on until either side ends.
    Task<UpdateStream<DirectorySnapshot>> updates();

    /// Brings the provider up. Throws what it throws.
    Task<void> connect();

    /// Stops all fetches, ends all update streams and takes the provider down. Cached listings stay.
    Task<void> shutdown();

    Task<Stats> stats();

    std::string providerName() const { return provider->displayName(); }

    std::shared_ptr<FileSystemProvider> const &providerRef() const noexcept { return provider; }

    /// For an operation that gives its places only so much time.
    std::shared_ptr<Clock> const &clockRef() const noexcept { return clock; }

    /// The provider as one that can change files, or null.
    std::shared_ptr<FileSystemWriter> writer() const { return std::dynamic_pointer_cast<FileSystemWriter>(provider); }

    /// The provider as a host that runs commands, or null.
    std::shared_ptr<CommandHost> host() const { return std::dynamic_pointer_cast<CommandHost>(provider); }

private:
    using Fetch = FetchSchedule::Fetch;
    using Reason = FetchSchedule::Reason;

    class Caller;

    /// The public operations, on the strand.
    static Task<OpenResult> openHere(std::shared_ptr<Browser> self, std::string path, PartTaker onPart);
    static Task<void> revalidateHere(std::shared_ptr<Browser> self, std::string path);
    static Task<OpenResult> rereadHere(std::shared_ptr<Browser> self, std::string path, PartTaker onPart);
    static Task<std::optional<OpenResult>> awaitFetch(std::shared_ptr<Browser> self, std::string path,
                                                      PartTaker onPart);
    static Task<std::optional<DirectorySnapshot>> rememberedHere(std::shared_ptr<Browser> self, std::string path);
    static Task<void> shutdownHere(std::shared_ptr<Browser> self);
    void forget(std::string const &path, ForgottenPaths::Reach reach);

    void forgetWritten(std::vector<std::string> const &touched);
    std::shared_ptr<FileSystemWriter> requireWriter() const;

    template <class T>
    static Task<T> asking(std::shared_ptr<Browser> self, std::function<Task<T>(FileSystemWriter &)> question);

    using Write = std::function<Task<void>(FileSystemWriter &)>;
    static Task<void> writeHere(std::shared_ptr<Browser> self, Write write, std::vector<std::string> touched);

    /// Runs a plain function on the strand.
    template <class Function>
    Task<std::invoke_result_t<Function>> onOwnStrand(Function function);

    std::optional<OpenResult> openWarm(std::string const &path);
    OpenResult openStored(DirectorySnapshot snapshot, std::string const &path);
    /// What was fetched for the caller. Nothing if it was forgotten before the caller went on, and is fetched again.
    std::optional<OpenResult> openFetched(std::string const &path, FetchEnd end);
    void ensureHorizon(std::string const &path);

    void scanBehind(std::string const &root, int depth, Reason reason);
    std::uint64_t fetchToAwait(std::string const &root);
    Task<Listings> ask(Fetch const &fetch);
    void carryOut(FetchSchedule::Orders const &orders);
    void begin(Fetch const &fetch);
    static Task<FetchEnd> performFetch(std::weak_ptr<Browser> weak, Fetch fetch);
    FetchEnd takeIn(Fetch const &fetch, Listings listings, std::chrono::duration<double> elapsed);
    void end(Fetch const &fetch);
    void announceArrivals(Listings const &taken) const;
    void askForLess(Fetch const &fetch);

    int interactiveDepth() const;
    int horizon(std::string const &path) const;
    double ageOf(ListingCache::Group const &group) const;

    // Constant after construction.
    std::shared_ptr<FileSystemProvider> const provider;
    Strand const strand;
    std::shared_ptr<Clock> const clock;
    std::shared_ptr<ListingBudget> const memory;
    std::shared_ptr<ListingCache> const cache; ///< used on the strand only
    Config const config;

    // On the strand.
    KeptListings kept;
    FetchSchedule schedule;
    std::unordered_map<std::uint64_t, RunningFetch> running; ///< by the number of the fetch
    ScanDepths depths;
    UpdateFanOut<DirectorySnapshot> subscribers;
    Stats counters;
};

} // namespace tw
