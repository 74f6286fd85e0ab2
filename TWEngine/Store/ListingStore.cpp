#include "TWEngine/Store/ListingStore.h"

#include "TWEngine/Store/ListingDatabase.h"

namespace tw {

namespace {

Task<void> nothing()
{
    co_return;
}

} // namespace

std::shared_ptr<ListingStore> ListingStore::create(WorkerPool const &workers, std::shared_ptr<Clock> clock,
                                                   std::string const &directory, Limits limits)
{
    auto opened = ListingDatabase::open(directory);
    if (!opened)
        return nullptr;
    return std::shared_ptr<ListingStore>(new ListingStore(Strand(workers.executor(WorkPriority::interactive)),
                                                          std::move(clock), limits, std::move(opened)));
}

ListingStore::ListingStore(Strand ground, std::shared_ptr<Clock> time, Limits bounds,
                           std::unique_ptr<ListingDatabase> opened)
    : strand(std::move(ground)), clock(std::move(time)), limits(bounds), database(std::move(opened))
{
}

ListingStore::~ListingStore() = default;

template <class Use>
std::invoke_result_t<Use, ListingDatabase &> ListingStore::useDatabase(Use use)
{
    using Result = std::invoke_result_t<Use, ListingDatabase &>;
    if (!database)
        return Result();
    auto const replaceIfDamaged = [this] {
        if (database->isDamaged())
            database = ListingDatabase::replace(std::move(database));
    };
    if constexpr (std::is_void_v<Result>) {
        use(*database);
        replaceIfDamaged();
    } else {
        auto result = use(*database);
        replaceIfDamaged();
        return result;
    }
}

template <class Use>
Task<std::invoke_result_t<Use, ListingDatabase &>> ListingStore::withDatabase(Use use)
{
    // A static coroutine with arguments: the frame holds the owner and `use`, and releases them on the strand.
    static constexpr auto run = [](std::shared_ptr<ListingStore> self,
                                   Use work) -> Task<std::invoke_result_t<Use, ListingDatabase &>> {
        co_return self->useDatabase(std::move(work));
    };
    return onStrand(strand, run(shared_from_this(), std::move(use)));
}

Task<std::optional<DirectorySnapshot>> ListingStore::load(std::string provider, std::string path)
{
    return withDatabase([this, provider = std::move(provider), path = std::move(path)](ListingDatabase &listings) {
        auto loaded = listings.load(provider, path, clock->now(), limits.maxAge);
        if (loaded.isAnswered)
            ++(loaded.listing ? hits : misses);
        return std::move(loaded.listing);
    });
}

Task<void> ListingStore::save(std::string provider, Listings scanned)
{
    return withDatabase([provider = std::move(provider), scanned = std::move(scanned)](ListingDatabase &listings) {
        listings.save(provider, scanned);
    });
}

Task<void> ListingStore::remove(std::string provider, std::string path)
{
    return withDatabase([provider = std::move(provider), path = std::move(path)](ListingDatabase &listings) {
        listings.remove(provider, path);
    });
}

Task<void> ListingStore::removeTree(std::string provider, std::string path)
{
    return withDatabase([provider = std::move(provider), path = std::move(path)](ListingDatabase &listings) {
        listings.removeTree(provider, path);
    });
}

Task<void> ListingStore::removeAll(std::string provider)
{
    return withDatabase([provider = std::move(provider)](ListingDatabase &listings) { listings.removeAll(provider); });
}

Task<void> ListingStore::trim()
{
    return onStrand(strand, trimHere(shared_from_this()));
}

Task<void> ListingStore::trimHere(std::shared_ptr<ListingStore> self)
{
    auto const context = co_await currentContext();
    auto const now = std::chrono::floor<std::chrono::seconds>(self->clock->now()).time_since_epoch();
    auto const maxAge = std::chrono::duration_cast<std::chrono::seconds>(self->limits.maxAge);
    auto const tooOld = [before = (now - maxAge).count()](ListingDatabase &listings) {
        return listings.removeSomeBefore(before);
    };
    auto const tooMany = [bytes = self->limits.maxBytes](ListingDatabase &listings) {
        return listings.removeSomeOver(bytes);
    };
    // Between two parts, the operations that were queued meanwhile run.
    while (!context.stop.stop_requested() && self->useDatabase(tooOld))
        co_await onStrand(self->strand, nothing());
    while (!context.stop.stop_requested() && self->useDatabase(tooMany))
        co_await onStrand(self->strand, nothing());
}

Task<ListingStore::Statistics> ListingStore::statistics()
{
    static constexpr auto read = [](std::shared_ptr<ListingStore> self) -> Task<Statistics> {
        auto const size = self->useDatabase([](ListingDatabase &listings) { return listings.size(); });
        co_return Statistics{.hits = self->hits, .misses = self->misses, .rows = size.rows, .bytes = size.bytes};
    };
    return onStrand(strand, read(shared_from_this()));
}

Task<void> ListingStore::close()
{
    static constexpr auto closeHere = [](std::shared_ptr<ListingStore> self) -> Task<void> {
        self->database.reset();
        co_return;
    };
    return onStrand(strand, closeHere(shared_from_this()));
}

} // namespace tw
