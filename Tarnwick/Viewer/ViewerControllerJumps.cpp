// Jumps to a place in a file that may not be in memory.

#include "Tarnwick/Viewer/ViewerController.h"
#include "Tarnwick/Viewer/ViewerWords.h"

#include <algorithm>

namespace tw {

void ViewerController::jumpToStart()
{
    if (window.begin() == 0 && !window.isEmpty())
        return moveTo({0, 0});
    jump(0, {});
}

void ViewerController::jumpToEnd()
{
    auto const toLastPage = [this] {
        top = pager.lastPage(rowCount);
        staysAtEnd = true;
    };
    if (reachedEnd && !window.isEmpty()) {
        notice = remark = {};
        toLastPage();
        return show();
    }
    jump(totalSize - static_cast<std::int64_t>(FileWindow::chunkBytes), toLastPage);
}

void ViewerController::jumpTo(std::int64_t offset)
{
    offset = std::clamp<std::int64_t>(offset, 0, totalSize);
    auto const go = [this, offset] { moveTo(pager.rowWith(offset)); };
    if (window.contains(offset) && (window.begin() == 0 || offset - window.begin() > ViewedLines::cutBytes))
        return go();
    // With what is before it, so that going up needs no further read.
    jump(offset - static_cast<std::int64_t>(FileWindow::chunkBytes / 2), go);
}

void ViewerController::goTo(ViewerTarget target)
{
    constexpr std::int64_t whole = 100;
    switch (target.unit) {
    case ViewerTarget::Unit::percent:
        return target.number == whole ? jumpToEnd() : scrollTo(static_cast<double>(target.number) / whole);
    case ViewerTarget::Unit::offset:
        return jumpTo(target.number);
    case ViewerTarget::Unit::line:
        return goToLine(std::max<std::int64_t>(target.number, 1));
    }
}

void ViewerController::goToLine(std::int64_t number)
{
    auto const known = counts.end().linesBefore + 1;
    auto const mark = counts.before(std::min(number, known));
    auto const isKnown = number <= known || counts.end().offset >= totalSize;
    auto const go = [this, mark, count = std::min(number, known) - 1 - mark.linesBefore, isKnown, known] {
        goBehindLineEnds(mark.offset, count);
        if (!isKnown)
            fail(ViewerWords::onlySoManyLines(known));
    };
    if (window.contains(mark.offset))
        return go();
    jump(mark.offset, go);
}

void ViewerController::goBehindLineEnds(std::int64_t from, std::int64_t count)
{
    auto offset = from;
    for (; count > 0; --count) {
        auto const behind = lines.behindLineEnd(offset, window.end());
        if (!behind)
            break;
        offset = *behind;
    }
    moveTo(pager.rowWith(std::min(offset, std::max(window.end() - 1, window.begin()))));
}

} // namespace tw
