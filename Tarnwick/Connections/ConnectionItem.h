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

/// The most hosts that a menu lists. A menu of thousands takes long to lay out, and is too long to read.
inline constexpr std::size_t mostHostsInMenu = 1000;

/// The whole menu for a pane on the connection `current`. `hosts` is nothing as long as they are not known.
std::vector<ConnectionItem> connectionMenuItems(std::optional<Text> header,
                                                std::optional<std::vector<std::string>> const &hosts,
                                                std::string const &current);

} // namespace tw
