#include "Tarnwick/Viewer/ViewerController.h"

#include "Tarnwick/Viewer/PictureSignature.h"
#include "Tarnwick/Viewer/ViewerWords.h"

#include <algorithm>
#include <utility>

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
    following.request_stop();
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
    mayRead = of.kind == EntryKind::file && totalSize > 0;
    if (mayRead)
        readBeginning();
    else
        look(readBeginning);
}

void ViewerController::giveUp()
{
    stop.request_stop();
    ++wish;
    isSearching = false;
    underWay.reset();
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
    mayRead = facts.kind == EntryKind::file;
    if (!mayRead)
        return fail(ViewerWords::notAFile(facts.kind));
    totalSize = facts.size;
    then();
}

void ViewerController::jump(std::int64_t offset, std::function<void()> thenGo)
{
    offset = std::max<std::int64_t>(offset, 0);
    // A window begins with a whole code unit.
    auto const torn = static_cast<std::size_t>(offset) % TextDecoding::unitBytesOf(lines.encoding);
    read({Purpose::jump, offset - static_cast<std::int64_t>(torn), FileWindow::chunkBytes + torn, std::move(thenGo)});
}

void ViewerController::read(Read what)
{
    if (!mayRead)
        return;
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
        notice = remark = {};
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
    if (showsImage && !picture)
        return readImage();
    show();
}

void ViewerController::replaceWith(Read const &what, std::string bytes)
{
    auto const wide = what.offset == 0 ? TextDecoding::detectWide(bytes) : std::nullopt;
    // Only the beginning of a file says that it is UTF-16.
    auto const staysWide = what.offset > 0 && TextDecoding::unitBytesOf(lines.encoding) > 1;
    if (!isEncodingChosen && !staysWide)
        lines.encoding =
            wide ? *wide : TextDecoding::detect(what.offset == 0 ? std::string_view(bytes) : fromFirstLine(bytes));
    if (!hasStarted) {
        showsImage = isProbablyImage(bytes);
        lines.mode = !wide && TextDecoding::looksBinary(bytes) ? ViewerMode::hex : ViewerMode::text;
    }
    hasStarted = true;
    staysAtEnd = false;
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
    selectedFrom = pager.foundAgain(selectedFrom);
    selectedTo = pager.foundAgain(selectedTo);
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
        top = isFollowed && staysAtEnd ? pager.lastPage(rowCount) : pager.normalised(top);
    show();
}

void ViewerController::perform(ViewerAction action)
{
    constexpr int columnsAtATime = 8;
    if (isSearching && action == ViewerAction::close)
        return cancelSearch();
    if (showsImage && performOnImage(action))
        return;
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
    case ViewerAction::showImage:
        return showAs(ViewerMode::image);
    case ViewerAction::nextEncoding:
        return readAs(encodingAfter(lines.encoding));
    case ViewerAction::copy:
        return copySelection();
    case ViewerAction::findNext:
        return findAgain(FileSearch::Which::first);
    case ViewerAction::findPrevious:
        return findAgain(FileSearch::Which::last);
    case ViewerAction::previousFile:
        return; // of images
    case ViewerAction::follow:
        return toggleFollowing();
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
    staysAtEnd = reachedEnd && place >= last;
    notice = remark = {};
    show();
}

void ViewerController::showAs(ViewerMode mode)
{
    auto const isImage = mode == ViewerMode::image;
    if (isImage == showsImage && (isImage || mode == lines.mode))
        return show();
    auto const wasImage = std::exchange(showsImage, isImage);
    notice = remark = {};
    if (isImage) {
        endFollowing();
        return picture ? show() : readImage();
    }
    if (wasImage)
        giveUp(); // it may be on its way
    picture.reset();
    lines.mode = mode;
    if (!hasStarted && !underWay)
        return jump(0, {});
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
    if (underWay || !hasStarted || showsImage)
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
    auto const words = [this] {
        if (!notice.isEmpty() || !remark.isEmpty())
            return notice.isEmpty() ? remark : notice;
        if (picture)
            return ViewerWords::imageStatus(of, *picture, finestImage(), totalSize);
        return ViewerWords::status(of, window,
                                   {.totalSize = totalSize,
                                    .reachedEnd = reachedEnd,
                                    .mode = lines.mode,
                                    .encoding = lines.encoding,
                                    .isFollowed = isFollowed});
    };
    display->show({.mode = showsImage ? ViewerMode::image : lines.mode,
                   .encoding = lines.encoding,
                   .wraps = pager.wraps,
                   .isBusy = underWay.has_value(),
                   .isFollowed = isFollowed,
                   .rows = std::move(rows),
                   .leftColumn = leftColumn,
                   .selectedFrom = selectedFrom,
                   .selectedTo = selectedTo,
                   .top = static_cast<double>(top.line) / size,
                   .page = static_cast<double>(last - top.line) / size,
                   .picture = picture,
                   .status = words()});
    if (!notice.isEmpty() || underWay || showsImage)
        return;
    if (isFollowed && staysAtEnd && !reachedEnd && window.end() < totalSize)
        return catchUp();
    readAround(onShow);
}

} // namespace tw
