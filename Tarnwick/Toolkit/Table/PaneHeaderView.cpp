#include "Tarnwick/Toolkit/Table/PaneHeaderView.h"

#include "Tarnwick/Toolkit/Appearance/Contrast.h"
#include "Tarnwick/Toolkit/Table/PaneDelegate.h"
#include "Tarnwick/Toolkit/Table/PaneTableModel.h"

#include <QContextMenuEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>

#include <cstdlib>

namespace tw {

namespace {

/// On each side of a line between two titles.
constexpr int grabMargin = 4;

/// Above and below a title.
constexpr int verticalMargin = 3;

/// How much of their colour the lines between the titles have.
constexpr double lineShare = 0.6;

constexpr int arrowWidth = 7;
constexpr int arrowHeight = 4;
constexpr int arrowGap = 5;

/// Points up for ascending. `left` is the middle of the arrow's left side.
void paintArrow(QPainter &painter, QPointF left, Qt::SortOrder order)
{
    auto const up = order == Qt::AscendingOrder ? -1.0 : 1.0;
    auto const base = left.y() - up * arrowHeight / 2.0;
    QPolygonF const arrow{
        {left.x(), base}, {left.x() + arrowWidth, base}, {left.x() + arrowWidth / 2.0, base + up * arrowHeight}};
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(painter.pen().color());
    painter.setPen(Qt::NoPen);
    painter.drawPolygon(arrow);
    painter.restore();
}

} // namespace

PaneHeaderView::PaneHeaderView(QWidget *parent) : QHeaderView(Qt::Horizontal, parent), layout({})
{
    setSectionsClickable(true);
    setSectionResizeMode(QHeaderView::Fixed); // by us; the base class would move the wrong side of a column
    setHighlightSections(false);
    setSortIndicatorShown(true);
    setMinimumSectionSize(0);
    setMouseTracking(true);
    setSectionsMovable(true);
    setFirstSectionMovable(false); // the name
    connect(this, &QHeaderView::sectionMoved, this, [this] { takeOverOrder(); });
    connect(this, &QHeaderView::sectionClicked, this, [this](int section) {
        if (onTitleClicked)
            onTitleClicked(static_cast<PaneColumn>(section));
    });
}

void PaneHeaderView::propose(ColumnLayout::Widths const &widths)
{
    layout.propose(widths);
    fit();
}

void PaneHeaderView::adoptChoices(std::string_view stored)
{
    layout.adopt(stored);
    arrange();
    fit();
}

void PaneHeaderView::arrange()
{
    isArranging = true;
    for (int place = 0; place < count(); ++place)
        moveSection(visualIndex(static_cast<int>(layout.order()[static_cast<std::size_t>(place)])), place);
    isArranging = false;
}

void PaneHeaderView::takeOverOrder()
{
    if (isArranging)
        return;
    std::vector<PaneColumn> columns;
    for (int place = 0; place < count(); ++place)
        columns.push_back(static_cast<PaneColumn>(logicalIndex(place)));
    layout.arrange(columns);
    arrange(); // one that was dropped before the name goes behind it
    choicesChanged();
}

int PaneHeaderView::room() const
{
    return viewport()->width();
}

void PaneHeaderView::fit()
{
    if (count() < static_cast<int>(paneColumns.size()))
        return; // without a model
    auto const widths = layout.fitted(room());
    for (int section = 0; section < count(); ++section) {
        auto const width = widths[static_cast<std::size_t>(section)];
        setSectionHidden(section, width == 0);
        if (width != 0)
            resizeSection(section, width);
    }
    if (onFitted)
        onFitted();
}

std::optional<PaneColumn> PaneHeaderView::columnBehindLineAt(int x) const
{
    for (auto const column : paneColumns) {
        auto const section = static_cast<int>(column);
        auto const isLine = column != PaneColumn::name && !isSectionHidden(section);
        if (isLine && std::abs(x - sectionViewportPosition(section)) <= grabMargin)
            return column;
    }
    return std::nullopt;
}

void PaneHeaderView::mousePressEvent(QMouseEvent *event)
{
    auto const x = event->position().toPoint().x();
    dragged = event->button() == Qt::LeftButton ? columnBehindLineAt(x) : std::nullopt;
    if (dragged)
        grabOffset = sectionViewportPosition(static_cast<int>(*dragged)) - x;
    else
        QHeaderView::mousePressEvent(event);
}

void PaneHeaderView::mouseMoveEvent(QMouseEvent *event)
{
    auto const x = event->position().toPoint().x();
    if (!dragged) {
        auto const isOverLine = event->buttons() == Qt::NoButton && columnBehindLineAt(x);
        isOverLine ? setCursor(Qt::SplitHCursor) : unsetCursor();
        QHeaderView::mouseMoveEvent(event);
        return;
    }
    auto const section = static_cast<int>(*dragged);
    auto const line = sectionViewportPosition(section);
    layout.choose(*dragged, sectionSize(section) + line - (x + grabOffset), room());
    fit();
}

void PaneHeaderView::mouseReleaseEvent(QMouseEvent *event)
{
    if (!dragged) {
        QHeaderView::mouseReleaseEvent(event);
        return;
    }
    dragged.reset();
    choicesChanged();
}

void PaneHeaderView::mouseDoubleClickEvent(QMouseEvent *event)
{
    auto const column = columnBehindLineAt(event->position().toPoint().x());
    if (!column) {
        // A double click on a title is two clicks on it.
        QHeaderView::mousePressEvent(event);
        return;
    }
    if (onContentsMeasured)
        layout.choose(*column, onContentsMeasured(*column), room());
    fit();
    choicesChanged();
}

void PaneHeaderView::contextMenuEvent(QContextMenuEvent *event)
{
    auto *const menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    fillMenu(*menu);
    menu->popup(event->globalPos());
}

void PaneHeaderView::fillMenu(QMenu &menu)
{
    for (auto const column : paneColumns) {
        if (!ColumnLayout::canBeHidden(column))
            continue;
        auto const title = model()->headerData(static_cast<int>(column), Qt::Horizontal, Qt::DisplayRole).toString();
        auto *const action = menu.addAction(title);
        action->setCheckable(true);
        action->setChecked(layout.isWanted(column));
        connect(action, &QAction::triggered, this, [this, column](bool isChecked) {
            layout.want(column, isChecked);
            fit();
            choicesChanged();
        });
    }
    menu.addSeparator();
    connect(menu.addAction(QStringLiteral("Usual Widths")), &QAction::triggered, this, [this] {
        for (auto const column : paneColumns)
            layout.reset(column);
        fit();
        choicesChanged();
    });
}

void PaneHeaderView::leaveEvent(QEvent *event)
{
    unsetCursor();
    QHeaderView::leaveEvent(event);
}

void PaneHeaderView::resizeEvent(QResizeEvent *event)
{
    QHeaderView::resizeEvent(event);
    fit();
}

QSize PaneHeaderView::sizeHint() const
{
    return {QHeaderView::sizeHint().width(), fontMetrics().height() + 2 * verticalMargin};
}

void PaneHeaderView::paintSection(QPainter *painter, QRect const &rect, int section) const
{
    auto const colors = palette();
    painter->fillRect(rect, colors.color(QPalette::Window));
    painter->setPen(blend(colors.color(QPalette::Dark), colors.color(QPalette::Window), lineShare));
    painter->drawLine(rect.bottomLeft(), rect.bottomRight());
    if (section != 0)
        painter->drawLine(rect.left(), rect.top() + verticalMargin, rect.left(), rect.bottom() - verticalMargin);

    auto place = rect.adjusted(PaneDelegate::cellMargin, 0, -PaneDelegate::cellMargin, 0);
    auto const alignment = PaneTableModel::alignment(static_cast<PaneColumn>(section));
    auto const title = model()->headerData(section, Qt::Horizontal, Qt::DisplayRole).toString();
    painter->setPen(colors.color(QPalette::WindowText));
    if (section == sortIndicatorSection()) {
        auto const titleRect = fontMetrics().boundingRect(place, static_cast<int>(alignment), title);
        auto const arrowSide = alignment.testFlag(Qt::AlignRight) ? titleRect.left() - arrowGap - arrowWidth
                                                                  : titleRect.right() + arrowGap;
        paintArrow(*painter, QPointF(arrowSide, rect.center().y()), sortIndicatorOrder());
    }
    painter->drawText(place, static_cast<int>(alignment) | Qt::TextSingleLine, title);
}

void PaneHeaderView::choicesChanged()
{
    if (onChoicesChanged)
        onChoicesChanged();
}

} // namespace tw
