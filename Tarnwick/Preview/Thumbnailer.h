#pragma once

#include "TWCore/Async/Task.h"

#include <string>

namespace tw {

/// The service of the desktop that makes small pictures of files, for all programs.
///
/// Threads: main context only.
class Thumbnailer {
public:
    virtual ~Thumbnailer() = default;

    /// Has the picture of a file of this machine made. False: there will be none, or it takes too long.
    ///
    /// Cancellation: a stop takes the file off the service's list.
    virtual Task<bool> make(std::string uri, std::string mimeType) = 0;
};

} // namespace tw
