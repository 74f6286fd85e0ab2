#pragma once

#include <string>
#include <string_view>

namespace tw {

/// What a host reports of itself when its resident script is ready. The defaults hold until then.
struct ShellHandshake {
    std::string implementation = "unknown";    ///< what lists folders: "gnu", "perl" or "powershell"
    std::string startDirectory = "/";          ///< where the shell was started
    std::string archiveTools = "gnutar,no,no"; ///< the kind of tar, whether zip and unzip exist, the 7-Zip command

    /// Takes the fields of `payload`, after the echo of `firstRemoteCommand` if there is one. An empty field, a start
    /// directory that is not absolute, or a payload that is not UTF-8 changes nothing.
    void take(std::string_view payload);

    friend bool operator==(ShellHandshake const &, ShellHandshake const &) = default;
};

} // namespace tw
