#pragma once

#include "Tarnwick/Commands/Command.h"

#include <string>
#include <string_view>
#include <vector>

namespace tw {

/// What the menu over a pane was opened on.
struct ContextSubject {
    enum class Row { none, folder, file };

    Row row = Row::none; ///< none for the parent row and below the rows
    bool isLocal = true; ///< the pane shows folders of this machine
    int marked = 0;      ///< names, on show
};

struct ContextItem {
    enum class Kind { item, separator, inCopyMenu, openWithMenu };

    Kind kind = Kind::item;
    Command command = {};
    std::string title = {}; ///< empty: that of the command

    friend bool operator==(ContextItem const &, ContextItem const &) = default;
};

/// The title of the submenu that holds the items of the kind inCopyMenu, which follow one another.
inline constexpr std::string_view copyMenuTitle = "Copy";

/// The title of the submenu that lists the applications for a file, and asks for another one with its last item.
inline constexpr std::string_view openWithMenuTitle = "Open With";

/// The items of the menu over a pane, in their order.
std::vector<ContextItem> contextMenuItems(ContextSubject const &subject);

} // namespace tw
