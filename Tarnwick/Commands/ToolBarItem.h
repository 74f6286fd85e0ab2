#pragma once

#include "Tarnwick/Commands/Command.h"

#include <optional>
#include <span>
#include <string_view>

namespace tw {

/// Something that can stand on the tool bar.
struct ToolBarItem {
    std::string_view identifier; ///< in the settings
    std::string_view label;
    std::optional<Command> command = {}; ///< nothing: room
    /// The picture's names: in an icon theme, by the freedesktop naming specification, which may have none for it, and
    /// among our own.
    std::string_view themeIcon = {};
    std::string_view ownIcon = {};
};

/// Room that grows with the window.
inline constexpr std::string_view flexibleSpace = "tw.flexibleSpace";

/// Room for the width of an icon.
inline constexpr std::string_view space = "tw.space";

/// All items, in the order in which they are offered.
std::span<ToolBarItem const> toolBarItems();

/// The item of an identifier; null for any other text.
ToolBarItem const *toolBarItem(std::string_view identifier);

} // namespace tw
