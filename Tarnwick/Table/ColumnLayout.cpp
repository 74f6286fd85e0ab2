#include "Tarnwick/Table/ColumnLayout.h"

#include <algorithm>
#include <charconv>
#include <ranges>
#include <vector>

namespace tw {

namespace {

/// Narrower, a column could not be grabbed any more.
constexpr int leastWidth = 24;

/// Wider than any text of the columns that this holds for; a stored number beyond is a mistake.
constexpr int mostWidth = 1000;

constexpr std::string_view orderPrefix = "order=";

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

/// Takes the part before the next separator off the text.
std::string_view takePart(std::string_view &text, char separator)
{
    auto const end = std::min(text.find(separator), text.size());
    auto const part = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return part;
}

std::vector<PaneColumn> columnsIn(std::string_view list)
{
    std::vector<PaneColumn> columns;
    while (!list.empty()) {
        if (auto const column = columnOf(takePart(list, ',')))
            columns.push_back(*column);
    }
    return columns;
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
    return column != PaneColumn::name;
}

bool ColumnLayout::isWanted(PaneColumn column) const
{
    return !isHidden[indexOf(column)];
}

void ColumnLayout::want(PaneColumn column, bool wanted)
{
    isHidden[indexOf(column)] = !wanted && canBeHidden(column);
}

void ColumnLayout::arrange(std::span<PaneColumn const> wanted)
{
    std::vector columns{PaneColumn::name};
    columns.insert(columns.end(), wanted.begin(), wanted.end());
    columns.insert(columns.end(), paneColumns.begin(), paneColumns.end());
    auto end = ordered.begin();
    for (auto const column : columns) {
        if (std::find(ordered.begin(), end, column) == end)
            *end++ = column;
    }
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
    if (ordered == paneColumns)
        return result;
    std::string list;
    for (auto const column : ordered | std::views::drop(1))
        list += (list.empty() ? "" : ",") + std::string(paneColumnIdentifier(column));
    append(result, std::string(orderPrefix) + list);
    return result;
}

void ColumnLayout::adopt(std::string_view stored)
{
    chosen = {};
    isHidden = {};
    ordered = paneColumns;
    while (!stored.empty())
        adoptChoice(takePart(stored, ' '));
}

void ColumnLayout::adoptChoice(std::string_view choice)
{
    if (choice.starts_with(orderPrefix))
        return arrange(columnsIn(choice.substr(orderPrefix.size())));
    if (choice.starts_with('-')) {
        if (auto const column = columnOf(choice.substr(1)))
            want(*column, false);
        return;
    }
    auto const colon = choice.find(':');
    if (colon == std::string_view::npos)
        return;
    auto const column = columnOf(choice.substr(0, colon));
    auto const number = numberIn(choice.substr(colon + 1));
    if (column && *column != PaneColumn::name && number && *number >= leastWidth && *number <= mostWidth)
        chosen[indexOf(*column)] = number;
}

} // namespace tw
