#include "Tarnwick/Toolkit/Widgets/ElidedLabel.h"

#include "tests/ui/QtLoop.h"

#include <QApplication>
#include <QHelpEvent>
#include <QToolTip>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

class ElidedLabelTest : public ::testing::Test {
protected:
    void hover()
    {
        QHelpEvent event(QEvent::ToolTip, {5, 5}, label.mapToGlobal(QPoint(5, 5)));
        QApplication::sendEvent(&label, &event);
    }

    ~ElidedLabelTest() override { QToolTip::hideText(); }

    ElidedLabel label;
};

TEST_F(ElidedLabelTest, aTextThatDoesNotFitIsItsOwnToolTip)
{
    label.resize(60, 20);
    label.show();
    label.setText(QStringLiteral("⚠ /a/<b>path</b>: a long story of what went wrong"));
    hover();
    EXPECT_TRUE(QToolTip::text().contains(QStringLiteral("&lt;b&gt;path&lt;/b&gt;: a long story of what went wrong")));
}

TEST_F(ElidedLabelTest, aTextThatFitsHasNoToolTip)
{
    label.setText(QStringLiteral("short"));
    label.resize(label.sizeHint());
    label.show();
    hover();
    EXPECT_TRUE(QToolTip::text().isEmpty());
}

TEST_F(ElidedLabelTest, aLongTextDoesNotMakeTheWindowWider)
{
    label.setText(QString(5000, QLatin1Char('x')));
    EXPECT_EQ(label.minimumSizeHint().width(), 0);
}

TEST_F(ElidedLabelTest, aScreenReaderIsToldTheWholeText)
{
    label.resize(30, 20);
    label.setText(QStringLiteral("12 files, 3 dirs"));
    EXPECT_EQ(label.accessibleName(), QStringLiteral("12 files, 3 dirs"));
}

TEST_F(ElidedLabelTest, aFlashIsSeenAndPasses)
{
    label.setText(QStringLiteral("3 files"));
    label.resize(200, 20);
    label.show();
    auto const before = label.grab().toImage();
    label.flash();
    EXPECT_TRUE(label.isFlashing());
    EXPECT_NE(label.grab().toImage(), before);
    processUntil([&] { return !label.isFlashing(); });
    EXPECT_EQ(label.grab().toImage(), before);
}

} // namespace
} // namespace tw::test
