#pragma once

#include "TWCore/Archives/ArchiveTools.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "TWEngine/Transfer/Transfer.h"
#include "TWEngine/Transfer/TransferTools.h"

namespace tw {

/// What the steps of one operation on an archive share.
struct ArchiveWork {
    EngineRuntime &engine;
    TransferTools transfer;
    ArchiveTools here; ///< of this machine
    Transfer::Reporter report;
    std::optional<std::string> password = {}; ///< of the archive; none: a tool that wants one fails
    bool takesAnySize = false;                ///< the user wants all of it unpacked, however much it is

    using Shared = std::shared_ptr<ArchiveWork const>;
};

} // namespace tw
