#pragma once

#include "TWEngine/Runtime/ChildCommand.h"

#include <optional>
#include <string>

#include <sys/types.h>

/// The socket at which the program that runs on a display is called by one that is started beside it.
namespace tw::InstanceSocket {

/// For the display of `environment`, in its folder for sockets. Nothing without a display, without such a folder, if
/// the folder is not private to `user`, or if the path is too long for a socket.
std::optional<std::string> pathFor(Environment const &environment, uid_t user);

/// The part of the name that stands for a display, with nothing in it that a path cannot have; empty without a display.
std::string displayName(Environment const &environment);

} // namespace tw::InstanceSocket
