#include "Tarnwick/Toolkit/Dialogs/ConflictTable.h"

#include "Tarnwick/Toolkit/Appearance/Wording.h"

#include <QContextMenuEvent>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMenu>
#include <QMouseEvent>

#include <algorithm>

namespace tw {

namespace {

using Answer = NameConflict::Answer;

constexpr int leastRows = 3;

/// Of a column that no cell is wider in: a size of a file has no more than five letters.
constexpr auto widestFile = "8888-88-88 88:88 · 88888 · newer";
constexpr auto widestAnswer = "Keep Both";
constexpr int cellMargin = 12;

} // namespace

ConflictTable::ConflictTable(ConflictModel &names, QWidget *parent) : QTreeView(parent), taken(names)
{
    setModel(&names);
    setRootIsDecorated(false);
    setUniformRowHeights(true); // of 10,000 rows only those on show are measured
    setAllColumnsShowFocus(true);
    setAlternatingRowColors(true);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setTextElideMode(Qt::ElideMiddle);
    setAccessibleName(Wording::shown("Names"));

    QFont bold(font());
    bold.setWeight(QFont::DemiBold);
    auto const fileWidth = QFontMetrics(bold).horizontalAdvance(QString::fromUtf8(widestFile)) + cellMargin;
    header()->setStretchLastSection(false);
    header()->setSectionsMovable(false);
    header()->setSectionResizeMode(ConflictModel::name, QHeaderView::Stretch);
    setColumnWidth(ConflictModel::arriving, fileWidth);
    setColumnWidth(ConflictModel::present, fileWidth);
    setColumnWidth(ConflictModel::answer,
                   fontMetrics().horizontalAdvance(QString::fromUtf8(widestAnswer)) + 2 * cellMargin);
    setCurrentIndex(names.index(0, 0));
}

void ConflictTable::fitInto(int width, int height)
{
    auto const rowHeight = std::max(sizeHintForRow(0), 1);
    auto const around = header()->sizeHint().height() + 2 * frameWidth() + 1;
    auto const mostRows = std::max((height - around) / rowHeight, leastRows);
    setFixedSize(width, around + std::clamp(taken.rowCount(), leastRows, mostRows) * rowHeight);
}

void ConflictTable::answer(std::optional<Answer> wanted)
{
    auto const rows = selectionModel()->selectedRows();
    for (auto const &each : rows)
        taken.setAnswer(each.row(), wanted);
    // Name after name, without a key in between. A user who has selected several names sees what became of them.
    if (wanted && rows.size() == 1) {
        if (auto const next = taken.answers().nextOpen(static_cast<std::size_t>(rows.front().row())))
            setCurrentIndex(taken.index(static_cast<int>(*next), 0));
    }
    if (onAnswered)
        onAnswered();
}

void ConflictTable::keyPressEvent(QKeyEvent *event)
{
    auto const isPlain = (event->modifiers() & ~(Qt::ShiftModifier | Qt::KeypadModifier)) == Qt::NoModifier;
    switch (isPlain ? event->key() : 0) {
    case Qt::Key_R:
        return answer(Answer::replace);
    case Qt::Key_K:
        return answer(Answer::keepBoth);
    case Qt::Key_S:
        return answer(Answer::skip);
    case Qt::Key_Backspace:
    case Qt::Key_Delete:
        return answer(std::nullopt);
    default:
        break;
    }
    // No letter searches for a name where some letters answer.
    if (isPlain && !event->text().isEmpty() && event->text().front().isLetterOrNumber())
        return;
    QTreeView::keyPressEvent(event);
}

void ConflictTable::contextMenuEvent(QContextMenuEvent *event)
{
    auto const isByKey = event->reason() == QContextMenuEvent::Keyboard;
    openMenu(isByKey ? viewport()->mapToGlobal(visualRect(currentIndex()).bottomLeft()) : event->globalPos());
}

void ConflictTable::mouseReleaseEvent(QMouseEvent *event)
{
    QTreeView::mouseReleaseEvent(event);
    auto const index = indexAt(event->position().toPoint());
    if (event->button() == Qt::LeftButton && event->modifiers() == Qt::NoModifier &&
        index.column() == ConflictModel::answer)
        openMenu(viewport()->mapToGlobal(visualRect(index).bottomLeft()));
}

void ConflictTable::openMenu(QPoint where)
{
    if (selectionModel()->selectedRows().isEmpty())
        return;
    auto *const menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    auto const add = [&](char const *title, std::optional<Answer> wanted) {
        connect(menu->addAction(Wording::shown(title)), &QAction::triggered, this, [this, wanted] { answer(wanted); });
    };
    add("&Replace", Answer::replace);
    add("&Keep Both", Answer::keepBoth);
    add("&Skip", Answer::skip);
    menu->addSeparator();
    add("&No Answer", std::nullopt);
    menu->popup(where);
}

} // namespace tw
