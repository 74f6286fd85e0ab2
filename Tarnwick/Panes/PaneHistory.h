#pragma once

#include <deque>
#include <optional>
#include <string>
#include <vector>

namespace tw {

/// The places that a pane has shown, in the order of the visits, and which of them is on show.
///
/// Going back or forward moves within the visits. The place counts as on show when the pane has arrived: a place that
/// is not reached changes nothing, and repeated keys go further while the first place is still on its way.
///
/// Threads: main context only.
class PaneHistory {
public:
    /// More than a person goes back through. The oldest visit is forgotten first.
    static constexpr std::size_t mostVisits = 200;

    /// The archive that a place was in: where its file lies. No path: the place was in none.
    struct Archive {
        std::string connection = {};
        std::string path = {};
        bool isOutermost = true; ///< the place was in this archive itself, and not in another one inside it

        friend bool operator==(Archive const &, Archive const &) = default;
    };

    /// A path alone would lead to a folder of another machine once the pane has changed its connection.
    struct Visit {
        std::string connection;
        std::string path;
        Archive archive = {};

        friend bool operator==(Visit const &, Visit const &) = default;
    };

    /// The pane has arrived. A place that is visited anew ends the way forward.
    void recordVisit(Visit visit);

    /// The visit to go to now, or nothing at the end of the visits.
    std::optional<Visit> goBack() { return replay(-1); }

    std::optional<Visit> goForward() { return replay(1); }

    /// Goes to the newest visit of a place; nothing happens if the place was not visited.
    void goTo(Visit const &visit);

    /// The pane sets out for a place. What it was on its way to before does not count any more.
    void setOutFor(Visit const &visit);

    /// The pane stays where it is.
    void stay() { replayingHistory.reset(); }

    bool canGoBack() const { return at(from() - 1); }

    bool canGoForward() const { return at(from() + 1); }

    /// The places of the visits, each once, the newest first.
    std::vector<Visit> recentVisits(std::size_t limit) const;

private:
    /// The visit on show, or the visit that the pane is on its way to.
    int from() const { return replayingHistory.value_or(historyIndex); }

    bool at(int index) const { return index >= 0 && index < static_cast<int>(history.size()); }

    std::optional<Visit> replay(int step);

    std::deque<Visit> history;
    int historyIndex = -1; ///< the visit on show; -1 before the first
    std::optional<int> replayingHistory;
};

} // namespace tw
