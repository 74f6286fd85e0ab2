#pragma once

#include "TWEngine/Runtime/SharedTask.h"

#include <memory>
#include <string>

namespace tw {

class EngineRuntime;
class ListingStore;

/// The store of the listings of all hosts, which is opened while the program starts and trimmed once it is open.
///
/// Threads: main context only.
/// Lifetime: the engine outlives it. Its destructor stops the trimming.
class StoreOpening {
public:
    using Store = std::shared_ptr<ListingStore>;

    StoreOpening(EngineRuntime &engine, std::shared_ptr<Executor> const &mainContext, std::string directory);
    ~StoreOpening();

    StoreOpening(StoreOpening const &) = delete;
    StoreOpening &operator=(StoreOpening const &) = delete;

    /// Waits until the store is open. Null if it cannot be opened.
    Task<Store> opened() const { return opening.wait(); }

    /// Waits until the store is open, and closes it.
    Task<void> close() const { return closeBehind(opening, trimming); }

private:
    static Task<void> closeBehind(SharedTask<Store> opening, SharedTask<void> trimming);

    SharedTask<Store> const opening;
    SharedTask<void> const trimming;
};

} // namespace tw
