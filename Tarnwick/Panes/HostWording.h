#pragma once

#include "TWCore/Provider/HostStatus.h"
#include "Tarnwick/Panes/PaneNotice.h"

#include <chrono>
#include <exception>
#include <string>

/// What the strip of a pane says, in words for people.
namespace tw::HostWording {

/// Why `path` of `host` cannot be shown. `host` is the connection of the pane, which may be this computer.
PaneNotice failure(std::exception_ptr const &reason, std::string const &host, std::string const &path);

/// What `host` is waited for, and for how long; in `silent`: since when it was not heard.
PaneNotice waiting(std::string const &host, HostStatus::Phase phase, std::chrono::seconds soFar);

} // namespace tw::HostWording
