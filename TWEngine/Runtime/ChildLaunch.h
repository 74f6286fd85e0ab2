#pragma once

#include "TWEngine/Runtime/ChildCommand.h"

#include <array>

#include <sys/types.h>

namespace tw {

/// Starts the program and answers its process id; whoever calls must collect its end. Throws SpawnError.
///
/// `standard` become its standard input, output and error; each is above 2, so that none is overwritten by another
/// on the way. Of our other descriptors it gets none, all signals are as a program expects to find them, and its
/// working directory is the one given.
pid_t launchChild(ChildCommand const &command, std::array<int, 3> const &standard);

} // namespace tw
