#pragma once

#include "TWEngine/Transfer/MemberGuard.h"
#include "TWEngine/Transfer/PipeEnding.h"
#include "TWEngine/Transfer/TransferWork.h"

namespace tw {

/// One stream of a tar pipe: a program that packs, a program that unpacks, and the pump between them, which reads the
/// headers and counts the bytes as they pass.
namespace TarPipe {

struct Stream {
    std::vector<std::string> names;
    ChildCommand producer;
    ChildCommand consumer;
    std::optional<MemberGuard> guard; ///< of a stream that a host sends
};

/// Carries one stream from its beginning to its end, and adds what has arrived to the summary of `work`.
///
/// Cancellation: ends both programs within 0.2 s and throws Cancelled.
/// Errors: FileOperationError::Failed, SpawnError.
Task<void> run(TransferWork::Shared work, Stream stream);

} // namespace TarPipe

} // namespace tw
