#include "Tarnwick/Toolkit/Appearance/SymbolIcons.h"

#include "Tarnwick/Commands/ToolBarItem.h"
#include "Tarnwick/Toolkit/Appearance/Contrast.h"

#include <QApplication>
#include <QImage>
#include <QPalette>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

class SymbolIconsTest : public testing::Test {
protected:
    ~SymbolIconsTest() override { QApplication::setPalette(before); }

    static QImage draw(std::string_view name, qreal scale, QIcon::Mode mode = QIcon::Normal)
    {
        return SymbolIcons::ownIcon(name).pixmap(QSize(16, 16), scale, mode).toImage();
    }

    /// The darkest of what is drawn.
    static QColor strongest(QImage const &picture)
    {
        QColor found(Qt::transparent);
        for (int y = 0; y < picture.height(); ++y) {
            for (int x = 0; x < picture.width(); ++x) {
                if (auto const color = picture.pixelColor(x, y); color.alpha() > found.alpha())
                    found = color;
            }
        }
        return found;
    }

    static void setText(QColor const &color)
    {
        auto colors = QApplication::palette();
        colors.setColor(QPalette::WindowText, color);
        QApplication::setPalette(colors);
    }

    QPalette const before = QApplication::palette();
};

TEST_F(SymbolIconsTest, everyItemOfTheToolBarIsDrawn)
{
    for (auto const &item : toolBarItems()) {
        if (item.command)
            EXPECT_GT(strongest(draw(item.ownIcon, 1)).alpha(), 128) << item.ownIcon;
    }
}

TEST_F(SymbolIconsTest, aDrawingHasThePixelsOfItsScale)
{
    for (auto const scale : {1.0, 1.5, 2.0}) {
        auto const picture = draw("refresh", scale);
        EXPECT_EQ(picture.width(), static_cast<int>(16 * scale));
        EXPECT_GT(strongest(picture).alpha(), 128);
    }
}

TEST_F(SymbolIconsTest, aDrawingHasTheColorOfTextAtThatMoment)
{
    for (auto const color : {QColor(Qt::black), QColor(Qt::white)}) {
        setText(color);
        auto const drawn = strongest(draw("refresh", 2));
        EXPECT_NEAR(drawn.red(), color.red(), 8);
    }
}

TEST_F(SymbolIconsTest, aPictureCanBeSeenOnAnyBackground)
{
    for (auto const &background : {QColor(Qt::white), QColor(Qt::black)}) {
        setText(background == QColor(Qt::white) ? Qt::black : Qt::white);
        for (auto const &item : toolBarItems()) {
            if (!item.command)
                continue;
            auto const picture = SymbolIcons::icon(item.themeIcon, item.ownIcon, background).pixmap(24).toImage();
            EXPECT_GE(contrast(strongest(picture), background), 2) << item.identifier;
        }
    }
}

} // namespace
} // namespace tw::test
