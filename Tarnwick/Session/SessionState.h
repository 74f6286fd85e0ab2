#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tw {

/// One tab, as it is kept between two runs.
struct PaneState {
    std::string connection = {}; ///< "local" or a host
    std::string path = {};       ///< empty: the place where the connection begins
    std::optional<std::string> sortKey = {};
    std::optional<bool> sortAscending = {};
    std::optional<bool> showHidden = {};

    friend bool operator==(PaneState const &, PaneState const &) = default;
};

/// The tabs of one side, as they are kept between two runs.
struct SideState {
    /// More than a person tells apart. A held key, or a damaged file, opens no more.
    static constexpr std::size_t mostTabs = 200;

    std::vector<PaneState> tabs = {};
    std::size_t active = 0;

    friend bool operator==(SideState const &, SideState const &) = default;
};

/// Left, then right.
using SideStates = std::array<SideState, 2>;

/// The last place on a connection.
struct Location {
    std::string path;
    std::optional<std::string> cursor = {}; ///< a name

    friend bool operator==(Location const &, Location const &) = default;
};

/// By the name of the connection, the one that was used last first.
using Locations = std::vector<std::pair<std::string, Location>>;

} // namespace tw
