#include "Tarnwick/Connections/StoreOpening.h"

#include "TWCore/Async/Outcome.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "TWEngine/Store/ListingStore.h"

namespace tw {

namespace {

using Store = StoreOpening::Store;

Task<Store> openStore(EngineRuntime *engine, std::string directory)
{
    // A person may wait for the first host behind this.
    auto store =
        co_await engine->storeWorkers().run(WorkPriority::interactive, [engine, directory = std::move(directory)] {
            return ListingStore::create(engine->storeWorkers(), engine->clock(), directory, {});
        });
    co_return store;
}

/// Once, and behind everything that a caller waits for.
Task<void> trimWhenOpen(SharedTask<Store> opening)
{
    auto const store = co_await opening.wait();
    if (store)
        co_await store->trim();
}

} // namespace

StoreOpening::StoreOpening(EngineRuntime &engine, std::shared_ptr<Executor> const &mainContext, std::string directory)
    : opening(SharedTask<Store>::start(mainContext, openStore(&engine, std::move(directory)))),
      trimming(SharedTask<void>::start(mainContext, trimWhenOpen(opening)))
{
}

StoreOpening::~StoreOpening()
{
    trimming.cancel();
}

Task<void> StoreOpening::closeBehind(SharedTask<Store> opening, SharedTask<void> trimming)
{
    trimming.cancel();
    co_await outcomeOf(trimming.wait());
    auto const opened = co_await outcomeOf(opening.wait());
    auto const store = opened.value.value_or(nullptr);
    if (store)
        co_await store->close();
}

} // namespace tw
