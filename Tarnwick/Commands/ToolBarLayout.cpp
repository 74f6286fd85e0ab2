#include "Tarnwick/Commands/ToolBarLayout.h"

#include <algorithm>

namespace tw {

namespace {

// The stored text: what is shown of an item, and then the items.
constexpr std::string_view iconsOnly = "icons";
constexpr std::string_view iconsAndLabels = "icons+labels";

bool isRoom(std::string_view identifier)
{
    return identifier == space || identifier == flexibleSpace;
}

std::string_view nextPieceOf(std::string_view &text)
{
    auto const end = std::min(text.find(' '), text.size());
    auto const piece = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return piece;
}

bool contains(std::vector<std::string_view> const &items, std::string_view identifier)
{
    return std::ranges::find(items, identifier) != items.end();
}

} // namespace

ToolBarLayout ToolBarLayout::usual()
{
    return {.items = {"tw.back", "tw.forward", "tw.connect", "tw.refresh", flexibleSpace, "tw.newFolder", "tw.copy",
                      "tw.move", "tw.rename", "tw.delete", flexibleSpace, "tw.sameFolder", "tw.hidden"}};
}

std::optional<ToolBarLayout> ToolBarLayout::fromText(std::string const &stored)
{
    std::string_view rest = stored;
    auto const shown = nextPieceOf(rest);
    if (shown != iconsOnly && shown != iconsAndLabels)
        return std::nullopt;
    ToolBarLayout layout{.labels = shown == iconsOnly ? Labels::hidden : Labels::shown};
    while (!rest.empty() && layout.items.size() < mostToolBarItems) {
        auto const *const item = toolBarItem(nextPieceOf(rest));
        if (item && (isRoom(item->identifier) || !contains(layout.items, item->identifier)))
            layout.items.push_back(item->identifier);
    }
    return layout;
}

std::string ToolBarLayout::text() const
{
    std::string stored(labels == Labels::shown ? iconsAndLabels : iconsOnly);
    for (auto const identifier : items)
        stored.append(" ").append(identifier);
    return stored;
}

std::vector<std::string_view> ToolBarLayout::available() const
{
    std::vector<std::string_view> left;
    for (auto const &item : toolBarItems()) {
        if (isRoom(item.identifier) || !contains(items, item.identifier))
            left.push_back(item.identifier);
    }
    return left;
}

} // namespace tw
