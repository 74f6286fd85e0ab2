#pragma once

#include "TWCore/Provider/FolderFacts.h"

#include <string>
#include <vector>

namespace tw {

/// What is in the way of writing `names` into `folder`, a folder of this machine. Blocks: for a worker thread.
///
/// Throws FileOperationError::Failed if the folder or a name cannot be looked at.
FolderFacts localFactsAbout(std::string const &folder, std::vector<std::string> const &names);

} // namespace tw
