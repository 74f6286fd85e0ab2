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
    auto const searched = course.bytesSearched();
    auto progress = [weak = weak_from_this(), searched, from = part->from](std::int64_t offset) {
        if (auto const self = weak.lock())
            self->showProgress(searched + std::max<std::int64_t>(offset - from, 0));
    };
    begin<FileSearch::Found>(
        of.file->find({sought, *part, course.direction(), partAtHand(), course.farthest()}, std::move(progress)),
        [this, course, began = std::chrono::steady_clock::now()](auto found, auto const &failure) mutable {
            isSearching = false;
            if (failure)
                return fail(ViewerWords::failure(failure));
            course.took(std::chrono::steady_clock::now() - began, found->to);
            if (!found->match)
                return search(course);
            auto const isDown = course.direction() == FileSearch::Which::first;
            showMatch(*std::move(found->match), !course.hasWrapped() ? Text()
                                                : isDown             ? ViewerWords::continuedAtTheBeginning()
                                                                     : ViewerWords::continuedAtTheEnd());
        });
    underWay = Purpose::jump;
    isSearching = true;
    showProgress(searched);
}

void ViewerController::showProgress(std::int64_t searched)
{
    notice = ViewerWords::searching(std::min(searched, totalSize), totalSize);
    show();
}

void ViewerController::cancelSearch()
{
    giveUp();
    notice = {};
    show();
}

/// Where a match can begin that is shown without reading: it is in the window as a whole, with what is before it.
FileSearch::Part ViewerController::partAtHand() const
{
    auto const isWhole = window.end() >= totalSize;
    return {.from = window.begin() == 0 ? 0 : window.begin() + ViewedLines::cutBytes + 1,
            .to = isWhole ? window.end() : window.end() - std::ssize(sought.pattern) + 1};
}

void ViewerController::showMatch(FileSearch::Match found, Text const &words)
{
    auto const offset = found.offset;
    match = offset;
    notice = {};
    if (auto const atHand = partAtHand(); offset >= atHand.from && offset < atHand.to)
        return selectMatch(offset, words);
    auto const go = [this, offset, words] { selectMatch(offset, words); };
    auto const begin = FileSearch::beginOfAround(offset);
    auto const end = begin + std::ssize(found.around);
    if (end < std::min(offset + std::ssize(sought.pattern), totalSize) || end <= offset)
        return jump(offset - static_cast<std::int64_t>(FileWindow::chunkBytes / 2), go);
    arrived({Purpose::jump, begin, static_cast<std::size_t>(FileSearch::bytesAround), go}, std::move(found.around));
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
