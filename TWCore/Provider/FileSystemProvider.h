#pragma once

#include "TWCore/Async/Task.h"
#include "TWCore/Model/DirectorySnapshot.h"
#include "TWCore/Model/FetchPriority.h"

#include <functional>
#include <map>
#include <optional>
#include <string>

namespace tw {

/// The listings of one fetch, by normalised absolute path. They may share one name storage.
using Listings = std::map<std::string, DirectorySnapshot>;

/// Takes the rows of a listing that have come so far, while the rest is on its way. Called on any thread.
using PartTaker = std::function<void(DirectorySnapshot)>;

/// A place that holds files: this machine, a host, an archive. Only providers know where files are.
///
/// A provider keeps no listings; the Browser caches them. A provider whose files can be read or changed is also a
/// FileSystemReader or a FileSystemWriter; callers find out with `dynamic_cast`.
///
/// Threads: all operations may be called from anywhere, at the same time.
/// Lifetime: shared; an operation in flight keeps what it needs.
/// Errors: typed exceptions, each with its text for the user in `what`.
class FileSystemProvider {
public:
    virtual ~FileSystemProvider() = default;

    /// Stable for the life of the provider.
    virtual std::string identifier() const = 0;

    /// The name of the place for display.
    virtual std::string displayName() const = 0;

    /// The deepest scan that is useful; 1 means one directory at a time.
    virtual int maxUsefulDepth() const = 0;

    /// The key of its listings in the persistent store, or nothing if they must not be stored.
    virtual std::optional<std::string> persistentCacheIdentity() const { return std::nullopt; }

    /// Connects. Called once before use.
    virtual Task<void> connect() { return nothingToDo(); }

    /// Lists the directory `path` and, for a `depth` above 1, those below it, down to that depth.
    virtual Task<Listings> fetch(std::string path, int depth, FetchPriority priority) = 0;

    /// Lists the directory `path` for a person who waits, however long the listing is. If that takes long, `onPart` is
    /// called with what there is, marked as truncated, before the end; never afterwards.
    virtual Task<Listings> fetchWhole(std::string path, PartTaker onPart)
    {
        static_cast<void>(onPart);
        return fetch(std::move(path), 1, FetchPriority::interactive);
    }

    /// Disconnects. Does not throw.
    virtual Task<void> disconnect() { return nothingToDo(); }

protected:
    static Task<void> nothingToDo() { co_return; }
};

} // namespace tw
