#pragma once

#include "TWCore/Async/Task.h"
#include "TWEngine/Transfer/TransferEndpoint.h"
#include "TWEngine/Transfer/TransferProgress.h"

#include <functional>
#include <string>
#include <vector>

namespace tw {

/// What a transfer has done, for a person who has to go on from there.
struct TransferSummary {
    std::int64_t files = 0;    ///< that have arrived whole, in folders too
    bool areFilesKnown = true; ///< false: nobody could say how many have arrived, and `files` means nothing
    std::optional<std::int64_t> totalFiles = {};
    std::vector<std::string> complete = {};  ///< of the names: those that have arrived whole
    std::vector<std::string> partial = {};   ///< of the names: those of which something may be at the target
    std::vector<std::string> untouched = {}; ///< of the names: those that were not begun
    std::string words = {};                  ///< the last lines of the programs that did it; UTF-8
};

/// Copies named entries of one folder into another, between any two machines. Knows nothing of conflicts: what exists
/// at the target is replaced, and folders are merged.
///
/// Threads: may be used from anywhere; one copy at a time.
/// Lifetime: shared; a copy in flight keeps it.
class Transfer {
public:
    /// Called from any thread, at any rate.
    using Reporter = std::function<void(TransferProgress const &progress)>;

    virtual ~Transfer() = default;

    /// Copies `names`, plain names in `from`, to the same names in `to`. Throws FileOperationError, and Cancelled after
    /// `cancel` as FileOperationError::Cancelled. What has arrived by then stays.
    virtual Task<void> copy(std::vector<std::string> names, TransferEndpoint from, TransferEndpoint to,
                            Reporter onProgress) = 0;

    /// Ends the copy in flight, on all machines that take part.
    virtual void cancel() = 0;

    /// Of the last copy, once it has ended.
    virtual TransferSummary summary() const = 0;
};

} // namespace tw
