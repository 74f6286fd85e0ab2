#pragma once

#include "Tarnwick/Commands/ToolBarItem.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tw {

/// What stands on the tool bar, and how.
struct ToolBarLayout {
    enum class Labels { hidden, shown };

    std::vector<std::string_view> items = {}; ///< identifiers of `toolBarItems`
    Labels labels = Labels::hidden;

    /// What a new user has.
    static ToolBarLayout usual();

    /// The layout of a stored text. An item that is not known, or that stands there a second time, is left out.
    /// Nothing: the text is no layout.
    static std::optional<ToolBarLayout> fromText(std::string const &text);

    /// The layout of a stored text, or the usual one.
    static ToolBarLayout stored(std::string const &text) { return fromText(text).value_or(usual()); }

    std::string text() const;

    /// What can be added: the items that do not stand there yet, and room.
    std::vector<std::string_view> available() const;

    friend bool operator==(ToolBarLayout const &, ToolBarLayout const &) = default;
};

/// More items than that are left out: a bar of them fits on no screen.
inline constexpr std::size_t mostToolBarItems = 64;

} // namespace tw
