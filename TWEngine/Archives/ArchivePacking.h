#pragma once

#include "TWCore/Archives/ArchiveFormat.h"
#include "TWEngine/Archives/ArchiveWork.h"
#include "TWEngine/Transfer/TransferEndpoint.h"

namespace tw {

/// Makes archives, see ArchiveEngine.
namespace ArchivePacking {

Task<void> pack(ArchiveWork::Shared work, std::vector<std::string> names, TransferEndpoint from,
                TransferEndpoint archive, ArchiveFormat format);

} // namespace ArchivePacking

} // namespace tw
