#include "Tarnwick/Operations/ProgressThrottle.h"

namespace tw {

bool ProgressThrottle::shouldReport(TransferProgress const &progress)
{
    std::lock_guard const lock(mutex);
    auto const isAnotherItem = progress.item != lastItem;
    if (!isAnotherItem && progress.bytes - lastBytes < step)
        return false;
    lastItem = progress.item;
    lastBytes = progress.bytes;
    return true;
}

} // namespace tw
