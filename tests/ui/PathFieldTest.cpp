#include "Tarnwick/Toolkit/Widgets/PathField.h"

#include "Tarnwick/Toolkit/Widgets/BusySpinner.h"
#include "Tarnwick/Toolkit/Widgets/CompletionList.h"
#include "Tarnwick/Toolkit/Widgets/ElidedLabel.h"
#include "tests/support/Listings.h"
#include "tests/ui/QtLoop.h"
#include "tests/ui/ScopedVariable.h"
#include "tests/ui/WindowTest.h"

#include <QAccessible>
#include <QApplication>
#include <QHelpEvent>
#include <QTest>
#include <QToolTip>
#include <gmock/gmock.h>

namespace tw::test {
namespace {

using ::testing::HasSubstr;

class PathFieldTest : public WindowTest {
protected:
    PathFieldTest() { left.folder("inner"); }

    PathField &field() { return window->pane(PaneSide::left).pathField(); }

    /// With a click beside the path.
    void enter()
    {
        QTest::mouseClick(&field(), Qt::LeftButton, {}, QPoint(field().width() - 2, field().height() / 2));
        ASSERT_TRUE(field().hasFocus());
    }

    /// Clicks the part that is so far from the end.
    void clickPart(std::size_t fromEnd)
    {
        auto const places = field().parts().places();
        QTest::mouseClick(&field(), Qt::LeftButton, {}, places.at(places.size() - 1 - fromEnd).center());
    }

