#pragma once

#include "TWCore/Async/Clock.h"
#include "TWCore/Model/ListingScan.h"
#include "TWCore/Provider/FileSystemProvider.h"

#include <memory>

namespace tw {

/// A long listing while it comes from a host.
///
/// Its records are read as they arrive, so that little is left to do when the last of them has come. A person who has
/// waited for half a second gets the rows so far, and again each time when there are twice as many.
///
/// Threads: used by one at a time.
class GrowingListing {
public:
    /// The person began to wait for `path` at `begun`. `onPart` may be empty.
    GrowingListing(std::string path, std::shared_ptr<Clock> clock, std::chrono::steady_clock::time_point begun,
                   PartTaker onPart);

    /// `bytes` is all that has come so far.
    void hear(std::string_view bytes);

    /// What was read so far.
    ListingScan &scan() noexcept { return records; }

private:
    bool isPartDue(std::size_t bytes) const;

    // Constant after construction.
    std::shared_ptr<Clock> const clock;
    std::chrono::steady_clock::time_point const begun;
    PartTaker const onPart;

    ListingScan records;
    std::size_t lastPart = 0; ///< bytes
};

} // namespace tw
