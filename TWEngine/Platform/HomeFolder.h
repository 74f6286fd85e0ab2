#pragma once

#include "TWEngine/Runtime/ChildCommand.h"
#include "TWEngine/Runtime/WorkerPool.h"

#include <chrono>
#include <string>

namespace tw {

/// The home folder of the user who runs this process.
namespace HomeFolder {

/// $HOME of this process, or "/" where that is not an absolute path. Does not block.
std::string path();

/// The same of another environment.
std::string in(Environment const &environment);

/// The home that the password database knows; empty for a user it does not know, as in some containers.
///
/// Blocks as long as the database does, which may ask a server that does not answer: for a worker thread.
std::string ofAccount();

/// Gives this process the HOME of the password database if it has none, or "/" if the database knows none in time:
/// libraries of the window system ask the database on the main thread where HOME is not set.
///
/// Asks on a worker, and waits for at most `limit`; a later answer is not used. Before other threads read the
/// environment.
void ensureInEnvironment(WorkerPool const &workers, std::chrono::milliseconds limit);

} // namespace HomeFolder

} // namespace tw
