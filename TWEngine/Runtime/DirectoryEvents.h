#pragma once

#include "TWCore/Provider/FolderEvents.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace tw {

class IoThread;

/// The kernel's events about folders of this machine, all over one descriptor (inotify(7)).
///
/// Threads: may be used from anywhere.
/// Lifetime: the I/O thread outlives it and its watches. A watch that outlives it gets no more events.
class DirectoryEvents {
public:
    explicit DirectoryEvents(IoThread &io);
    ~DirectoryEvents();

    DirectoryEvents(DirectoryEvents const &) = delete;
    DirectoryEvents &operator=(DirectoryEvents const &) = delete;

    /// Watches the folder that `path` leads to. Null if there are no events for it, or no more of them to be had.
    /// Blocks on a mount that is dead.
    std::shared_ptr<FolderWatch> watch(std::string const &path) const;

    /// `report` gets a line when a limit of the system is used up, once for each limit, on any thread.
    void reportLimits(std::function<void(std::string_view line)> report) const;

private:
    struct Queue;

    std::shared_ptr<Queue> const queue;
};

} // namespace tw
