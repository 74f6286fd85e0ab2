#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace tw {

/// Where a pane is to open.
struct PaneSpec {
    std::string connection; ///< "local" or a host
    std::string path;
    bool pathWasExplicit = false; ///< false: a place remembered for the connection goes first
    std::string cursor = {};      ///< the name for the cursor; empty: the first row

    /// The user's home directory.
    static PaneSpec localHome();

    /// "/path", "host", "host:" and "host:path"; nothing for an empty text or host. The path stays as it is written.
    static std::optional<PaneSpec> parse(std::string_view text);

    struct Sides;

    /// What "--left" and "--right" ask for. `arguments` are the program's, without its name.
    static Sides fromCommandLine(std::span<char const *const> arguments);

    friend bool operator==(PaneSpec const &, PaneSpec const &) = default;
};

struct PaneSpec::Sides {
    std::optional<PaneSpec> left;
    std::optional<PaneSpec> right;
};

} // namespace tw
