#pragma once

#include "TWCore/Model/Collation.h"
#include "TWCore/Model/DirectorySnapshot.h"
#include "Tarnwick/Settings/FolderPlacement.h"
#include "Tarnwick/Table/CutFiles.h"
#include "Tarnwick/Table/FoldedNames.h"
#include "Tarnwick/Table/MarkSet.h"
#include "Tarnwick/Table/OrderedListing.h"
#include "Tarnwick/Table/ViewOptions.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tw {

/// What a pane shows: a listing, a filtered and sorted view of it, the marks, and how rows map to entries.
///
/// The rows are the parent row ".." where there is one, then the entries in `order`. Names are never copied out for
/// sorting: `order` holds indexes into the snapshot. Marks belong to names, so that they survive a refresh and a
/// re-sort. All names here are the exact bytes of the file's name, never the repaired text: two names that look alike
/// on screen must not be mistaken for one another by an operation.
///
/// Threads: main context only.
class PaneModel {
public:
    std::optional<DirectorySnapshot> const &snapshot() const noexcept { return listing; }

    /// Puts another listing on show, with a new collation. The marks stay.
    void setSnapshot(DirectorySnapshot snapshot);

    /// The same, without the work of ordering the rows if they are ordered as this pane shows them.
    void setListing(OrderedListing next);

    std::vector<std::uint32_t> const &order() const noexcept { return visible; }

    ViewOptions const &viewOptions() const noexcept { return options; }

    void setViewOptions(ViewOptions const &wanted);

    FolderPlacement folderPlacement() const noexcept { return placement; }

    void setFolderPlacement(FolderPlacement wanted);

    /// Inside an archive, where ".." at the root leaves it.
    void setAlwaysShowParentRow(bool always) { alwaysShowParentRow = always; }

    bool hasParentRow() const;

    /// All rows, the parent row included.
    int rowCount() const;

    /// The index into the snapshot's entries, or nothing for the parent row and for a row outside.
    std::optional<std::uint32_t> entryIndex(int row) const;
    Entry const *entry(int row) const;

    /// The name of an entry row; empty for any other row.
    std::string_view name(int row) const;
    std::optional<int> rowForName(std::string_view name) const;

    /// The row of the first name, from row `from` on and round, that begins with `typed`, or else contains it, whatever
    /// the case. The names are kept in the form for this until another listing is on show or `endFinding`.
    std::optional<int> findRow(std::string_view typed, int from);

    /// True if `findRow` has the names in its form already.
    bool hasFoldedNames() const noexcept { return foldedNames.has_value(); }

    /// Names that were folded elsewhere. Does nothing if another listing than theirs is on show.
    void takeFoldedNames(DirectorySnapshot const &of, FoldedNames names);

    void endFinding();

    bool isMarked(int row) const;
    void toggleMark(int row);

    enum class Marks { insert, remove };

    /// Marks or unmarks the rows between the two, both included, in either order, clamped to the table.
    void markRange(int from, int to, Marks change);
    void markAll(Marks change);
    void invertMarks();

    /// Marks or unmarks the rows that a `NameMask` matches; answers how many.
    int markMatching(std::string_view mask, Marks change);

    /// Removes the marks on those of the names that are on show.
    void unmark(std::span<std::string const> names);

    /// False with a mark on any name, on show or not.
    bool isUnmarked() const noexcept { return marks.isEmpty(); }

    /// Removes the marks on names that are not on show.
    void unmarkWhatIsNotOnShow();

    /// The marked names that are on show, in the order of their rows.
    std::vector<std::string> markedNames() const;

    /// The folder above, or nothing at "/".
    std::optional<std::string> parentPath() const;

    /// What an operation works on: the marked names that are on show, else the name under the cursor, else nothing.
    std::vector<std::string> operands(std::optional<int> cursorRow) const;

    /// The files that were cut on the connection of the pane, in whatever folder; null: none.
    void setCut(std::shared_ptr<CutFiles const> files) { cut = std::move(files); }

    /// True if the row's file was cut, and is still here.
    bool isCut(int row) const;

    struct Totals {
        int files = 0; ///< everything that is not a directory
        int dirs = 0;
        std::int64_t bytes = 0; ///< of the files

        friend bool operator==(Totals const &, Totals const &) = default;
    };

    /// Of the rows on show. Costs the same for any number of rows.
    Totals totals() const;

    struct MarkedSummary {
        int count = 0;          ///< visible and marked, directories included
        std::int64_t bytes = 0; ///< of those that are not directories

        friend bool operator==(MarkedSummary const &, MarkedSummary const &) = default;
    };

    /// Of the marks on show. Costs the same for any number of marks.
    MarkedSummary markedSummary() const;

    /// The names of `order`.
    std::vector<std::string> visibleNames() const;

private:
    /// Sizes are what a host claims, and may be anything. Wide enough for the sum of all of them, so that a size can be
    /// taken away again.
    using WideSum = __int128;

    /// Counts of rows, kept up to date with each change, so that nothing has to be counted for a key press.
    struct Sums {
        int files = 0;
        int dirs = 0;
        WideSum bytes = 0;

        /// Counts an entry in (1) or out (-1).
        void count(Entry const &entry, int sign);
    };

    void rebuild();
    void show(std::vector<std::uint32_t> rows);
    Entry const &entryAt(std::uint32_t index) const;
    std::string_view nameAt(std::uint32_t index) const;
    bool isOnShow(std::string_view name) const;
    void mark(std::uint32_t index, bool marked);

    std::optional<DirectorySnapshot> listing;
    Collation collation = Collation::trivial();
    ViewOptions options;
    FolderPlacement placement = FolderPlacement::top;
    bool alwaysShowParentRow = false;
    std::vector<std::uint32_t> visible;
    std::shared_ptr<CutFiles const> cut;
    MarkSet marks; ///< of entries on show and of hidden ones
    Sums shown;
    Sums shownMarked;

    // During a search.
    std::optional<FoldedNames> foldedNames; ///< of the listing
    std::vector<std::uint32_t> places;      ///< of its entries among `visible`
};

} // namespace tw