    QAccessibleInterface &accessible() { return *QAccessible::queryAccessibleInterface(&field()); }

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

TEST_F(PathFieldTest, tabCompletesTheNameAndGoesThroughWhatThereIs)
{
    left.folder("other-1");
    left.folder("other-2");
    open();
    type("in");
    press(Qt::Key_Tab);
    processUntil([this] { return shown() == "inner/"; });
    type(left.path("o"));
    press(Qt::Key_Tab);
    processUntil([this] { return shown() == left.path("other-"); });
    press(Qt::Key_Tab);
    EXPECT_EQ(shown(), left.path("other-1"));
    press(Qt::Key_Tab);
    EXPECT_EQ(shown(), left.path("other-2"));
    press(Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_EQ(shown(), left.path("other-1"));
    press(Qt::Key_Return);
    waitForPath(PaneSide::left, left.path("other-1"));
}

TEST_F(PathFieldTest, severalNamesAreListedBelowTheFieldAndTheArrowsGoThroughThem)
{
    left.folder("other-1");
    left.folder("other-2");
    open();
    type(left.path("o"));
    EXPECT_EQ(field().completions(), nullptr);
    press(Qt::Key_Tab);
    processUntil([this] { return field().completions() != nullptr; });
    auto &list = *field().completions();
    EXPECT_EQ(list.count(), 2);
    EXPECT_EQ(list.currentRow(), -1) << "the beginning that all names share is not one of the names";
    EXPECT_EQ(list.mapTo(window.get(), QPoint()).y(), field().mapTo(window.get(), QPoint(0, field().height())).y());
    press(Qt::Key_Down);
    press(Qt::Key_Down);
    EXPECT_EQ(shown(), left.path("other-2"));
    EXPECT_EQ(list.currentItem()->text(), QStringLiteral("other-2"));
    press(Qt::Key_Up);
    EXPECT_EQ(shown(), left.path("other-1"));
    EXPECT_TRUE(field().hasFocus());
    press(Qt::Key_Return);
    EXPECT_EQ(field().completions(), nullptr);
    waitForPath(PaneSide::left, left.path("other-1"));
}

TEST_F(PathFieldTest, escapeClosesTheListAndBringsBackWhatWasTypedAndAnotherOneGivesUp)
{
    left.folder("other-1");
    left.folder("other-2");
    open();
    type(left.path("o"));
    press(Qt::Key_Tab);
    processUntil([this] { return field().completions() != nullptr; });
    press(Qt::Key_Escape);
    EXPECT_EQ(field().completions(), nullptr);
    EXPECT_EQ(shown(), left.path("o"));
    EXPECT_TRUE(field().hasFocus());
    press(Qt::Key_Escape);
    EXPECT_EQ(shown(), left.path());
    EXPECT_TRUE(table(PaneSide::left).hasFocus());
}

TEST_F(PathFieldTest, aClickInTheListTakesTheName)
{
    left.folder("other-1");
    left.folder("other-2");
    open();
    type(left.path("o"));
    press(Qt::Key_Tab);
    processUntil([this] { return field().completions() != nullptr; });
    auto &list = *field().completions();
    QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, list.visualItemRect(list.item(1)).center());
    EXPECT_EQ(field().completions(), nullptr);
    EXPECT_EQ(shown(), left.path("other-2"));
    EXPECT_TRUE(field().hasFocus());
}

TEST_F(PathFieldTest, whatIsTypedOnClosesTheList)
{
    left.folder("other-1");
    left.folder("other-2");
    open();
    type(left.path("o"));
    press(Qt::Key_Tab);
    processUntil([this] { return field().completions() != nullptr; });
    QTest::keyClicks(&field(), QStringLiteral("2"));
    EXPECT_EQ(field().completions(), nullptr);
    EXPECT_EQ(shown(), left.path("other-2"));
}

TEST_F(PathFieldTest, whatLeavesTheFieldClosesTheList)
{
    left.folder("other-1");
    left.folder("other-2");
    open();
    type(left.path("o"));
    press(Qt::Key_Tab);
    processUntil([this] { return field().completions() != nullptr; });
    QTest::mouseClick(table(PaneSide::right).viewport(), Qt::LeftButton);
    EXPECT_EQ(field().completions(), nullptr);
}

TEST_F(PathFieldTest, aLongListOfNamesStaysInTheWindow)
{
    for (int number = 100; number < 200; ++number)
        left.folder("other-" + std::to_string(number));
    open();
    type(left.path("o"));
    press(Qt::Key_Tab);
    processUntil([this] { return field().completions() != nullptr; });
    EXPECT_EQ(field().completions()->count(), 100);
    EXPECT_TRUE(window->rect().contains(field().completions()->geometry()));
    EXPECT_LT(field().completions()->height(), table(PaneSide::left).height());
}

TEST_F(PathFieldTest, aCompletionCanBeUndone)
{
    open();
    type("in");
    press(Qt::Key_Tab);
    processUntil([this] { return shown() == "inner/"; });
    press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(shown(), "in");
}

TEST_F(PathFieldTest, whatIsTypedDuringACompletionStays)
{
    open();
    type("inx");
    field().showCompletion({"in", listing("/", {directory("inner")})});
    EXPECT_EQ(shown(), "inx");
}

TEST_F(PathFieldTest, tabWithoutAnythingToCompleteBeepsAndKeepsTheText)
{
    open();
    type("nothing");
    press(Qt::Key_Tab);
    processUntil([this] { return window->pane(PaneSide::left).statusLine().isFlashing(); });
    EXPECT_EQ(shown(), "nothing");
    EXPECT_TRUE(field().hasFocus());
}

TEST_F(PathFieldTest, aPathThatLeadsNowhereStaysInTheFieldToBeCorrected)
{
    open();
    type(left.path("innr"));
    press(Qt::Key_Return);
    processUntil([this] { return field().hasFocus(); });
    EXPECT_EQ(shown(), left.path("innr"));
    EXPECT_NE(notice(PaneSide::left), "");
    QTest::keyClick(&field(), Qt::Key_Backspace);
    QTest::keyClicks(&field(), QStringLiteral("er"));
    press(Qt::Key_Return);
    waitForPath(PaneSide::left, left.path("inner"));
    EXPECT_EQ(notice(PaneSide::left), "");
}

TEST_F(PathFieldTest, afterATextThatLeadsNowhereEscapeBringsTheOldPathBack)
{
    open();
    type("http://nowhere/");
    press(Qt::Key_Return);
    EXPECT_EQ(shown(), "http://nowhere/");
    EXPECT_TRUE(field().hasFocus());
    EXPECT_THAT(status(PaneSide::left), HasSubstr("http:// addresses cannot be opened"));
    press(Qt::Key_Escape);
    EXPECT_EQ(shown(), left.path());
    EXPECT_TRUE(table(PaneSide::left).hasFocus());
}

TEST_F(PathFieldTest, aClickOnAPartOfThePathGoesThere)
{
    open();
    active().navigate(left.path("inner"));
    waitForPath(PaneSide::left, left.path("inner"));
    clickPart(1);
    waitForPath(PaneSide::left, left.path());
    EXPECT_EQ(cursorName(), "inner");
    EXPECT_TRUE(table(PaneSide::left).hasFocus());
}

TEST_F(PathFieldTest, aClickOnTheLastPartBeginsToEdit)
{
    open();
    clickPart(0);
    EXPECT_TRUE(field().hasFocus());
    EXPECT_EQ(shown(), left.path());
}

TEST_F(PathFieldTest, aPressThatIsDrawnAwayFromItsPartIsCalledOff)
{
    open();
    auto const places = field().parts().places();
    QTest::mousePress(&field(), Qt::LeftButton, {}, places.front().center());
    QTest::mouseRelease(&field(), Qt::LeftButton, {}, QPoint(field().width() - 2, 5));
    EXPECT_EQ(active().requestedPath(), left.path());
    EXPECT_FALSE(field().hasFocus());
}

TEST_F(PathFieldTest, aClickOnAPartOfTheOtherPaneMakesItTheActiveOne)
{
    open();
    press(Qt::Key_Tab);
    ASSERT_EQ(controller->activeSide(), PaneSide::right);
    clickPart(1);
    EXPECT_EQ(controller->activeSide(), PaneSide::left);
}

TEST_F(PathFieldTest, aPartUnderTheMouseShowsThatItCanBeClicked)
{
    open();
    QTest::mouseMove(&field(), field().parts().places().front().center());
    processUntil([this] { return field().cursor().shape() == Qt::PointingHandCursor; });
    QTest::mouseMove(&field(), QPoint(field().width() - 2, 5));
    processUntil([this] { return field().cursor().shape() == Qt::IBeamCursor; });
}

TEST_F(PathFieldTest, theKeyToEditSelectsThePath)
{
    open();
    press(Qt::Key_L, Qt::ControlModifier);
    EXPECT_TRUE(field().hasFocus());
    EXPECT_EQ(field().selectedText().toStdString(), left.path());
    QTest::keyClicks(&field(), QStringLiteral("inner"));
    press(Qt::Key_Return);
    waitForPath(PaneSide::left, left.path("inner"));
}

TEST_F(PathFieldTest, aLongPathHasItsEndAndTheWholeAsItsToolTip)
{
    std::string deep;
    for (int i = 0; i < 5; ++i) {
        deep += (deep.empty() ? "" : "/") + std::string(60, static_cast<char>('a' + i));
        left.folder(deep);
    }
    open();
    active().navigate(left.path(deep));
    waitForPath(PaneSide::left, left.path(deep));
    auto const painted = field().parts().shown();
    EXPECT_TRUE(painted.startsWith(QStringLiteral("/…/")));
    EXPECT_TRUE(painted.endsWith(QStringLiteral("eee")));
    EXPECT_LE(field().parts().places().back().right(), field().spinner().x());
    QHelpEvent help(QEvent::ToolTip, {5, 5}, field().mapToGlobal(QPoint(5, 5)));
    QApplication::sendEvent(&field(), &help);
    EXPECT_TRUE(QToolTip::text().contains(QString::fromStdString(left.path(deep))));
    QToolTip::hideText();
}

TEST_F(PathFieldTest, whatTurnsTheDirectionInANameIsVisible)
{
    left.folder("a\u202Eb");
    open();
    active().navigate(left.path("a\u202Eb"));
    waitForPath(PaneSide::left, left.path("a\u202Eb"));
    EXPECT_EQ(shown(), left.path("a\uFFFDb"));
}

TEST_F(PathFieldTest, aScreenReaderKnowsTheFieldAndItsPath)
{
    open();
    EXPECT_EQ(accessible().role(), QAccessible::EditableText);
    EXPECT_EQ(accessible().text(QAccessible::Name), QStringLiteral("Path"));
    EXPECT_EQ(accessible().text(QAccessible::Value).toStdString(), left.path());
    press(Qt::Key_L, Qt::ControlModifier);
    EXPECT_TRUE(accessible().state().focused);
    press(Qt::Key_Escape);
    active().navigate(left.path("inner"));
    waitForPath(PaneSide::left, left.path("inner"));
    EXPECT_EQ(accessible().text(QAccessible::Value).toStdString(), left.path("inner"));
}

TEST_F(PathFieldTest, aScreenReaderKnowsTheStatusLineAndItsText)
{
    open();
    auto &line = window->pane(PaneSide::left).statusLine();
    auto &interface = *QAccessible::queryAccessibleInterface(&line);
    EXPECT_EQ(interface.role(), QAccessible::StatusBar);
    EXPECT_EQ(interface.text(QAccessible::Name), line.text());
    active().showStatus("something new");
    EXPECT_EQ(interface.text(QAccessible::Name), QStringLiteral("something new"));
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
