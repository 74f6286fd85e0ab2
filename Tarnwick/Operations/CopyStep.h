#pragma once

#include "Tarnwick/Operations/TransferJob.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace tw {

/// A part of a transfer that is copied at once.
struct CopyStep {
    TransferPlan plan = {};
    bool isStaged =
        false; ///< through a staging folder of the target, from which its names are renamed when it is whole

    /// As many bytes of new files may lie beside their old ones: a copy over the files of a full disk has room all the
    /// same, unless one of them alone is too large. A new batch costs a distant host some round trips.
    static constexpr std::int64_t mostReplaced = std::int64_t{1} << 30U;

    /// The steps for `plan`, which is that of the job or a part of it, in order.
    ///
    /// Names that are written under other ones are staged, since a transfer writes every name as it is, and so is a
    /// file that replaces one, which stays until the new one is whole. Between two file systems of one place everything
    /// is, so that there is never a part of a file under its name; but a folder that merges never is.
    static std::vector<CopyStep> of(TransferJob const &job, TransferPlan const &plan);

    struct Size {
        std::int64_t bytes = 0;
        std::int64_t files = 0;
    };

    /// Of all together; nothing if they have more than files that were shown with their sizes.
    static std::optional<Size> sizeOf(std::span<CopyStep const> steps);
};

} // namespace tw
