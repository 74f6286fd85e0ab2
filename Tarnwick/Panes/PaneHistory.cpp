#include "Tarnwick/Panes/PaneHistory.h"

#include <algorithm>

namespace tw {

void PaneHistory::recordVisit(Visit visit)
{
    auto const index = std::exchange(replayingHistory, std::nullopt).value_or(historyIndex);
    if (at(index) && history[static_cast<std::size_t>(index)] == visit) {
        historyIndex = index;
        return;
    }
    history.resize(static_cast<std::size_t>(historyIndex + 1));
    history.push_back(std::move(visit));
    if (history.size() > mostVisits)
        history.pop_front();
    historyIndex = static_cast<int>(history.size()) - 1;
}

std::optional<PaneHistory::Visit> PaneHistory::replay(int step)
{
    auto const index = from() + step;
    if (!at(index))
        return std::nullopt;
    replayingHistory = index;
    return history[static_cast<std::size_t>(index)];
}

void PaneHistory::goTo(Visit const &visit)
{
    auto const newest = std::find(history.rbegin(), history.rend(), visit);
    if (newest != history.rend())
        replayingHistory = static_cast<int>(history.rend() - newest) - 1;
}

void PaneHistory::setOutFor(Visit const &visit)
{
    if (replayingHistory && history[static_cast<std::size_t>(*replayingHistory)] != visit)
        stay();
}

std::vector<PaneHistory::Visit> PaneHistory::recentVisits(std::size_t limit) const
{
    std::vector<Visit> recent;
    for (auto visit = history.rbegin(); visit != history.rend() && recent.size() < limit; ++visit) {
        if (std::ranges::find(recent, *visit) == recent.end())
            recent.push_back(*visit);
    }
    return recent;
}

} // namespace tw
