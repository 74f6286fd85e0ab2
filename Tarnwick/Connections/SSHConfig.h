#pragma once

#include "TWCore/Async/Task.h"
#include "TWEngine/SSHConfig/SSHConfigOnDisk.h"

#include <string>
#include <vector>

namespace tw {

class WorkerPool;

/// The hosts that a user has saved, as menus and pickers list them.
namespace SSHConfig {

/// Their names in the order in which ssh reads them, those of included files among them; none of what cannot be read.
/// An empty `path` is that of this user.
/// The pool outlives the task.
Task<std::vector<std::string>> hosts(WorkerPool const &pool, std::string path = {});

} // namespace SSHConfig
} // namespace tw
