#include "Tarnwick/Toolkit/Table/ColumnWidths.h"

#include "Tarnwick/Toolkit/Table/PaneDelegate.h"

#include <algorithm>
#include <cmath>

namespace tw::ColumnWidths {

namespace {

/// What the columns are made wide enough for.
auto const widestExtension = QStringLiteral("torrent");
auto const widestSizes = {QStringLiteral("1023K"), QStringLiteral("<DIR>"), QStringLiteral("<LNK>")};
auto const widestDate = QStringLiteral("2000-00-00 00:00");
auto const widestAttributes = QStringLiteral("drwxrwxrwx");
auto const readableName = QStringLiteral("a readable name");

} // namespace

int ofText(QFont const &font, QString const &text)
{
    return static_cast<int>(std::ceil(QFontMetricsF(font).horizontalAdvance(text))) + 1;
}

ColumnLayout::Widths proposed(PaneFonts const &fonts, QFont const &titleFont)
{
    constexpr int margins = 2 * PaneDelegate::cellMargin;
    // A title has the sort indicator beside it.
    auto size = ofText(titleFont, QStringLiteral("Size")) + QFontMetrics(titleFont).height();
    for (auto const &widest : widestSizes)
        size = std::max(size, ofText(fonts.digits, widest));
    return {
        ofText(fonts.text, readableName) + fonts.iconSize() + PaneDelegate::iconGap + margins,
        ofText(fonts.text, widestExtension) + margins,
        size + margins,
        ofText(fonts.digits, widestDate) + margins,
        ofText(fonts.fixed, widestAttributes) + margins,
    };
}

int ofContents(QAbstractItemModel const &rows, PaneColumn column, int firstRow, int endRow, PaneFonts const &fonts,
               QFont const &titleFont)
{
    auto const section = static_cast<int>(column);
    auto widest = ofText(titleFont, rows.headerData(section, Qt::Horizontal, Qt::DisplayRole).toString());
    for (int row = firstRow; row < endRow; ++row)
        widest =
            std::max(widest, ofText(PaneDelegate::fontOf(fonts, column), rows.index(row, section).data().toString()));
    return widest + 2 * PaneDelegate::cellMargin;
}

} // namespace tw::ColumnWidths
