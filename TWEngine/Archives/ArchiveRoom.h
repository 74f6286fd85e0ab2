#pragma once

#include "TWEngine/Archives/ArchiveWork.h"
#include "TWEngine/Transfer/TransferEndpoint.h"

namespace tw {

/// Asks how much there is room for before an archive is unpacked, see UnpackRoom.
///
/// Errors: ArchiveTooLarge; ArchivePasswordError.
namespace ArchiveRoom {

/// So many bytes into the folder.
Task<void> check(ArchiveWork::Shared work, std::int64_t bytes, TransferEndpoint folder);

/// All of the archive. It is listed if its own size does not say enough; one that cannot be listed passes, and the tool
/// that unpacks it says why.
Task<void> checkAll(ArchiveWork::Shared work, TransferEndpoint archive, TransferEndpoint folder);

} // namespace ArchiveRoom

} // namespace tw
