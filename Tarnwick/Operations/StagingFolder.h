#pragma once

#include "TWEngine/Runtime/SharedTask.h"
#include "Tarnwick/Panes/Operands.h"

#include <chrono>

namespace tw {

/// A new folder `.tw-paste-…` in a folder of the user: for files on their way to their names, or to see where it
/// appears. Whoever begins it discards it, also if it could not be made.
///
/// Threads: main context only.
/// Lifetime: a value. The place makes the folder even if nobody waits for that.
class StagingFolder {
public:
    /// Begins to make one in the folder `parent`.
    static Task<StagingFolder> begin(Operands parent);

    /// The folder, without names.
    Operands const &place() const noexcept { return folder; }

    /// Ends when it is there. Throws what the place throws.
    ///
    /// Cancellation: at once, and the place may make it later.
    Task<void> made() const { return making.wait(); }

    enum class Content {
        copies, ///< goes with the folder
        nothing ///< what another program may have put into it stays, and so does the folder
    };

    /// How long a place may take that has not even answered whether there is a folder: a person waits for the end of a
    /// cancel.
    static constexpr std::chrono::seconds patience{2};

    /// Deletes it. False if it may be there all the same.
    ///
    /// Cancellation: it is waited for some seconds more, and goes all the same if the place does not answer by then.
    Task<bool> discard(Content content) const;

private:
    StagingFolder(Operands parent, Operands where, SharedTask<void> task);

    static Task<bool> discardHere(StagingFolder self, Content content);
    static Task<bool> isGoneAfter(StagingFolder self, Content content);

    Operands above;
    Operands folder;
    SharedTask<void> making;
};

} // namespace tw
