#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// Reads the hosts in the text of the user's OpenSSH client configuration, and rewrites the block in it that belongs to
/// us.
///
/// That file is the list of saved hosts; we keep no other, so that a name means the same here and at a terminal. Text
/// outside the two marker lines is returned byte for byte.
///
/// Errors: none; any text can be read.
namespace tw::SSHConfigFile {

inline constexpr std::string_view beginMarker = "# --- Tarnwick: managed hosts ---";
inline constexpr std::string_view endMarker = "# --- end Tarnwick ---";

/// One `Host` stanza. An empty text means that the option is not set.
struct Entry {
    std::string alias = {}; ///< the first name of the `Host` line
    std::string hostName = {};
    std::string user = {};
    std::string port = {};
    std::string identityFile = {};
    std::string proxyJump = {};
    /// The lines of all other options; before them "# also: " and the further names of the `Host` line.
    std::vector<std::string> extras = {};
    bool isManaged = false; ///< the stanza begins inside our block

    /// True for a pattern: it matches several hosts, or all but some.
    bool isPattern() const noexcept;

    friend bool operator==(Entry const &, Entry const &) = default;
};

/// The stanzas in their order. Options before the first stanza, and those of a `Match`, belong to no host and are left
/// out.
std::vector<Entry> parse(std::string_view text);

/// The names that a person can connect to: without patterns and duplicates.
std::vector<std::string> aliases(std::string_view text);

/// `existing` with `managed` as the content of our block, which keeps its place, or is added at the end.
///
/// A damaged block (a marker is missing, or the two are in the wrong order) stays unchanged, since it may hold text of
/// the user, and a new block is added. A value is written up to its first line end or NUL: a second line would be an
/// option that the user has not seen. A host with a blank name and an extra that looks like a marker are left out.
std::string render(std::string_view existing, std::span<Entry const> managed);

/// The arguments of an ssh that tries to log in to a host, without the name of the program.
std::vector<std::string> testCommand(std::string_view alias);

/// What the outcome of that command means; empty on success. `output` is its standard output and error.
std::string explain(std::int32_t exitCode, std::string_view output);

} // namespace tw::SSHConfigFile
