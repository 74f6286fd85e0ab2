#pragma once

#include "TWEngine/Archives/ArchiveWork.h"

#include <string>
#include <vector>

namespace tw {

/// Changes archives of this machine, see ArchiveEngine. The new archive is written beside the old one and takes its
/// place when it is whole, so that a tool that fails destroys nothing.
namespace ArchiveChange {

Task<void> add(ArchiveWork::Shared work, std::vector<std::string> paths, std::string archive, std::string inner);

Task<void> remove(ArchiveWork::Shared work, std::vector<std::string> members, std::string archive);

} // namespace ArchiveChange

} // namespace tw
