#include "Tarnwick/Table/ColumnLayout.h"

#include <algorithm>
#include <charconv>

namespace tw {

namespace {

/// Narrower, a column could not be grabbed any more.
constexpr int leastWidth = 24;

/// Wider than any text of the columns that this holds for; a stored number beyond is a mistake.
constexpr int mostWidth = 1000;

/// Which column is given up first. The extension is a part of the name, and stays.
constexpr std::array givenUpInOrder{PaneColumn::attr, PaneColumn::date, PaneColumn::size};

constexpr std::size_t indexOf(PaneColumn column)
{
    return static_cast<std::size_t>(column);
}

constexpr std::size_t nameIndex = indexOf(PaneColumn::name);

std::optional<PaneColumn> columnOf(std::string_view identifier)
{
    auto const found = std::ranges::find(paneColumns, identifier, paneColumnIdentifier);
    return found == paneColumns.end() ? std::nullopt : std::optional(*found);
}

void append(std::string &choices, std::string const &choice)
{
    choices += (choices.empty() ? "" : " ") + choice;
}

std::optional<int> numberIn(std::string_view text)
{
    int number = 0;
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return number;
}

} // namespace

int ColumnLayout::width(PaneColumn column) const
{
    return chosen[indexOf(column)].value_or(widths[indexOf(column)]);
}

ColumnLayout::Widths ColumnLayout::fitted(int available) const
{
    Widths result{};
    auto left = available;
    for (auto const column : paneColumns) {
        if (column == PaneColumn::name || !isWanted(column))
            continue;
        result[indexOf(column)] = width(column);
        left -= width(column);
    }
    for (auto const column : givenUpInOrder) {
        if (left >= widths[nameIndex])
            break;
        left += std::exchange(result[indexOf(column)], 0);
    }
    result[nameIndex] = std::max(left, leastWidth);
    return result;
}

void ColumnLayout::choose(PaneColumn column, int wanted, int available)
{
    if (column == PaneColumn::name)
        return;
    auto const now = fitted(available);
    auto const most = now[indexOf(column)] + now[nameIndex] - widths[nameIndex];
    chosen[indexOf(column)] = std::clamp(wanted, leastWidth, std::clamp(most, leastWidth, mostWidth));
}

void ColumnLayout::reset(PaneColumn column)
{
    chosen[indexOf(column)].reset();
}

bool ColumnLayout::canBeHidden(PaneColumn column)
{
    return column != PaneColumn::name && column != PaneColumn::ext;
}

bool ColumnLayout::isWanted(PaneColumn column) const
{
    return !isHidden[indexOf(column)];
}

void ColumnLayout::want(PaneColumn column, bool wanted)
{
    isHidden[indexOf(column)] = !wanted && canBeHidden(column);
}

std::string ColumnLayout::text() const
{
    std::string result;
    for (auto const column : paneColumns) {
        std::string const identifier(paneColumnIdentifier(column));
        if (auto const &choice = chosen[indexOf(column)])
            append(result, identifier + ":" + std::to_string(*choice));
        if (!isWanted(column))
            append(result, "-" + identifier);
    }
    return result;
}

void ColumnLayout::adopt(std::string_view stored)
{
    chosen = {};
    isHidden = {};
    while (!stored.empty()) {
        auto const end = std::min(stored.find(' '), stored.size());
        auto const part = stored.substr(0, end);
        stored.remove_prefix(std::min(end + 1, stored.size()));
        if (part.starts_with('-')) {
            if (auto const column = columnOf(part.substr(1)))
                want(*column, false);
            continue;
        }
        auto const colon = part.find(':');
        if (colon == std::string_view::npos)
            continue;
        auto const column = columnOf(part.substr(0, colon));
        auto const number = numberIn(part.substr(colon + 1));
        if (column && *column != PaneColumn::name && number && *number >= leastWidth && *number <= mostWidth)
            chosen[indexOf(*column)] = number;
    }
}

} // namespace tw
