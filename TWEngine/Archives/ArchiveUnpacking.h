#pragma once

#include "TWEngine/Archives/ArchiveWork.h"
#include "TWEngine/Archives/Archives.h"

namespace tw {

/// Takes members out of archives, see ArchiveEngine.
namespace ArchiveUnpacking {

Task<void> extract(ArchiveWork::Shared work, Archives::Members members, TransferEndpoint archive,
                   TransferEndpoint into);

Task<void> unpack(ArchiveWork::Shared work, TransferEndpoint archive, TransferEndpoint into);

} // namespace ArchiveUnpacking

} // namespace tw
