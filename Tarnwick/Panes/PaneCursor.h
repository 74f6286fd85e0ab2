#pragma once

#include "Tarnwick/Table/KeyPress.h"
#include "Tarnwick/Table/PaneModel.h"

#include <optional>
#include <string_view>

namespace tw {

/// The cursor of a pane, and the marks that follow its movements.
///
/// A range of marks goes from the anchor to the cursor. The anchor stays while the range grows and shrinks, and follows
/// any other movement.
///
/// Lifetime: the rows outlive it.
class PaneCursor {
public:
    explicit PaneCursor(PaneModel &rows) : rows(rows) {}

    /// Nothing in an empty table.
    std::optional<int> row() const noexcept { return current; }

    /// The name under the cursor; empty on the parent row and in an empty table.
    std::string_view name() const { return current ? rows.name(*current) : std::string_view(); }

    /// Where a key leads from here; nothing for a key that moves no cursor. `pageRows` are the whole rows on screen.
    std::optional<int> target(Key key, int pageRows) const;

    /// A row outside of the table changes nothing, here and below.
    void moveTo(int row);

    /// Moves to the row of a name, or to the top if no row has it.
    void restore(std::string_view name);

    enum class OtherMarks { dropped, kept };

    /// Marks from the anchor to a row, where the cursor goes. Costs as much as the rows that come or go, so that a held
    /// key is cheap in any folder.
    void markUpTo(int row, OtherMarks others = OtherMarks::dropped);

    /// Turns the mark of a row round and puts the cursor there.
    void toggleMark(int row);

    void invertMarks();
    void markAll();
    void unmarkAll();
    void unmark(std::span<std::string const> names);

    /// Marks or unmarks the rows that a `NameMask` matches; answers how many.
    int markMatching(std::string_view mask, PaneModel::Marks change);

private:
    int lastRow() const { return rows.rowCount() - 1; }

    bool isInside(int row) const { return row >= 0 && row <= lastRow(); }

    PaneModel &rows;
    std::optional<int> current;
    int anchor = 0;
    /// The end of a range that is all that is marked; the other end is the anchor. Nothing: any marks, or none.
    std::optional<int> rangeEnd;
};

} // namespace tw
