#include "Tarnwick/Toolkit/Table/PaneTableModel.h"

#include "TWCore/Model/DisplayText.h"
#include "Tarnwick/Table/IconKind.h"
#include "Tarnwick/Toolkit/Appearance/Wording.h"

namespace tw {

int PaneTableModel::rowCount(QModelIndex const &parent) const
{
    return parent.isValid() ? 0 : pane->rowCount();
}

int PaneTableModel::columnCount(QModelIndex const &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(paneColumns.size());
}

QVariant PaneTableModel::data(QModelIndex const &index, int role) const
{
    if (!index.isValid() || index.row() >= pane->rowCount())
        return {};
    auto const column = static_cast<PaneColumn>(index.column());
    switch (role) {
    case Qt::DisplayRole:
        return QString::fromStdString(paneCellText(*pane, index.row(), column));
    case Qt::DecorationRole:
        if (column == PaneColumn::name)
            return iconCache.icon(paneIconKey(*pane, index.row()));
        return {};
    case Qt::TextAlignmentRole:
        return QVariant::fromValue(alignment(column));
    case wholeNameRole:
        return wholeName(index.row());
    case Qt::AccessibleTextRole:
        return accessibleText(index.row(), column);
    case markedRole:
        return pane->isMarked(index.row()) ? Qt::Checked : Qt::Unchecked;
    case cutRole:
        return pane->isCut(index.row());
    case folderRole: {
        auto const *const entry = pane->entry(index.row());
        return !entry || entry->isDirectory();
    }
    default:
        return {};
    }
}

QString PaneTableModel::wholeName(int row) const
{
    auto const &rows = *pane;
    return rows.entry(row) ? QString::fromStdString(onOneLine(rows.name(row))) : QStringLiteral("..");
}

/// A screen reader hears the name of a row whole, what it is, and whether it is marked; the other cells as they are.
QString PaneTableModel::accessibleText(int row, PaneColumn column) const
{
    auto const &rows = *pane;
    if (column != PaneColumn::name)
        return QString::fromStdString(paneCellText(rows, row, column));
    auto const *const entry = rows.entry(row);
    if (!entry)
        return QStringLiteral("parent folder");
    auto text = wholeName(row);
    if (entry->isDirectory())
        text += QStringLiteral(", folder");
    if (rows.isMarked(row))
        text += QStringLiteral(", marked");
    if (rows.isCut(row))
        text += QStringLiteral(", cut");
    return text;
}

QVariant PaneTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal)
        return {};
    auto const column = static_cast<PaneColumn>(section);
    switch (role) {
    case Qt::DisplayRole:
        return Wording::shown(paneColumnTitle(column));
    case Qt::TextAlignmentRole:
        return QVariant::fromValue(alignment(column));
    default:
        return {};
    }
}

void PaneTableModel::show(PaneModel const &rows)
{
    beginResetModel();
    pane = &rows;
    endResetModel();
}

void PaneTableModel::reload()
{
    beginResetModel();
    endResetModel();
}

Qt::Alignment PaneTableModel::alignment(PaneColumn column)
{
    return Qt::AlignVCenter | (column == PaneColumn::size ? Qt::AlignRight : Qt::AlignLeft);
}

} // namespace tw
