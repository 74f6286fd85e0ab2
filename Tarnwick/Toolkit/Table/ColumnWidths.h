#pragma once

#include "Tarnwick/Table/ColumnLayout.h"
#include "Tarnwick/Toolkit/Appearance/PaneFonts.h"

#include <QAbstractItemModel>

/// How wide the columns of a pane are to be for what stands in them, in device-independent pixels.
namespace tw::ColumnWidths {

/// What a text needs. Advances are fractions of a pixel, and a cell that is short of one elides.
int ofText(QFont const &font, QString const &text);

/// For texts of the usual length.
ColumnLayout::Widths proposed(PaneFonts const &fonts, QFont const &titleFont);

/// For the title, and the rows from `firstRow` to before `endRow`.
int ofContents(QAbstractItemModel const &rows, PaneColumn column, int firstRow, int endRow, PaneFonts const &fonts,
               QFont const &titleFont);

} // namespace tw::ColumnWidths
