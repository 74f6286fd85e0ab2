#pragma once

#include "TWCore/Provider/FileSystemProvider.h"

#include <vector>

namespace tw {

/// A place whose files can be changed.
class FileSystemWriter : public virtual FileSystemProvider {
public:
    /// True if `remove` moves files to a place from which the user can restore them.
    virtual bool deleteIsReversible() const = 0;

    /// Creates one directory.
    virtual Task<void> makeDirectory(std::string path) = 0;

    /// Deletes each of the paths. (`delete` is a word of the language.)
    virtual Task<void> remove(std::vector<std::string> paths) = 0;

    /// Renames, or moves within this provider. An existing target is an error, and stays as it is.
    virtual Task<void> rename(std::string from, std::string to) = 0;
};

} // namespace tw
