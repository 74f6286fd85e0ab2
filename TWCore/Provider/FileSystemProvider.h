#pragma once

#include "TWCore/Async/Task.h"
#include "TWCore/Model/DirectorySnapshot.h"
#include "TWCore/Model/FetchPriority.h"

#include <map>
#include <optional>
#include <string>

namespace tw {

/// The listings of one fetch, by normalised absolute path. They may share one name storage.
using Listings = std::map<std::string, DirectorySnapshot>;

/// A place that files are in: this machine, a host, an archive. The only code that knows where they really are.
///
/// A provider keeps no listings; caching is the Browser's business. What else a place can do it tells by being a
/// FileSystemReader or a FileSystemWriter too, which is asked at run time with `dynamic_cast`.
///
/// Threads: all operations may be called from anywhere, at the same time.
/// Lifetime: shared; an operation in flight keeps what it needs.
/// Errors: typed exceptions, each with its text for the user in `what`.
class FileSystemProvider {
public:
    virtual ~FileSystemProvider() = default;

    /// Stable for the life of the provider.
    virtual std::string identifier() const = 0;

    /// The name of the place as shown to the user.
    virtual std::string displayName() const = 0;

    /// The deepest scan that it makes sense to ask for; 1 means one directory at a time.
    virtual int maxUsefulDepth() const = 0;

    /// The key of its listings in the persistent store; nothing if they must not be stored.
    virtual std::optional<std::string> persistentCacheIdentity() const { return std::nullopt; }

    /// Brings the connection up. Called once before use.
    virtual Task<void> connect() { return nothingToDo(); }

    /// Lists the directory `path` and, for a `depth` above 1, those below it, down to that depth.
    virtual Task<Listings> fetch(std::string path, int depth, FetchPriority priority) = 0;

    /// Tears the connection down. Does not throw.
    virtual Task<void> disconnect() { return nothingToDo(); }

protected:
    static Task<void> nothingToDo() { co_return; }
};

} // namespace tw
