#include "Tarnwick/Toolkit/Widgets/PathField.h"

#include "tests/ui/QtLoop.h"
#include "tests/ui/ScopedVariable.h"
#include "tests/ui/WindowTest.h"

#include <QApplication>
#include <QTest>
#include <gmock/gmock.h>

namespace tw::test {
namespace {

using ::testing::HasSubstr;

class PathFieldTest : public WindowTest {
protected:
    PathFieldTest() { left.folder("inner"); }

    PathField &field() { return window->pane(PaneSide::left).pathField(); }

    void enter()
    {
        QTest::mouseClick(&field(), Qt::LeftButton);
        ASSERT_TRUE(field().hasFocus());
    }

    void type(std::string const &text)
    {
        enter();
        field().selectAll();
        QTest::keyClicks(&field(), QString::fromStdString(text));
    }

    std::string shown() { return field().text().toStdString(); }
};

TEST_F(PathFieldTest, showsThePathOfTheListing)
{
    open();
    EXPECT_EQ(shown(), left.path());
}

TEST_F(PathFieldTest, returnGoesToTheTypedPathAndTheKeyboardToTheTable)
{
    open();
    type(left.path("inner"));
    press(Qt::Key_Return);
    waitForPath(PaneSide::left, left.path("inner"));
    EXPECT_EQ(shown(), left.path("inner"));
    EXPECT_TRUE(table(PaneSide::left).hasFocus());
}

TEST_F(PathFieldTest, aTildeIsTheHomeDirectory)
{
    TemporaryFolder const home;
    ScopedVariable const variable("HOME", home.path());
    open();
    type("~");
    press(Qt::Key_Return);
    waitForPath(PaneSide::left, home.path());
}

TEST_F(PathFieldTest, aRelativePathStartsAtTheFolderOnShow)
{
    open();
    type("inner/../inner/");
    press(Qt::Key_Return);
    waitForPath(PaneSide::left, left.path("inner"));
}

TEST_F(PathFieldTest, escapeGivesUpAndTheKeyboardGoesBackToTheTable)
{
    open();
    type("/somewhere/else");
    press(Qt::Key_Escape);
    EXPECT_EQ(shown(), left.path());
    EXPECT_TRUE(table(PaneSide::left).hasFocus());
    EXPECT_EQ(active().requestedPath(), left.path());
}

TEST_F(PathFieldTest, tabGivesUpToo)
{
    open();
    type("/somewhere/else");
    press(Qt::Key_Tab);
    EXPECT_EQ(shown(), left.path());
    EXPECT_TRUE(table(PaneSide::left).hasFocus());
}

TEST_F(PathFieldTest, aClickElsewhereGivesUpToo)
{
    open();
    type("/somewhere/else");
    QTest::mouseClick(table(PaneSide::right).viewport(), Qt::LeftButton);
    EXPECT_EQ(shown(), left.path());
}

TEST_F(PathFieldTest, anEmptyTextLeadsNowhere)
{
    open();
    enter();
    field().selectAll();
    press(Qt::Key_Delete);
    press(Qt::Key_Return);
    EXPECT_EQ(shown(), left.path());
    EXPECT_EQ(active().requestedPath(), left.path());
}

TEST_F(PathFieldTest, aPathThatIsNoFolderSaysSoAndTheListingStays)
{
    left.file("plain");
    open();
    type(left.path("plain"));
    press(Qt::Key_Return);
    processUntil([this] { return !notice(PaneSide::left).empty(); });
    EXPECT_THAT(notice(PaneSide::left), HasSubstr(left.path("plain")));
    EXPECT_EQ(active().pathOnShow(), left.path());
}

TEST_F(PathFieldTest, enteringTheFieldMakesItsPaneTheActiveOne)
{
    open();
    press(Qt::Key_Tab);
    ASSERT_EQ(controller->activeSide(), PaneSide::right);
    enter();
    EXPECT_EQ(controller->activeSide(), PaneSide::left);
}

TEST_F(PathFieldTest, aRefreshDoesNotDisturbWhoIsTyping)
{
    open();
    type("/some");
    left.file("new");
    waitForReload(PaneSide::left, [this] { active().refresh(); });
    EXPECT_EQ(shown(), "/some");
    press(Qt::Key_Escape);
    EXPECT_EQ(shown(), left.path());
}

TEST_F(PathFieldTest, aNameThatIsNotUtf8IsShownRepairedAndReachedByItsBytes)
{
    auto const odd = left.folder("odd\xff");
    left.file("odd\xff/deep");
    open();
    press(Qt::Key_End);
    press(Qt::Key_Return);
    waitForPath(PaneSide::left, odd);
    EXPECT_EQ(shown(), left.path("odd\xEF\xBF\xBD"));
    // Return on the path as it is shown stays there, instead of going to a name that does not exist.
    enter();
    waitForReload(PaneSide::left, [this] { press(Qt::Key_Return); });
    EXPECT_EQ(active().pathOnShow(), odd);
    EXPECT_EQ(shownNames(PaneSide::left).size(), 2U);
}

} // namespace
} // namespace tw::test
