#pragma once

#include "Tarnwick/Operations/FileDrag.h"
#include "Tarnwick/Operations/OperationContext.h"
#include "Tarnwick/Operations/TransferJob.h"

#include <functional>
#include <string>
#include <vector>

namespace tw {

/// What to do with items that come from the very folder that they go to. What is moved there stays as it is.
enum class SameFolder {
    duplicate, ///< a pasted copy: each gets a name of its own
    refuse,    ///< dropped: they are there already
};

/// Something pasted or dropped on a pane, which is the pane of the context; the folder is that of its operands.
///
/// A name that is taken is no question here: the item gets a name that is free. The cursor goes to the first item.
struct Delivery {
    FileDrag drag;
    SameFolder sameFolder = SameFolder::duplicate;
    /// After a move that has succeeded: what was cut must not be pasted twice.
    std::function<void()> onMoved = {};
};

/// What was copied or is dragged, with the Browser of a pane which has the connection open, or a new one. Throws what
/// connecting throws.
Task<Operands> sourceOf(OperationContext context, FileDrag files);

/// Errors: shown to the user.
Task<void> deliver(OperationContext context, Delivery what);

/// The same for files of this machine that come from another program, wherever they lie: one delivery for each folder.
/// `onMoved` runs after a move of which every file has arrived.
Task<void> deliverPaths(OperationContext context, std::vector<std::string> paths, TransferKind kind,
                        SameFolder sameFolder = SameFolder::duplicate, std::function<void()> onMoved = {});

} // namespace tw
