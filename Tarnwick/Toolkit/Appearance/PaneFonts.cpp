#include "Tarnwick/Toolkit/Appearance/PaneFonts.h"

#include <QFontDatabase>
#include <QFontMetrics>
#include <QGuiApplication>

#include <algorithm>

namespace tw {

namespace {

/// Above and below the text of a row, together.
constexpr int airInRow = 5;

/// Above and below the icon of a row, together.
constexpr int airAroundIcon = 3;

/// Our icons are drawn for this size, and sharp at its multiples.
constexpr int usualIconSize = 16;

bool hasEquallyWideDigits(QFont const &font)
{
    QFontMetricsF const metrics(font);
    auto const width = metrics.horizontalAdvance(QLatin1Char('0'));
    auto const digits = QStringLiteral("123456789");
    return std::ranges::all_of(digits, [&](QChar digit) { return metrics.horizontalAdvance(digit) == width; });
}

} // namespace

PaneFonts PaneFonts::ofSize(double size)
{
    // In points, so that the desktop's own factor for texts applies.
    constexpr double pointsPerUnit = 72.0 / 96.0;
    PaneFonts fonts{
        .text = QGuiApplication::font(), .digits = {}, .fixed = QFontDatabase::systemFont(QFontDatabase::FixedFont)};
    fonts.text.setPointSizeF(size * pointsPerUnit);
    fonts.fixed.setPointSizeF(size * pointsPerUnit);
    fonts.digits = hasEquallyWideDigits(fonts.text) ? fonts.text : fonts.fixed;
    return fonts;
}

int PaneFonts::rowHeight() const
{
    auto const tallest = std::max(QFontMetrics(text).height(), QFontMetrics(fixed).height());
    return std::max(tallest + airInRow, iconSize() + airAroundIcon);
}

int PaneFonts::iconSize() const
{
    auto const height = QFontMetrics(text).height();
    return height <= usualIconSize + airInRow ? usualIconSize : height - height % 2;
}

} // namespace tw
