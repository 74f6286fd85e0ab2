#pragma once

#include "TWCore/Model/Text.h"

#include <optional>
#include <string>
#include <vector>

namespace tw {

/// The name of the connection to the files of this machine. No host can be reached under it.
inline constexpr auto localConnection = "local";

/// What stands for this machine where a person reads it.
inline constexpr auto localTitle = "This Mac";

/// One item of the menu from which a person chooses what a pane is connected to.
struct ConnectionItem {
    enum class Kind {
        header,    ///< what the menu is about; nothing to choose
        local,     ///< this machine
        separator, ///< without a title
        host,
        note ///< why there is no host, or not all of them; nothing to choose
    };

    Kind kind = Kind::separator;
    Text title = {};
    std::string host = {}; ///< its name, as bytes
    bool isChecked = false;
    bool isEnabled = false;

    friend bool operator==(ConnectionItem const &, ConnectionItem const &) = default;
};

/// More hosts than that have a filter over them, and those that were used last stand before the others. So many are
/// found at a glance, and keep their order.
inline constexpr std::size_t mostHostsAtAGlance = 15;

/// The whole menu for a pane on the connection `current`. `hosts` is nothing as long as they are not known; `recent`
/// are the names of hosts that were used last, the latest first.
std::vector<ConnectionItem> connectionMenuItems(std::optional<Text> header,
                                                std::optional<std::vector<std::string>> const &hosts,
                                                std::string const &current);

/// The menu with the hosts first that were chosen last, if there are many; `recent` has the latest first.
std::vector<ConnectionItem> lastUsedFirst(std::vector<ConnectionItem> items, std::vector<std::string> const &recent);

/// True if a menu has a filter.
bool hasFilter(std::vector<ConnectionItem> const &items);

/// The most hosts that a menu shows. A menu of thousands takes long to lay out, and is too long to read.
inline constexpr std::size_t mostHostsInMenu = 1000;

/// What is shown of a menu after the letters in `filter`, which stand anywhere in a name, in either case: the
/// connections with such a name, and how many did not find room. An empty filter leaves the menu as it is, up to the
/// most hosts.
std::vector<ConnectionItem> shownItems(std::vector<ConnectionItem> const &items, std::string const &filter);

} // namespace tw
