#pragma once

#include "Tarnwick/Table/PaneModel.h"

#include <array>
#include <string>
#include <string_view>

namespace tw {

/// The columns of a pane's table, in their usual order.
enum class PaneColumn { name, ext, size, date, attr };

inline constexpr std::array paneColumns{PaneColumn::name, PaneColumn::ext, PaneColumn::size, PaneColumn::date,
                                        PaneColumn::attr};

/// The stored identifier of a column: "name", "ext", "size", "date", "attr".
std::string_view paneColumnIdentifier(PaneColumn column);

/// The title of a column, which is its translation key too.
std::string_view paneColumnTitle(PaneColumn column);

/// The sort key that a click on the column's title toggles; none for the attributes.
std::optional<SortKey> sortKeyOf(PaneColumn column);

/// The text of one cell, UTF-8. Made when it is asked for, so that only rows on screen cost anything. A name is shown
/// as `onOneLine` has it.
std::string paneCellText(PaneModel const &model, int row, PaneColumn column);

} // namespace tw
