#pragma once

#include "Tarnwick/Table/PaneCells.h"
#include "Tarnwick/Toolkit/Table/PaneIcons.h"

#include <QAbstractTableModel>

namespace tw {

/// A pane's rows for Qt's table. It holds nothing: the text of a cell is made when the cell is painted.
///
/// Lifetime: `icons` outlive it, and the rows on show go after others are shown or it is gone.
class PaneTableModel : public QAbstractTableModel {
public:
    enum Role {
        /// Whether the row is a directory, or leads to one as the parent row does.
        folderRole = Qt::UserRole,
        /// The name of the row with its extension, on one line.
        wholeNameRole,
        /// Whether the file of the row was cut, and is still here.
        cutRole,
        /// Whether the row is marked. Qt's own role for it, so that a screen reader says it.
        markedRole = Qt::CheckStateRole,
    };

    PaneTableModel(PaneModel const &rows, PaneIcons &icons) : pane(&rows), iconCache(icons) {}

    int rowCount(QModelIndex const &parent = {}) const override;
    int columnCount(QModelIndex const &parent = {}) const override;
    QVariant data(QModelIndex const &index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

    /// Shows the rows of another pane.
    void show(PaneModel const &rows);

    /// The rows were replaced or reordered.
    void reload();

    static Qt::Alignment alignment(PaneColumn column);

private:
    QString wholeName(int row) const;
    QString accessibleText(int row, PaneColumn column) const;

    PaneModel const *pane;
    PaneIcons &iconCache;
};

} // namespace tw
