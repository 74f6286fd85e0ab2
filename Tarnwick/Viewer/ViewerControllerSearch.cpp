// Looking for something in a file that is not here as a whole.

#include "Tarnwick/Viewer/SoughtBytes.h"
#include "Tarnwick/Viewer/ViewerController.h"
#include "Tarnwick/Viewer/ViewerWords.h"

#include <algorithm>

namespace tw {

void ViewerController::find(std::string_view typed)
{
    auto const bytes = soughtBytes(typed, lines.mode, lines.encoding);
    if (!bytes)
        return fail(ViewerWords::cannotBeSought(lines.encoding));
    sought = *bytes;
    match.reset();
    searchFrom(top.line, FileSearch::Which::first);
}

void ViewerController::findAgain(FileSearch::Which which)
{
    if (sought.empty()) {
        if (display)
            display->performInWindow(ViewerAction::find);
        return;
    }
    auto const isDown = which == FileSearch::Which::first;
    searchFrom(match ? *match + (isDown ? 1 : 0) : top.line, which);
}

/// Matches that begin at `offset` or behind it, or the last of those before it. One step after the other, so that a
/// search of any length can be followed and cancelled.
void ViewerController::searchFrom(std::int64_t offset, FileSearch::Which which)
{
    auto const isDown = which == FileSearch::Which::first;
    if (!mayRead || (isDown ? offset >= totalSize : offset <= 0))
        return fail(ViewerWords::notFound());
    auto const overlap = std::ssize(sought) - 1;
    auto const first = isDown ? offset : std::max<std::int64_t>(offset - searchStep, 0);
    auto const end = std::min((isDown ? offset + searchStep : offset) + overlap, totalSize);
    auto const next = isDown ? offset + searchStep : first;
    begin<std::optional<std::int64_t>>(of.file->find(sought, {.from = first, .to = end}, which),
                                       [this, next, which](auto found, auto const &failure) {
                                           isSearching = false;
                                           if (failure)
                                               return fail(ViewerWords::failure(failure));
                                           if (*found)
                                               return showMatch(**found);
                                           searchFrom(next, which);
                                       });
    underWay = Purpose::jump;
    isSearching = true;
    auto const done = isDown ? first : totalSize - end;
    notice = ViewerWords::searching(done, totalSize);
    show();
}

void ViewerController::cancelSearch()
{
    giveUp();
    notice = {};
    show();
}

void ViewerController::showMatch(std::int64_t offset)
{
    match = offset;
    notice = {};
    auto const end = offset + std::ssize(sought);
    if (window.contains(offset) && window.end() >= std::min(end, totalSize) &&
        (window.begin() == 0 || offset - window.begin() > ViewedLines::cutBytes))
        return selectMatch(offset);
    jump(offset - static_cast<std::int64_t>(FileWindow::chunkBytes / 2), [this, offset] { selectMatch(offset); });
}

/// The rows move only if the match is not among them, and it then stands in the upper part.
void ViewerController::selectMatch(std::int64_t offset)
{
    constexpr int partAbove = 3;
    auto const line = lines.startOf(offset);
    ViewerPlace const from{line, lines.charactersBefore(line, offset)};
    ViewerPlace const to{line, lines.charactersBefore(line, offset + std::ssize(sought))};
    auto const rows = pager.rowsFrom(top, rowCount);
    auto const row = pager.rowOf(from);
    if (std::ranges::find(rows, row, &ViewerRow::place) == rows.end())
        moveTo(pager.back(row, rowCount / partAbove));
    select(from, to);
}

} // namespace tw
