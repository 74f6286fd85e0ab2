#pragma once

#include "TWCore/Async/Task.h"
#include "Tarnwick/Preview/PreviewContent.h"
#include "Tarnwick/Preview/PreviewSubject.h"

#include <functional>

namespace tw {

/// Reads what there is to see of a file.
class PreviewLoader {
public:
    using Show = std::function<void(PreviewContent content)>;

    virtual ~PreviewLoader() = default;

    /// Calls `show`, on the caller's executor, for each better thing that it has to show. Throws what reading throws.
    ///
    /// Cancellation: a stop ends the reading, and every process that was started for it.
    virtual Task<void> load(PreviewSubject subject, PictureBounds room, Show show) = 0;

    /// Nothing is looked at any more, and every reading is stopped: ends what was kept ready for the next one.
    virtual void rest() = 0;
};

} // namespace tw
