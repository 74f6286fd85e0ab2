#pragma once

#include "TWEngine/Transfer/TransferWork.h"

#include <span>

namespace tw {

/// Copies names from one folder of this machine into another with cp.
namespace LocalCopy {

/// Names that one cp copies.
struct Step {
    std::size_t first = 0;
    std::size_t count = 0;
    bool isFolder = false; ///< it is a folder alone
};

/// Divides names into steps, in order. `isFolder` says which names have a step alone; empty: none has.
std::vector<Step> steps(std::string_view from, std::span<std::string const> names, std::vector<bool> const &isFolder);

/// Copies in order and stops at the first name that fails. What was copied before stays.
///
/// Cancellation: ends cp within 0.2 s and throws Cancelled.
/// Errors: FileOperationError::Failed, SpawnError.
Task<void> run(TransferWork::Shared work);

} // namespace LocalCopy

} // namespace tw
