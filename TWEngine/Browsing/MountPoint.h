#pragma once

#include <string>

namespace tw {

/// Whether something is mounted on `name` in the open folder `folder`, also from the same device. False on a kernel
/// before 5.8, which does not say it. Blocks: for a worker thread.
bool isMountPoint(int folder, std::string const &name);

} // namespace tw
