#include "Tarnwick/Toolkit/Viewer/ViewerTextView.h"

#include "Tarnwick/Toolkit/Appearance/PaneFonts.h"
#include "Tarnwick/Toolkit/Diagnostics/StartLog.h"
#include "Tarnwick/Viewer/RowBreaks.h"

#include <QApplication>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QWheelEvent>

#include <algorithm>

namespace tw {

namespace {

constexpr int margin = 6;

/// The positions of the scroll bar.
constexpr int barSteps = 1'000'000;

/// What Qt calls a notch of a wheel.
constexpr int notch = 120;

} // namespace

ViewerTextView::ViewerTextView(QWidget *parent) : QAbstractScrollArea(parent), painter(PaneFonts::ofSize(12).fixed)
{
    setFocusPolicy(Qt::StrongFocus);
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    viewport()->setBackgroundRole(QPalette::Base);
    viewport()->setCursor(Qt::IBeamCursor);
    connect(verticalScrollBar(), &QAbstractSlider::actionTriggered, this, &ViewerTextView::barUsed);
}

void ViewerTextView::show(ViewerScreen const &screen)
{
    shown = screen;
    showBar();
    viewport()->update();
}

void ViewerTextView::showBar()
{
    auto *const bar = verticalScrollBar();
    if (bar->isSliderDown())
        return; // it is where the mouse has it
    auto const page = std::clamp(static_cast<int>(shown.page * barSteps), 1, barSteps);
    bar->setRange(0, barSteps - page);
    bar->setPageStep(page);
    constexpr double almost = 1 - 1e-9; // both are shares of the same size
    bar->setValue(shown.top + shown.page > almost ? bar->maximum() : static_cast<int>(shown.top * barSteps));
}

void ViewerTextView::barUsed(int action)
{
    auto *const bar = verticalScrollBar();
    if (action == QAbstractSlider::SliderMove) {
        auto const last = bar->maximum();
        return onShare(bar->sliderPosition() >= last ? 1 : static_cast<double>(bar->sliderPosition()) / barSteps);
    }
    auto const isDown = bar->sliderPosition() > bar->value();
    auto const isPage = action == QAbstractSlider::SliderPageStepAdd || action == QAbstractSlider::SliderPageStepSub;
    bar->setSliderPosition(bar->value()); // a row is not a step of the bar
    auto const rows = isPage ? std::max(rowCount() - 1, 1) : 1;
    onRows(isDown ? rows : -rows);
}

void ViewerTextView::setTextSize(double size)
{
    textSize = size;
    painter = RowPainter(PaneFonts::ofSize(size).fixed);
    reportSize();
    viewport()->update();
}

int ViewerTextView::rowCount() const
{
    return std::max(viewport()->height() / painter.rowHeight(), 1);
}

int ViewerTextView::columnCount() const
{
    return std::max(static_cast<int>((viewport()->width() - 2 * margin) / painter.cellWidth()), 1);
}

void ViewerTextView::reportSize()
{
    if (onResized)
        onResized(rowCount(), columnCount());
}

void ViewerTextView::resizeEvent(QResizeEvent * /*event*/)
{
    reportSize();
}

void ViewerTextView::changeEvent(QEvent *event)
{
    QAbstractScrollArea::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::ApplicationFontChange)
        setTextSize(textSize);
}

void ViewerTextView::paintEvent(QPaintEvent *event)
{
    if (StartLog::isOn() && !shown.rows.empty()) {
        auto const &first = shown.rows.front().text;
        StartLog::note(QStringLiteral("viewer painted ") +
                       QString::fromUcs4(first.data(), static_cast<qsizetype>(first.size())));
    }
    QPainter canvas(viewport());
    auto const height = painter.rowHeight();
    for (std::size_t row = 0; row < shown.rows.size(); ++row) {
        QRect const room(margin, static_cast<int>(row) * height, viewport()->width() - 2 * margin, height);
        if (!event->rect().intersects(room))
            continue;
        canvas.setClipRect(room);
        painter.paint(canvas, room, shown.rows[row].text, shown.leftColumn, selectionIn(row), palette());
    }
}

RowPainter::Selection ViewerTextView::selectionIn(std::size_t row) const
{
    auto const &each = shown.rows[row];
    auto const begin = each.place;
    ViewerPlace const end{begin.line, begin.character + each.text.size()};
    auto const from = std::max(shown.selectedFrom, begin);
    auto const to = std::min(shown.selectedTo, end);
    if (shown.selectedFrom >= shown.selectedTo || from > to)
        return {};
    auto const isLastOfLine = row + 1 < shown.rows.size() && shown.rows[row + 1].place.line != begin.line;
    return {.from = from.character - begin.character,
            .to = to.character - begin.character,
            .withRest = isLastOfLine && shown.selectedTo > end && shown.selectedFrom <= end};
}

ViewerPlace ViewerTextView::placeAt(QPointF point) const
{
    if (shown.rows.empty())
        return {};
    auto const row = static_cast<int>(point.y()) / painter.rowHeight();
    auto const &each =
        shown.rows[static_cast<std::size_t>(std::clamp(row, 0, static_cast<int>(shown.rows.size()) - 1))];
    auto const column = (point.x() - margin) / painter.cellWidth() + shown.leftColumn;
    return {each.place.line, each.place.character + RowBreaks::characterAt(each.text, column)};
}

void ViewerTextView::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return;
    auto const place = placeAt(event->position());
    pressedAt = event->modifiers().testFlag(Qt::ShiftModifier) ? shown.selectedFrom : place;
    onSelected(*pressedAt, place);
}

void ViewerTextView::mouseMoveEvent(QMouseEvent *event)
{
    if (!pressedAt)
        return;
    auto const y = event->position().y();
    if (y < 0 || y >= viewport()->height())
        onRows(y < 0 ? -1 : 1);
    onSelected(*pressedAt, placeAt(event->position()));
}

void ViewerTextView::mouseReleaseEvent(QMouseEvent * /*event*/)
{
    pressedAt.reset();
}

void ViewerTextView::wheelEvent(QWheelEvent *event)
{
    turned += event->angleDelta();
    auto const lines = QApplication::wheelScrollLines();
    auto const take = [lines](int &turn) {
        auto const steps = turn * lines / notch;
        turn -= steps * notch / std::max(lines, 1);
        return steps;
    };
    if (auto const rows = take(turned.ry()); rows != 0)
        onRows(-rows);
    if (auto const columns = take(turned.rx()); columns != 0)
        onColumns(-columns);
    event->accept();
}

} // namespace tw
