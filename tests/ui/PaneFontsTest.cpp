#include "Tarnwick/Toolkit/Appearance/PaneFonts.h"

#include <QFontInfo>
#include <QFontMetricsF>
#include <gtest/gtest.h>

#include <set>

namespace tw::test {
namespace {

TEST(PaneFontsTest, theTenDigitsOfSizesAndDatesAreEquallyWide)
{
    QFontMetricsF const metrics(PaneFonts::ofSize(12).digits);
    std::set<qreal> widths;
    for (auto const digit : QStringLiteral("0123456789"))
        widths.insert(metrics.horizontalAdvance(digit));
    EXPECT_EQ(widths.size(), 1U);
}

TEST(PaneFontsTest, attributesHaveAFixedFont)
{
    QFontMetricsF const metrics(PaneFonts::ofSize(12).fixed);
    EXPECT_EQ(metrics.horizontalAdvance(QStringLiteral("iii")), metrics.horizontalAdvance(QStringLiteral("www")));
}

TEST(PaneFontsTest, theSizeIsInUnitsOfTheWindow)
{
    auto const fonts = PaneFonts::ofSize(12);
    EXPECT_DOUBLE_EQ(fonts.text.pointSizeF(), 9);
    EXPECT_DOUBLE_EQ(fonts.fixed.pointSizeF(), 9);
}

TEST(PaneFontsTest, anIconHasItsDrawnSizeBesideUsualText)
{
    EXPECT_EQ(PaneFonts::ofSize(12).iconSize(), 16);
    EXPECT_GT(PaneFonts::ofSize(20).iconSize(), 16);
    EXPECT_EQ(PaneFonts::ofSize(20).iconSize() % 2, 0);
}

TEST(PaneFontsTest, aRowHasRoomForItsIcon)
{
    for (auto const size : {9.0, 12.0, 20.0}) {
        auto const fonts = PaneFonts::ofSize(size);
        EXPECT_GT(fonts.rowHeight(), fonts.iconSize()) << size;
    }
}

} // namespace
} // namespace tw::test
