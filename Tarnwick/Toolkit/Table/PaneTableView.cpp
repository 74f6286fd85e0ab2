#include "Tarnwick/Toolkit/Table/PaneTableView.h"

#include "Tarnwick/Table/NameField.h"
#include "Tarnwick/Toolkit/Appearance/FieldText.h"
#include "Tarnwick/Toolkit/Table/ColumnWidths.h"
#include "Tarnwick/Toolkit/Table/KeyPresses.h"
#include "Tarnwick/Toolkit/Table/NameEditor.h"
#include "Tarnwick/Toolkit/Table/PaneDelegate.h"

#include <QAccessible>
#include <QGuiApplication>
#include <QHelpEvent>
#include <QInputMethod>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QScrollBar>
#include <QToolTip>

#include <algorithm>
#include <utility>

namespace tw {

namespace {

/// Of the outline of what a drag would be dropped on; more than that of a cursor, which may be on the same row.
constexpr int dropLineWidth = 2;

} // namespace

PaneTableView::PaneTableView(PaneTableModel &rows, QWidget *parent)
    : QTableView(parent), header(new PaneHeaderView(this))
{
    setHorizontalHeader(header);
    // A press on a title is a click to sort, and selects no column.
    disconnect(header, &QHeaderView::sectionPressed, this, nullptr);
    verticalHeader()->hide();
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    setModel(&rows);
    setAccessibleName(QStringLiteral("Files"));
    header->onContentsMeasured = [this](PaneColumn column) { return widthOfContents(column); };
    header->onFitted = [this] {
        look.hasWholeNames = header->isSectionHidden(static_cast<int>(PaneColumn::ext));
        viewport()->update();
    };
    setItemDelegate(new PaneDelegate(look, this));

    setShowGrid(false);
    setFrameShape(QFrame::NoFrame);
    setAlternatingRowColors(true);
    setSelectionMode(QAbstractItemView::NoSelection);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setAutoScroll(false);
    setWordWrap(false);
    setCornerButtonEnabled(false);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setContextMenuPolicy(Qt::NoContextMenu);
    applyColors();
}

void PaneTableView::setFontSize(double size)
{
    fontSize = size;
    applyFonts();
}

void PaneTableView::applyFonts()
{
    if (fontSize <= 0)
        return; // not told yet
    look.fonts = PaneFonts::ofSize(fontSize);
    auto const height = look.fonts.rowHeight();
    verticalHeader()->setMinimumSectionSize(height);
    verticalHeader()->setDefaultSectionSize(height);
    verticalScrollBar()->setSingleStep(height);
    header->propose(ColumnWidths::proposed(look.fonts, header->font()));
    viewport()->update();
}

void PaneTableView::applyColors()
{
    look.colors = PaneColors::of(palette());
    viewport()->update();
}

/// Of the rows on screen: to measure all rows of a large folder would take seconds.
int PaneTableView::widthOfContents(PaneColumn column) const
{
    auto const end = std::min(firstVisibleRow() + wholeVisibleRows() + 1, model()->rowCount());
    return ColumnWidths::ofContents(*model(), column, firstVisibleRow(), end, look.fonts, header->font());
}

bool PaneTableView::viewportEvent(QEvent *event)
{
    if (event->type() == QEvent::ToolTip)
        return showNameTip(*static_cast<QHelpEvent *>(event));
    return QTableView::viewportEvent(event);
}

/// The whole name, over one that does not fit its cells.
bool PaneTableView::showNameTip(QHelpEvent const &event)
{
    auto const index = indexAt(event.pos());
    auto const column = static_cast<PaneColumn>(index.column());
    auto const isOfName = index.isValid() && (column == PaneColumn::name || column == PaneColumn::ext);
    auto const isCut = [&](PaneColumn part) {
        auto const cell = index.siblingAtColumn(static_cast<int>(part));
        auto const room = PaneDelegate::textRect(look.fonts, visualRect(cell), part).width();
        auto const text = PaneDelegate::textOf(look, cell);
        return !isColumnHidden(cell.column()) &&
               ColumnWidths::ofText(PaneDelegate::fontOf(look.fonts, part), text) - 1 > room;
    };
    if (!isOfName || !(isCut(PaneColumn::name) || isCut(PaneColumn::ext))) {
        QToolTip::hideText();
        return true;
    }
    // Escaped: a name that looks like markup is shown as it is.
    auto const name = index.data(PaneTableModel::wholeNameRole).toString().toHtmlEscaped();
    QToolTip::showText(event.globalPos(), QStringLiteral("<p style='white-space:pre-wrap'>") + name, viewport(),
                       rowRect(index.row()));
    return true;
}

int PaneTableView::heightOfRows() const
{
    return std::max(verticalHeader()->defaultSectionSize(), 1);
}

QRect PaneTableView::rowRect(int row) const
{
    return {0, row * heightOfRows() - verticalScrollBar()->value(), viewport()->width(), heightOfRows()};
}

void PaneTableView::reloadRows()
{
    auto const scrolled = verticalScrollBar()->value();
    static_cast<PaneTableModel *>(model())->reload();
    // At once, not with the next event: where rows are is asked for before it comes.
    executeDelayedItemsLayout();
    updateGeometries();
    verticalScrollBar()->setValue(scrolled);
}

void PaneTableView::redrawRows()
{
    viewport()->update();
    if (!QAccessible::isActive() || !look.cursorRow)
        return;
    // The name of a row tells whether it is marked. The titles are a row before the others, and the hidden numbers of
    // the rows a column.
    QAccessibleEvent changed(this, QAccessible::NameChanged);
    changed.setChild((*look.cursorRow + 1) * (model()->columnCount() + 1) + 1);
    QAccessible::updateAccessibility(&changed);
}

void PaneTableView::redrawRow(std::optional<int> row)
{
    if (row)
        viewport()->update(rowRect(*row));
}

void PaneTableView::showCursor(std::optional<int> row)
{
    redrawRow(look.cursorRow);
    look.cursorRow = row;
    redrawRow(look.cursorRow);
    setCurrentIndex(row ? model()->index(*row, 0) : QModelIndex());
    setAttribute(Qt::WA_InputMethodEnabled); // as in focusInEvent
    if (row)
        scrollIntoView(*row);
    if (hasFocus())
        QGuiApplication::inputMethod()->update(Qt::ImCursorRectangle);
    bringCursorIntoViewWhenShown = !isVisible();
}

void PaneTableView::showDropTarget(DropTarget target, int row)
{
    dropTarget = target;
    dropRow = row;
    viewport()->update();
}

void PaneTableView::showActive(bool active)
{
    look.isActive = active;
    redrawRow(look.cursorRow);
}

bool PaneTableView::isInView(int row, int viewHeight) const
{
    auto const top = rowRect(row).top();
    return top >= 0 && top + heightOfRows() <= viewHeight;
}

void PaneTableView::scrollIntoView(int row)
{
    auto *const bar = verticalScrollBar();
    auto const top = row * heightOfRows();
    auto const scrolledJustFar = top + heightOfRows() - viewport()->height();
    // In a view lower than a row its top counts.
    bar->setValue(std::min(std::max(bar->value(), scrolledJustFar), top));
}

int PaneTableView::firstVisibleRow() const
{
    return firstRowWhenShown.value_or(verticalScrollBar()->value() / heightOfRows());
}

void PaneTableView::scrollToFirstVisibleRow(int row)
{
    if (!isVisible()) {
        firstRowWhenShown = row;
        bringCursorIntoViewWhenShown = false;
        return;
    }
    // A row that is there already stays as it is, and with it the fraction of it that is scrolled away.
    if (row != firstVisibleRow())
        verticalScrollBar()->setValue(row * heightOfRows());
}

void PaneTableView::showEvent(QShowEvent *event)
{
    QTableView::showEvent(event);
    executeDelayedItemsLayout();
    updateGeometries();
    if (auto const row = std::exchange(firstRowWhenShown, std::nullopt))
        verticalScrollBar()->setValue(*row * heightOfRows());
    if (std::exchange(bringCursorIntoViewWhenShown, false) && look.cursorRow)
        scrollIntoView(*look.cursorRow);
}

int PaneTableView::wholeVisibleRows() const
{
    return viewport()->height() / heightOfRows();
}

void PaneTableView::keyPressEvent(QKeyEvent *event)
{
    // Never to the base class, which would move a cursor of its own.
    event->setAccepted(onKey && onKey(keyPressOf(*event)));
}

void PaneTableView::inputMethodEvent(QInputMethodEvent *event)
{
    auto const committed = event->commitString();
    auto const composed = event->preeditString();
    if (!committed.isEmpty() && onTextTyped)
        onTextTyped(committed.toStdString());
    // Committed text takes the place of what was composed.
    if ((committed.isEmpty() || !composed.isEmpty()) && onTextComposed)
        onTextComposed(composed.toStdString());
    event->accept();
}

QVariant PaneTableView::inputMethodQuery(Qt::InputMethodQuery query) const
{
    switch (query) {
    case Qt::ImEnabled:
        return true;
    case Qt::ImCursorRectangle: {
        // The candidates of the input method stand at the row that they look for.
        auto const row = rowRect(look.cursorRow.value_or(0));
        return QRect(viewport()->mapTo(this, row.topLeft()), QSize(1, row.height()));
    }
    case Qt::ImHints:
        return static_cast<int>(Qt::ImhNoPredictiveText | Qt::ImhNoAutoUppercase);
    default:
        return QTableView::inputMethodQuery(query);
    }
}

bool PaneTableView::focusNextPrevChild(bool /*next*/)
{
    return false; // Tab is a key of the pane
}

void PaneTableView::focusInEvent(QFocusEvent *event)
{
    QTableView::focusInEvent(event);
    setAttribute(Qt::WA_InputMethodEnabled); // the base class wants one for editable cells only
    keyboardCameByClick = event->reason() == Qt::MouseFocusReason || event->reason() == Qt::ActiveWindowFocusReason;
    if (onEntered)
        onEntered();
}

void PaneTableView::showNameField(NameField const &field)
{
    hideNameField();
    auto place = visualRect(model()->index(field.row, static_cast<int>(PaneColumn::name)));
    place.setLeft(place.left() + look.fonts.iconSize() + PaneDelegate::cellMargin);
    auto const base = FieldText::ofBytes(field.base).size();
    nameEditor = new NameEditor(viewport(), place, FieldText::ofBytes(field.text), base);
    nameEditor->setFont(look.fonts.text);
    nameEditor->onConfirmed = onNameConfirmed;
    nameEditor->onCancelled = onNameCancelled;
    nameEditor->onLeft = onNameLeft;
    nameEditor->show();
    nameEditor->setFocus(Qt::OtherFocusReason);
}

std::string PaneTableView::textOfNameField() const
{
    return nameEditor ? FieldText::bytesOf(nameEditor->takeText()) : std::string();
}

void PaneTableView::hideNameField()
{
    auto *const editor = nameEditor.data();
    nameEditor.clear();
    if (!editor)
        return;
    isEditEndedByPress = QGuiApplication::mouseButtons().testFlag(Qt::LeftButton);
    // Qt may still be in one of its events.
    editor->onConfirmed = editor->onCancelled = editor->onLeft = nullptr;
    if (window()->focusWidget() == editor)
        setFocus(Qt::OtherFocusReason);
    editor->hide();
    editor->deleteLater();
}

void PaneTableView::paintEvent(QPaintEvent *event)
{
    QTableView::paintEvent(event);
    QPainter painter(viewport());
    if (look.cursorRow && !look.isActive) {
        painter.setPen(look.colors.cursor);
        painter.drawRect(rowRect(*look.cursorRow).adjusted(0, 0, -1, -1));
    }
    if (dropTarget != DropTarget::none) {
        auto const place = dropTarget == DropTarget::row ? rowRect(dropRow) : viewport()->rect();
        painter.setPen(QPen(palette().color(QPalette::Highlight), dropLineWidth));
        painter.drawRect(QRectF(place).adjusted(1, 1, -1, -1));
    }
    if (model()->rowCount() > 0 && onPainted)
        onPainted();
}

void PaneTableView::resizeEvent(QResizeEvent *event)
{
    auto const hadCursor = look.cursorRow && isInView(*look.cursorRow, event->oldSize().height());
    QTableView::resizeEvent(event);
    // The cursor may leave the view by scrolling, but not by a view that got lower.
    if (hadCursor)
        scrollIntoView(*look.cursorRow);
}

bool PaneTableView::event(QEvent *event)
{
    auto const isUsed = QTableView::event(event);
    // A window in the background has colours of its own in the palette.
    if (event->type() == QEvent::WindowActivate || event->type() == QEvent::WindowDeactivate)
        applyColors();
    return isUsed;
}

void PaneTableView::changeEvent(QEvent *event)
{
    QTableView::changeEvent(event);
    switch (event->type()) {
    case QEvent::PaletteChange:
        applyColors();
        break;
    case QEvent::FontChange:
        applyFonts();
        break;
    default:
        break;
    }
}

} // namespace tw
