#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// The user's OpenSSH client configuration as text: reading its hosts, and rewriting the one block in it that is ours.
///
/// The list of saved hosts is that file and no database of ours, so that a name means the same here and at a terminal.
/// What the user wrote outside the two marker lines is returned byte for byte.
///
/// Errors: none; any text can be read.
namespace tw::SSHConfigFile {

inline constexpr std::string_view beginMarker = "# --- Tarnwick: managed hosts ---";
inline constexpr std::string_view endMarker = "# --- end Tarnwick ---";

/// One `Host` stanza. An empty text is one that is not set.
struct Entry {
    std::string alias = {}; ///< the first name of the `Host` line
    std::string hostName = {};
    std::string user = {};
    std::string port = {};
    std::string identityFile = {};
    std::string proxyJump = {};
    /// Every other option, as its line stands; before them "# also: " and the further names of the `Host` line.
    std::vector<std::string> extras = {};
    bool isManaged = false; ///< the stanza begins inside our block

    /// It stands for several hosts, or for all but some.
    bool isPattern() const noexcept;

    friend bool operator==(Entry const &, Entry const &) = default;
};

/// The stanzas in their order. What is set before the first, or for a `Match`, belongs to no host and is not kept.
std::vector<Entry> parse(std::string_view text);

/// The names that a person can connect to: no pattern, and each once.
std::vector<std::string> aliases(std::string_view text);

/// `existing` with `managed` as the content of our block, which stays where it is, or is added at the end.
///
/// A block that is damaged (a marker missing, or the two in the wrong order) is left as it is, since it may hold what
/// the user wrote, and a new one is added. A value is written up to its first line end or NUL: a second line would be
/// an option that nobody was shown. A name of blanks is no name, and an extra that looks like a marker is left out.
std::string render(std::string_view existing, std::span<Entry const> managed);

/// The arguments of ssh, without its own name, that try whether a host can be reached and lets the user in.
std::vector<std::string> testCommand(std::string_view alias);

/// What the outcome of that command means; empty: it worked. `output` is both of its outputs.
std::string explain(std::int32_t exitCode, std::string_view output);

} // namespace tw::SSHConfigFile
