#pragma once

#include "TWCore/Async/Task.h"
#include "Tarnwick/Clipboard/ClipboardContent.h"

#include <functional>

namespace tw {

/// The clipboard of the desktop.
///
/// Threads: main context only.
/// Lifetime: shared by the tasks that read it.
class Clipboard {
public:
    virtual ~Clipboard() = default;

    /// Puts files there in all formats. They lie there until somebody copies something else, here or in another
    /// program.
    virtual void offer(FileDrag files) = 0;

    /// Nothing: the program that owns the clipboard does not answer. Suspends while that program has time to answer;
    /// the window stays usable.
    virtual Task<std::optional<ClipboardContent>> read() = 0;

    /// Empties it, which says to the program that cut the files that they have been pasted. Does nothing if it is not
    /// the version that was read: somebody has copied something else meanwhile.
    virtual void clear(std::uint64_t version) = 0;

    /// What was offered is not on the clipboard any more.
    std::function<void()> onOfferGone;
};

} // namespace tw
