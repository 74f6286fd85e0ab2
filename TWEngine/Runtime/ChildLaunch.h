#pragma once

#include "TWEngine/Runtime/ChildCommand.h"

#include <array>

#include <sys/types.h>

namespace tw {

/// Starts the program and returns its process id; the caller must collect its end. Throws SpawnError.
///
/// `standard` become its standard input, output and error. Each is above 2, so that copying one does not overwrite
/// another. The program inherits no other descriptor, default signal handling, and the working directory of the
/// command.
pid_t launchChild(ChildCommand const &command, std::array<int, 3> const &standard);

} // namespace tw
