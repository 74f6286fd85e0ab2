#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// The hosts that a user has saved, in the configuration and in the files that it includes.
///
/// Threads: may be called from anywhere. `all` blocks, so it belongs on a worker.
namespace tw::SSHConfigHosts {

// Far more than people have. A loop of includes, or a pattern that matches a whole disk, ends here.
inline constexpr int deepestInclude = 16; ///< as ssh itself
inline constexpr std::size_t mostFiles = 256;
inline constexpr std::size_t mostBytes = 4U << 20U; ///< of all files together
inline constexpr std::size_t mostNames = 10'000;

/// A line that names hosts or files.
struct Line {
    enum class Kind {
        hosts, ///< `names` are those of a `Host` line, without patterns
        files, ///< `names` are the patterns of an `Include` that counts for every host
    };

    Kind kind = Kind::hosts;
    std::vector<std::string> names;

    friend bool operator==(Line const &, Line const &) = default;
};

/// These lines of a configuration, in their order. An `Include` inside a block that does not match every host is left
/// out: ssh reads such a file for the hosts of its block only.
std::vector<Line> linesIn(std::string_view text);

/// Every name in the file and in the files that it includes, in the order in which ssh reads them, without duplicates.
/// A file that cannot be read has none.
std::vector<std::string> all(std::string const &path);

} // namespace tw::SSHConfigHosts
