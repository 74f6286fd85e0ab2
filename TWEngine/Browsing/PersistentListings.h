#pragma once

#include "TWCore/Provider/FileSystemProvider.h"

#include <optional>
#include <string>

namespace tw {

/// Where listings outlive the process: what a Browser asks of it.
///
/// A cache, not a record: no operation reports a failure. After a failure, a listing is not found or not remembered.
///
/// Threads: all operations may be called from anywhere.
class PersistentListings {
public:
    virtual ~PersistentListings() = default;

    /// The stored listing of `path` at the provider of that cache identity, or nothing.
    virtual Task<std::optional<DirectorySnapshot>> load(std::string provider, std::string path) = 0;

    /// Stores all listings of one scan.
    virtual Task<void> save(std::string provider, Listings listings) = 0;

    virtual Task<void> remove(std::string provider, std::string path) = 0;

    /// Removes `path` and all that is below it.
    virtual Task<void> removeTree(std::string provider, std::string path) = 0;
};

} // namespace tw
