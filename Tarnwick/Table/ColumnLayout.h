#pragma once

#include "Tarnwick/Table/PaneCells.h"

#include <array>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace tw {

/// Which columns a pane has, in which order, and how wide they are. The name takes what the others leave.
///
/// A column is as wide as the view proposes for its font until the user gives it a width. In a pane that is too
/// narrow the least important columns go, so that names stay readable; they come back with the room. The name stands
/// first: its icon and its cursor begin the row.
///
/// Widths are in device-independent pixels, in the order of `paneColumns`.
class ColumnLayout {
public:
    using Widths = std::array<int, paneColumns.size()>;
    using Order = std::array<PaneColumn, paneColumns.size()>;

    /// `proposed` are the widths of the columns; for the name it is the least that it is left with.
    explicit ColumnLayout(Widths const &proposed) : widths(proposed) {}

    /// Other proposals, for another font. What the user chose stays.
    void propose(Widths const &proposed) { widths = proposed; }

    /// The widths for a table that is `available` wide. 0: the column is not shown.
    Widths fitted(int available) const;

    /// Gives a column a width of the user's choice, within what leaves the name its least in a table that is
    /// `available` wide. The name's own width cannot be chosen.
    void choose(PaneColumn column, int width, int available);

    /// Forgets the user's choice for a column.
    void reset(PaneColumn column);

    /// Whether the user may do without a column. Names are always there: without the column of extensions, whole.
    static bool canBeHidden(PaneColumn column);

    bool isWanted(PaneColumn column) const;
    void want(PaneColumn column, bool wanted);

    /// From left to right, with the hidden columns.
    Order const &order() const noexcept { return ordered; }

    /// Takes over an order. The name goes first, a column counts where it comes first, and those that are left out
    /// follow in their usual order.
    void arrange(std::span<PaneColumn const> wanted);

    /// The user's choices as they are stored: "ext:60 date:140 -attr order=date,size,ext,attr".
    std::string text() const;

    /// Takes over stored choices; what makes no sense in them is left out.
    void adopt(std::string_view stored);

private:
    int width(PaneColumn column) const;
    void adoptChoice(std::string_view choice);

    Widths widths;
    std::array<std::optional<int>, paneColumns.size()> chosen;
    std::array<bool, paneColumns.size()> isHidden{}; ///< by the user
    Order ordered = paneColumns;
};

} // namespace tw
