#pragma once

#include "TWEngine/Transfer/TransferWork.h"

namespace tw {

/// Copies names from one folder of a host into another by a command in its resident shell: the bytes stay there.
namespace HostCopy {

inline constexpr std::chrono::seconds patienceWithSurvey{3}; ///< a person waits for the end of a cancel

/// If it fails or is cancelled, the host is asked once what has arrived. If it has not answered after
/// `patienceWithSurvey`, if the connection was lost, or if it is a Windows host, that is not known. Nobody counts the
/// files of a copy that succeeds.
///
/// Cancellation: ends the copy on the host, by a command in another session, and throws Cancelled.
/// Errors: FileOperationError::Failed with what the host printed; what `CommandHost::runCommand` throws.
Task<void> run(TransferWork::Shared work);

} // namespace HostCopy

} // namespace tw
