#include "Tarnwick/Viewer/ViewerController.h"

#include "TWCore/Async/Outcome.h"
#include "Tarnwick/Viewer/ViewerWords.h"

#include <algorithm>

namespace tw {

namespace {

/// Less than this before and behind the rows on show, and the next chunk is read.
constexpr std::int64_t reserveBytes = 128 * 1024;

/// Of a chunk from the middle of a file, its first line may begin in the middle of a character.
std::string_view fromFirstLine(std::string_view bytes)
{
    constexpr std::size_t mostSkipped = 4096;
    auto const end = bytes.substr(0, mostSkipped).find('\n');
    return end == std::string_view::npos ? bytes : bytes.substr(end + 1);
}

TextDecoding::Encoding encodingAfter(TextDecoding::Encoding encoding)
{
    auto const *const at = std::ranges::find(TextDecoding::encodings, encoding);
    return at + 1 == TextDecoding::encodings.end() ? TextDecoding::encodings.front() : *(at + 1);
}

} // namespace

ViewerController::ViewerController(std::shared_ptr<Executor> mainContext, ViewerSubject subject)
    : executor(std::move(mainContext)), of(std::move(subject)), totalSize(of.size)
{
}

ViewerController::~ViewerController()
{
    stop.request_stop();
}

void ViewerController::attach(ViewerDisplay &shown)
{
    display = &shown;
    show();
}

void ViewerController::start()
{
    auto const readBeginning = [this] { jump(0, {}); };
    // A plain file whose size the listing has needs no question: one round trip less.
    if (of.kind == EntryKind::file && totalSize > 0)
        readBeginning();
    else
        look(readBeginning);
}

template <class T>
Task<void> ViewerController::waitFor(std::weak_ptr<ViewerController> weak, std::uint64_t asked, Task<T> work,
                                     Then<T> then)
{
    auto outcome = co_await outcomeOf(std::move(work));
    auto const self = weak.lock();
    if (!self || self->wish != asked)
        co_return;
    self->underWay.reset();
    then(std::move(outcome.value), outcome.failure);
}

template <class T>
void ViewerController::begin(Task<T> work, Then<T> then)
{
    stop.request_stop();
    stop = {};
    ++wish;
    spawn({executor, stop.get_token()}, waitFor<T>(weak_from_this(), wish, std::move(work), std::move(then)));
}

void ViewerController::look(std::function<void()> then)
{
    begin<ViewedFile::Facts>(of.file->look(), [this, then = std::move(then)](auto facts, auto const &failure) {
        if (failure)
            return fail(ViewerWords::failure(failure));
        looked(*facts, then);
    });
    underWay = Purpose::jump;
    show();
}

void ViewerController::looked(ViewedFile::Facts facts, std::function<void()> const &then)
{
    if (facts.kind != EntryKind::file)
        return fail(ViewerWords::notAFile(facts.kind));
    totalSize = facts.size;
    then();
}

void ViewerController::jump(std::int64_t offset, std::function<void()> thenGo)
{
    read({Purpose::jump, std::max<std::int64_t>(offset, 0), FileWindow::chunkBytes, std::move(thenGo)});
}

void ViewerController::read(Read what)
{
    auto work = of.file->read(what.offset, what.length);
    auto const purpose = what.purpose;
    begin<std::string>(std::move(work), [this, what = std::move(what)](auto bytes, auto const &failure) {
        if (failure)
            return fail(ViewerWords::failure(failure));
        arrived(what, *std::move(bytes));
    });
    underWay = purpose;
    show();
}

void ViewerController::arrived(Read const &what, std::string bytes)
{
    if (what.purpose == Purpose::jump)
        notice = {};
    if (what.purpose == Purpose::prepend)
        return prepend(what, std::move(bytes));
    if (bytes.empty() && what.offset < totalSize)
        return nothingThere(what);
    reachedEnd = bytes.size() < what.length;
    counts.note(what.offset, bytes);
    if (what.purpose == Purpose::append)
        window.append(std::move(bytes));
    else
        replaceWith(what, std::move(bytes));
    // What was read says better than the listing how long the file is.
    totalSize = reachedEnd ? window.end() : std::max(totalSize, window.end());
    if (what.thenGo)
        what.thenGo();
    show();
}

void ViewerController::replaceWith(Read const &what, std::string bytes)
{
    if (!isEncodingChosen)
        lines.encoding = TextDecoding::detect(what.offset == 0 ? std::string_view(bytes) : fromFirstLine(bytes));
    if (!hasStarted && TextDecoding::looksBinary(bytes))
        lines.mode = ViewerMode::hex;
    hasStarted = true;
    window.replace(what.offset, std::move(bytes));
    top = {window.begin(), 0};
    selectedFrom = selectedTo = {};
}

void ViewerController::prepend(Read const &what, std::string bytes)
{
    if (bytes.size() != what.length) { // the file has become shorter than that
        reachedEnd = false;
        return jumpToEnd();
    }
    window.prepend(std::move(bytes));
    reachedEnd = reachedEnd && window.end() == totalSize; // the window may have lost its end
    top = pager.normalised(top);
    if (selectedFrom != selectedTo) {
        selectedFrom = pager.normalised(selectedFrom);
        selectedTo = pager.normalised(selectedTo);
    }
    show();
}

/// A host answers nothing for a file that it cannot read, as it does behind the end of one.
void ViewerController::nothingThere(Read const &what)
{
    auto const expected = totalSize;
    look([this, what, expected] {
        auto const last = std::max<std::int64_t>(totalSize - static_cast<std::int64_t>(what.length), 0);
        if (what.purpose == Purpose::jump && totalSize > 0 && totalSize < expected)
            return jump(std::min(what.offset, last), what.thenGo);
        if (what.purpose == Purpose::jump)
            replaceWith(what, {});
        reachedEnd = true;
        show();
    });
}

void ViewerController::fail(Text words)
{
    notice = ViewerWords::warning(std::move(words));
    show();
}

void ViewerController::resize(int rows, int columns)
{
    rowCount = std::max(rows, 1);
    columnCount = std::max(columns, 1);
    layOutAgain();
}

void ViewerController::layOutAgain()
{
    pager.columns = columnCount;
    pager.widestColumn = leftColumn + columnCount;
    if (!window.isEmpty())
        top = pager.normalised(top);
    show();
}

void ViewerController::perform(ViewerAction action)
{
    constexpr int columnsAtATime = 8;
    switch (action) {
    case ViewerAction::lineDown:
        return scrollRows(1);
    case ViewerAction::lineUp:
        return scrollRows(-1);
    case ViewerAction::pageDown:
        return scrollRows(std::max(rowCount - 1, 1));
    case ViewerAction::pageUp:
        return scrollRows(-std::max(rowCount - 1, 1));
    case ViewerAction::right:
        return scrollColumns(columnsAtATime);
    case ViewerAction::left:
        return scrollColumns(-columnsAtATime);
    case ViewerAction::start:
        return jumpToStart();
    case ViewerAction::end:
        return jumpToEnd();
    case ViewerAction::showText:
        return showAs(ViewerMode::text);
    case ViewerAction::showHex:
        return showAs(ViewerMode::hex);
    case ViewerAction::nextEncoding:
        return readAs(encodingAfter(lines.encoding));
    case ViewerAction::copy:
        return copySelection();
    case ViewerAction::toggleWrap:
        pager.wraps = !pager.wraps;
        leftColumn = 0;
        return layOutAgain();
    default:
        if (display)
            display->performInWindow(action);
    }
}

void ViewerController::scrollRows(int rows)
{
    if (window.isEmpty())
        return;
    moveTo(rows < 0 ? pager.back(top, -rows) : pager.forward(top, rows));
}

void ViewerController::scrollColumns(int columns)
{
    if (lines.mode == ViewerMode::text && pager.wraps)
        return;
    constexpr int mostColumns = 100'000; // no line is longer
    leftColumn = std::clamp(leftColumn + columns, 0, mostColumns);
    layOutAgain();
}

void ViewerController::scrollTo(double share)
{
    share = std::clamp(share, 0.0, 1.0);
    if (share >= 1)
        return jumpToEnd();
    jumpTo(static_cast<std::int64_t>(share * static_cast<double>(totalSize)));
}

/// Not further down than the last row, and, at the end of the file, not further than its last page.
void ViewerController::moveTo(ViewerPlace place)
{
    auto const last = reachedEnd ? pager.lastPage(rowCount) : place;
    top = std::min(place, std::max(last, ViewerPlace{window.begin(), 0}));
    notice = {};
    show();
}

void ViewerController::jumpToStart()
{
    if (window.begin() == 0 && !window.isEmpty())
        return moveTo({0, 0});
    jump(0, {});
}

void ViewerController::jumpToEnd()
{
    auto const toLastPage = [this] { top = pager.lastPage(rowCount); };
    if (reachedEnd && !window.isEmpty()) {
        notice = {};
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
        auto const end = window.find('\n', offset, window.end());
        if (!end)
            break;
        offset = *end + 1;
    }
    moveTo(pager.rowWith(std::min(offset, std::max(window.end() - 1, window.begin()))));
}

void ViewerController::showAs(ViewerMode mode)
{
    if (mode == lines.mode)
        return;
    lines.mode = mode;
    leftColumn = 0;
    selectedFrom = selectedTo = {};
    layOutAgain();
}

void ViewerController::readAs(TextDecoding::Encoding encoding)
{
    isEncodingChosen = true;
    lines.encoding = encoding;
    selectedFrom = selectedTo = {};
    layOutAgain();
}

void ViewerController::select(ViewerPlace from, ViewerPlace to)
{
    selectedFrom = std::min(from, to);
    selectedTo = std::max(from, to);
    show();
}

void ViewerController::copySelection()
{
    auto text = pager.textBetween(selectedFrom, selectedTo);
    if (!display)
        return;
    if (text.empty())
        return display->beep();
    text.resize(std::min(text.size(), mostCopiedCharacters));
    display->copyText(text);
}

/// One chunk further where the rows on show come near an end of the window.
void ViewerController::readAround(int rowsOnShow)
{
    if (underWay || !hasStarted)
        return;
    auto const chunk = static_cast<std::int64_t>(FileWindow::chunkBytes);
    if (!reachedEnd && (window.end() - top.line < reserveBytes || rowsOnShow < rowCount))
        return read({Purpose::append, window.end(), FileWindow::chunkBytes});
    if (window.begin() == 0 || top.line - window.begin() >= reserveBytes)
        return;
    auto const from = std::max<std::int64_t>(window.begin() - chunk, 0);
    read({Purpose::prepend, from, static_cast<std::size_t>(window.begin() - from)});
}

void ViewerController::show()
{
    if (!display)
        return;
    auto rows = pager.rowsFrom(top, rowCount);
    auto const onShow = static_cast<int>(rows.size());
    auto const size = static_cast<double>(std::max<std::int64_t>(totalSize, 1));
    auto const last = rows.empty() ? top.line : lines.endOf(rows.back().place.line);
    display->show({.mode = lines.mode,
                   .encoding = lines.encoding,
                   .wraps = pager.wraps,
                   .isBusy = underWay.has_value(),
                   .rows = std::move(rows),
                   .leftColumn = leftColumn,
                   .selectedFrom = selectedFrom,
                   .selectedTo = selectedTo,
                   .top = static_cast<double>(top.line) / size,
                   .page = static_cast<double>(last - top.line) / size,
                   .status = notice.isEmpty() ? ViewerWords::status(of, window,
                                                                    {.totalSize = totalSize,
                                                                     .reachedEnd = reachedEnd,
                                                                     .mode = lines.mode,
                                                                     .encoding = lines.encoding})
                                              : notice});
    if (notice.isEmpty())
        readAround(onShow);
}

} // namespace tw
