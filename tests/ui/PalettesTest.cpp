#include "Tarnwick/Toolkit/Appearance/Palettes.h"

#include "Tarnwick/Toolkit/Appearance/Contrast.h"
#include "Tarnwick/Toolkit/Appearance/PaneColors.h"
#include "Tarnwick/Toolkit/Appearance/ProgramStyle.h"
#include "Tarnwick/Toolkit/Dragging/DragPicture.h"

#include <QImage>
#include <QMenu>
#include <QPainter>
#include <QStyleOptionButton>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

constexpr double readable = 4.5;
constexpr double seen = 1.5;

class PalettesTest : public ::testing::TestWithParam<QPalette (*)()> {};

TEST_P(PalettesTest, everyRoleIsSetInEveryGroup)
{
    auto const palette = GetParam()();
    for (int group = 0; group < QPalette::NColorGroups; ++group) {
        for (int role = 0; role < QPalette::NColorRoles; ++role) {
            if (role == QPalette::NoRole)
                continue;
            EXPECT_TRUE(
                palette.isBrushSet(static_cast<QPalette::ColorGroup>(group), static_cast<QPalette::ColorRole>(role)))
                << group << ' ' << role;
        }
    }
}

TEST_P(PalettesTest, textIsReadableOnItsBackground)
{
    auto const palette = GetParam()();
    for (auto const group : {QPalette::Active, QPalette::Inactive}) {
        auto const check = [&](QPalette::ColorRole text, QPalette::ColorRole background) {
            EXPECT_GE(contrast(palette.color(group, text), palette.color(group, background)), readable)
                << group << ' ' << text << ' ' << background;
        };
        check(QPalette::WindowText, QPalette::Window);
        check(QPalette::Text, QPalette::Base);
        check(QPalette::Text, QPalette::AlternateBase);
        check(QPalette::ButtonText, QPalette::Button);
        check(QPalette::HighlightedText, QPalette::Highlight);
        check(QPalette::ToolTipText, QPalette::ToolTipBase);
        check(QPalette::Link, QPalette::Base);
    }
}

TEST_P(PalettesTest, whatIsDisabledStepsBack)
{
    auto const palette = GetParam()();
    auto const window = palette.color(QPalette::Window);
    EXPECT_LT(contrast(palette.color(QPalette::Disabled, QPalette::WindowText), window),
              contrast(palette.color(QPalette::Active, QPalette::WindowText), window));
    EXPECT_LT(contrast(palette.color(QPalette::PlaceholderText), palette.color(QPalette::Base)),
              contrast(palette.color(QPalette::Text), palette.color(QPalette::Base)));
}

TEST_P(PalettesTest, anEmptyCheckBoxIsSeenOnTheGroundOfAList)
{
    auto const palette = GetParam()();
    ProgramStyle const style(0);
    QStyleOptionButton box;
    box.palette = palette;
    box.rect = QRect(2, 2, 13, 13);
    box.state = QStyle::State_Enabled | QStyle::State_Off;
    QImage ground(17, 17, QImage::Format_RGB32);
    ground.fill(palette.color(QPalette::Base));
    QPainter painter(&ground);
    style.drawPrimitive(QStyle::PE_IndicatorCheckBox, &box, &painter, nullptr);
    EXPECT_GE(contrast(ground.pixelColor(8, 2), palette.color(QPalette::Base)), seen);
    EXPECT_GE(contrast(ground.pixelColor(14, 8), palette.color(QPalette::Base)), seen);
}

TEST_P(PalettesTest, theEdgeOfAMenuIsSeenOnTheWindow)
{
    auto const palette = GetParam()();
    ProgramStyle style(0);
    QMenu menu;
    menu.setStyle(&style);
    menu.setPalette(palette);
    menu.addAction(QStringLiteral("Copy"));
    menu.ensurePolished();
    menu.resize(menu.sizeHint());
    auto const picture = menu.grab().toImage();
    auto const middle = picture.rect().center();
    for (auto const place : {QPoint(0, middle.y()), QPoint(picture.width() - 1, middle.y()), QPoint(middle.x(), 0),
                             QPoint(middle.x(), picture.height() - 1)})
        EXPECT_GE(contrast(picture.pixelColor(place), palette.color(QPalette::Window)), seen)
            << place.x() << ' ' << place.y();
}

TEST_P(PalettesTest, theEdgeOfWhatIsDraggedIsSeenOnTheRows)
{
    auto const palette = GetParam()();
    QWidget origin;
    origin.setPalette(palette);
    auto const picture = DragPicture::of({}, QStringLiteral("name"), 1, origin).toImage();
    EXPECT_GE(contrast(picture.pixelColor(picture.width() / 2, 0), palette.color(QPalette::Base)), seen);
    EXPECT_GE(contrast(picture.pixelColor(0, picture.height() / 2), palette.color(QPalette::Base)), seen);
}

TEST_P(PalettesTest, theColoursOfRowsAreReadableAndTellRowsApart)
{
    auto const palette = GetParam()();
    auto const base = palette.color(QPalette::Base);
    auto const colors = PaneColors::of(palette);
    for (auto const &color : {colors.name, colors.folder, colors.detail, colors.marked})
        EXPECT_GE(contrast(color, base), readable) << color.name().toStdString();
    EXPECT_GE(contrast(colors.onCursor, colors.cursor), 3.0);
    EXPECT_GE(contrast(colors.markedOnCursor, colors.cursor), 3.0);
    EXPECT_NE(colors.marked, colors.name);
    EXPECT_NE(colors.marked, colors.folder);
    EXPECT_NE(colors.folder, colors.name);
    EXPECT_NE(colors.markedOnCursor, colors.onCursor);
}

INSTANTIATE_TEST_SUITE_P(BothSchemes, PalettesTest, ::testing::Values(&Palettes::dark, &Palettes::light));

TEST(PaletteDarknessTest, isTold)
{
    EXPECT_TRUE(Palettes::isDark(Palettes::dark()));
    EXPECT_FALSE(Palettes::isDark(Palettes::light()));
}

TEST(PaneColorsTest, areReadableOnAnyDesktopsColours)
{
    for (auto const &background : {QColor(255, 250, 205), QColor(0, 43, 54), QColor(128, 128, 128), QColor(90, 0, 0)}) {
        QPalette palette = Palettes::light();
        palette.setColor(QPalette::Base, background);
        palette.setColor(QPalette::Highlight, background);
        auto const colors = PaneColors::of(palette);
        EXPECT_GE(contrast(colors.marked, background), readable) << background.name().toStdString();
        EXPECT_GE(contrast(colors.folder, background), readable) << background.name().toStdString();
        EXPECT_GE(contrast(colors.markedOnCursor, background), 3.0) << background.name().toStdString();
    }
}

TEST(ContrastTest, goesFromOneToTwentyOne)
{
    EXPECT_DOUBLE_EQ(contrast(QColor(10, 20, 30), QColor(10, 20, 30)), 1);
    EXPECT_NEAR(contrast(QColor(0, 0, 0), QColor(255, 255, 255)), 21, 0.001);
    EXPECT_DOUBLE_EQ(contrast(QColor(255, 0, 0), QColor(0, 0, 0)), contrast(QColor(0, 0, 0), QColor(255, 0, 0)));
}

TEST(ContrastTest, aColourThatIsReadableAlreadyStaysAsItIs)
{
    EXPECT_EQ(readableOn(QColor(255, 255, 255), QColor(20, 40, 60), readable), QColor(20, 40, 60));
}

} // namespace
} // namespace tw::test
