#pragma once

#include "TWEngine/Archives/ArchiveWork.h"
#include "TWEngine/Transfer/TransferEndpoint.h"

namespace tw {

/// Takes members out of archives, see ArchiveEngine.
namespace ArchiveUnpacking {

Task<void> extract(ArchiveWork::Shared work, std::vector<std::string> members, TransferEndpoint archive,
                   TransferEndpoint into);

Task<void> unpack(ArchiveWork::Shared work, TransferEndpoint archive, TransferEndpoint into);

} // namespace ArchiveUnpacking

} // namespace tw
