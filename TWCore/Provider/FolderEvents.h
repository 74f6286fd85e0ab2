#pragma once

#include "TWCore/Provider/FileSystemProvider.h"

#include <memory>
#include <string>

namespace tw {

/// The events of one folder, until it is destroyed.
///
/// Threads: may be used from anywhere; one task waits at a time.
class FolderWatch {
public:
    enum class Event {
        changed, ///< something in the folder
        gone,    ///< the folder was deleted, moved or unmounted; nothing comes after this
    };

    virtual ~FolderWatch() = default;

    /// Waits for the next event. All that came since the last call are one.
    virtual Task<Event> next() = 0;
};

/// A place that reports changes in its folders. A provider tells by being one, which is asked with `dynamic_cast`.
///
/// Threads, lifetime: as FileSystemProvider.
class FolderEvents : public virtual FileSystemProvider {
public:
    /// Null if there are no events for the folder. What a file system changes by itself may come without any: on
    /// another machine, behind a network mount.
    virtual Task<std::shared_ptr<FolderWatch>> watchFolder(std::string path) = 0;
};

} // namespace tw
