#pragma once

#include "TWCore/Model/Collation.h"
#include "TWCore/Model/DirectorySnapshot.h"
#include "Tarnwick/Settings/FolderPlacement.h"

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace tw {

/// What the rows of a pane are sorted by.
enum class SortKey { name, ext, size, date };

/// The stored text of a sort key: "name", "ext", "size", "date".
std::string_view sortKeyText(SortKey key);
std::optional<SortKey> sortKeyFromText(std::string_view text);

/// What a pane shows: a listing, a filtered and sorted view of it, the marks, and how rows map to entries.
///
/// The rows are the parent row ".." where there is one, then the entries in `order`. Names are never copied out for
/// sorting: `order` holds indexes into the snapshot. Marks are names, so that they survive a refresh and a re-sort.
/// All names here are the exact bytes of the file's name, never the repaired text: two names that look alike on screen
/// must not be mistaken for one another by an operation.
///
/// Threads: main context only.
class PaneModel {
public:
    /// `defaults` outlives the model.
    explicit PaneModel(Defaults const &defaults);

    std::optional<DirectorySnapshot> const &snapshot() const noexcept { return listing; }

    /// Puts another listing on show, with a new collation, and rebuilds. The marks stay.
    void setSnapshot(DirectorySnapshot snapshot);

    std::vector<std::uint32_t> const &order() const noexcept { return visible; }

    SortKey sortKey = SortKey::name;
    bool ascending = true;
    bool showHidden = false;
    std::set<std::string> marked;
    bool alwaysShowParentRow = false; ///< inside an archive, where ".." at the root leaves it

    /// Recomputes `order`. To be called after a change of the fields above or of the folder placement.
    void rebuild();

    bool hasParentRow() const;

    /// All rows, the parent row included.
    int rowCount() const;

    /// The index into the snapshot's entries, or nothing for the parent row and for a row outside.
    std::optional<std::uint32_t> entryIndex(int row) const;
    Entry const *entry(int row) const;

    /// The name of an entry row; empty for any other row.
    std::string_view name(int row) const;
    std::optional<int> rowForName(std::string_view name) const;

    bool isMarked(int row) const;
    void toggleMark(int row);

    enum class Marks { insert, remove };

    /// Marks or unmarks the rows between the two, both included, in either order, clamped to the table.
    void markRange(int from, int to, Marks change);
    void markAll(Marks change);
    void invertMarks();

    /// Marks or unmarks what a mask of `fnmatch` patterns, separated by blanks or semicolons, matches; answers how
    /// many.
    int markMatching(std::string_view mask, Marks change);

    /// The folder above, or nothing at "/".
    std::optional<std::string> parentPath() const;

    /// What an operation works on: the marked names, else the name under the cursor, else nothing.
    std::vector<std::string> operands(std::optional<int> cursorRow) const;

    struct Totals {
        int files = 0; ///< everything that is not a directory
        int dirs = 0;
        std::int64_t bytes = 0; ///< of the files

        friend bool operator==(Totals const &, Totals const &) = default;
    };

    Totals totals() const;

    struct MarkedSummary {
        int count = 0;          ///< visible and marked, directories included
        std::int64_t bytes = 0; ///< of those that are not directories

        friend bool operator==(MarkedSummary const &, MarkedSummary const &) = default;
    };

    MarkedSummary markedSummary() const;

    /// The names of `order`.
    std::vector<std::string> visibleNames() const;

private:
    Defaults const &settings;
    std::optional<DirectorySnapshot> listing;
    Collation collation = Collation::trivial();
    std::vector<std::uint32_t> visible;
};

} // namespace tw
