#pragma once

#include "TWEngine/Transfer/TransferWork.h"

namespace tw {

/// Copies names from one folder of a host into another by a command in its resident shell: the bytes stay there.
namespace HostCopy {

/// Cancellation: ends the copy on the host, by a command in another session, and throws Cancelled.
/// Errors: FileOperationError::Failed with what the host printed; what `CommandHost::runCommand` throws.
Task<void> run(TransferWork::Shared work);

} // namespace HostCopy

} // namespace tw
