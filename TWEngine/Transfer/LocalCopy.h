#pragma once

#include "TWEngine/Transfer/TransferWork.h"

namespace tw {

/// Copies names from one folder of this machine into another with cp.
namespace LocalCopy {

/// Copies in order and stops at the first name that fails. What was copied before stays.
///
/// Cancellation: ends cp within 0.2 s and throws Cancelled. A dead disk holds that for some seconds; what has not been
/// counted by then is not known.
/// Errors: FileOperationError::Failed, SpawnError.
Task<void> run(TransferWork::Shared work);

} // namespace LocalCopy

} // namespace tw
