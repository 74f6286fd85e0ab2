#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace tw {

/// What the user's configuration of ssh says of one host, as `ssh -G` prints it.
struct HostSettings {
    std::optional<std::chrono::seconds> connectTimeout; ///< nothing if the user set none
    std::optional<std::string> controlPath;             ///< of the user's own shared connection; expanded
    std::vector<std::string> identityFiles;             ///< expanded, in the order in which ssh tries them
    bool knowsSessionType = false;                      ///< see RemoteShellOptions

    friend bool operator==(HostSettings const &, HostSettings const &) = default;
};

} // namespace tw
