#pragma once

#include "TWCore/Async/Task.h"

#include <functional>
#include <memory>
#include <string>

namespace tw {

/// A file of this machine that is not needed for long.
struct ScratchFile {
    std::string folder;         ///< private to the user, with nothing else in it
    std::shared_ptr<void> life; ///< the file goes with the last copy of it
};

/// Writes a file of this name and content. Throws FileOperationError::Failed.
using MakeScratchFile = std::function<Task<ScratchFile>(std::string name, std::string bytes)>;

} // namespace tw
