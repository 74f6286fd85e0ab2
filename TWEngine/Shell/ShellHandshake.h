#pragma once

#include <string>
#include <string_view>

namespace tw {

/// What a host tells of itself when its resident script is ready. Until then, the values that stand here.
struct ShellHandshake {
    std::string implementation = "unknown";    ///< what lists folders: "gnu", "perl" or "powershell"
    std::string startDirectory = "/";          ///< where the shell was started
    std::string archiveTools = "gnutar,no,no"; ///< the kind of tar, whether there are zip and unzip, the 7-Zip command

    /// Takes over what `payload` tells behind the echo of `firstRemoteCommand`, if that is in it. What it leaves empty,
    /// a folder that is no absolute path, or a payload that is not UTF-8 changes nothing.
    void take(std::string_view payload);

    friend bool operator==(ShellHandshake const &, ShellHandshake const &) = default;
};

} // namespace tw
