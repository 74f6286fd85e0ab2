#pragma once

#include "TWEngine/Transfer/TransferProgress.h"

#include <cstdint>
#include <mutex>
#include <string>

namespace tw {

/// Which reports of a transfer reach the window: a fast pipe reports thousands of times a second.
///
/// Threads: may be used from anywhere.
class ProgressThrottle {
public:
    /// More than that of one file is worth a report.
    static constexpr std::int64_t step = 524288; // 512 KiB

    /// True for another item, and for every `step` bytes of one.
    bool shouldReport(TransferProgress const &progress);

private:
    std::mutex mutex;
    // Under the mutex.
    std::int64_t lastBytes = 0;
    std::string lastItem;
};

} // namespace tw
