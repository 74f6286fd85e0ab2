// Looking for something in a file that is not here as a whole.

#include "TWCore/Shell/ByteExpression.h"
#include "Tarnwick/Viewer/ViewerController.h"
#include "Tarnwick/Viewer/ViewerWords.h"

#include <algorithm>
#include <chrono>

namespace tw {

void ViewerController::find(SearchWish const &what)
{
    auto made = what.in(lines.mode, lines.encoding);
    if (!made)
        return fail(std::move(made).error());
    sought = *std::move(made);
    match.reset();
    search({sought, FileSearch::Which::first, top.line, totalSize});
}

void ViewerController::findAgain(FileSearch::Which which)
{
    if (sought.pattern.empty()) {
        if (display)
            display->performInWindow(ViewerAction::find);
        return;
    }
    auto const isDown = which == FileSearch::Which::first;
    search({sought, which, match ? *match + (isDown ? 1 : 0) : top.line, totalSize});
}

/// One step after the other, so that a search of any length can be followed and cancelled.
void ViewerController::search(SearchCourse course)
{
    auto const part = mayRead ? course.next() : std::nullopt;
    if (!part)
        return fail(ViewerWords::notFound());
    begin<std::optional<std::int64_t>>(
        of.file->find(sought, *part, course.direction()),
        [this, course, began = std::chrono::steady_clock::now()](auto found, auto const &failure) mutable {
            isSearching = false;
            course.took(std::chrono::steady_clock::now() - began);
            if (failure)
                return fail(ViewerWords::failure(failure));
            if (!*found)
                return search(course);
            auto const isDown = course.direction() == FileSearch::Which::first;
            showMatch(**found, !course.hasWrapped() ? Text()
                               : isDown             ? ViewerWords::continuedAtTheBeginning()
                                                    : ViewerWords::continuedAtTheEnd());
        });
    underWay = Purpose::jump;
    isSearching = true;
    notice = ViewerWords::searching(course.bytesSearched(), totalSize);
    show();
}

void ViewerController::cancelSearch()
{
    giveUp();
    notice = {};
    show();
}

void ViewerController::showMatch(std::int64_t offset, Text const &words)
{
    match = offset;
    notice = {};
    auto const end = offset + std::ssize(sought.pattern);
    if (window.contains(offset) && window.end() >= std::min(end, totalSize) &&
        (window.begin() == 0 || offset - window.begin() > ViewedLines::cutBytes))
        return selectMatch(offset, words);
    jump(offset - static_cast<std::int64_t>(FileWindow::chunkBytes / 2),
         [this, offset, words] { selectMatch(offset, words); });
}

/// A host says where a match of an expression begins. How long it is depends on the rest of its line.
std::int64_t ViewerController::endOfMatch(std::int64_t offset) const
{
    if (sought.kind == FileSearch::Sought::Kind::bytes)
        return offset + std::ssize(sought.pattern);
    auto const begin = std::max(offset - FileSearch::contextBytes, window.begin());
    auto const text = window.copy(begin, offset + FileSearch::mostBytesOfMatch);
    auto end = offset + 1;
    try {
        ByteExpression::eachMatch(sought.pattern, text, [&](ByteExpression::Match each) {
            auto const from = begin + static_cast<std::int64_t>(each.from);
            if (from == offset)
                end = begin + static_cast<std::int64_t>(each.to);
            return from < offset;
        });
    } catch (ByteExpression::TooSlow const &) {
        return end;
    }
    return end;
}

/// The rows move only if the match is not among them, and it then stands in the upper part.
void ViewerController::selectMatch(std::int64_t offset, Text const &words)
{
    constexpr int partAbove = 3;
    auto const line = lines.startOf(offset);
    ViewerPlace const from{line, lines.charactersBefore(line, offset)};
    ViewerPlace const to{line, lines.charactersBefore(line, endOfMatch(offset))};
    auto const rows = pager.rowsFrom(top, rowCount);
    auto const row = pager.rowOf(from);
    if (std::ranges::find(rows, row, &ViewerRow::place) == rows.end())
        moveTo(pager.back(row, rowCount / partAbove));
    remark = words;
    select(from, to);
}

} // namespace tw
