#include "Tarnwick/Toolkit/Dialogs/QuestionSheet.h"
#include "Tarnwick/Toolkit/Table/NameEditor.h"
#include "tests/ui/QtLoop.h"
#include "tests/ui/WindowTest.h"

#include <QApplication>
#include <QTest>
#include <gmock/gmock.h>

#include <filesystem>

namespace tw::test {
namespace {

using ::testing::ElementsAre;

/// Names edited in their rows, in the real window on real folders.
class PaneRenameTest : public WindowTest {
protected:
    PaneRenameTest()
    {
        left.file("a.txt", "content");
        left.file("b.txt");
    }

    /// The field, while it is open.
    NameEditor *editor()
    {
        for (auto *const field : table(PaneSide::left).findChildren<NameEditor *>()) {
            if (field->isVisible())
                return field;
        }
        return nullptr;
    }

    /// Opens the field on the first file.
    NameEditor &edit()
    {
        open();
        press(Qt::Key_Down);
        press(Qt::Key_F2);
        EXPECT_NE(editor(), nullptr);
        EXPECT_TRUE(editor()->hasFocus());
        return *editor();
    }

    void type(QString const &text) { QTest::keyClicks(QApplication::focusWidget(), text); }

    bool isThere(std::string const &name) { return std::filesystem::exists(left.path(name)); }

    void waitForName(std::string const &name)
    {
        processUntil([&] { return cursorName() == name; });
        EXPECT_TRUE(isThere(name));
    }

    void waitForEnd()
    {
        processUntil([this] { return editor() == nullptr; });
    }

    void clickName(int row)
    {
        QTest::mouseClick(table(PaneSide::left).viewport(), Qt::LeftButton, Qt::NoModifier,
                          middleOf(row, PaneColumn::name));
    }
};

TEST_F(PaneRenameTest, theBaseIsSelectedAndReturnRenames)
{
    auto &field = edit();
    EXPECT_EQ(field.text(), QStringLiteral("a.txt"));
    EXPECT_EQ(field.selectedText(), QStringLiteral("a"));
    type(QStringLiteral("new"));
    press(Qt::Key_Return);
    waitForName("new.txt");
    EXPECT_FALSE(isThere("a.txt"));
    EXPECT_TRUE(table(PaneSide::left).hasFocus());
}

TEST_F(PaneRenameTest, bytesThatAreNoTextStayWhereTheyAreNotEdited)
{
    left.file("1\xFF\xFEname");
    auto &field = edit();
    press(Qt::Key_End);
    type(QStringLiteral("X"));
    for (auto back = 0; back < 5; ++back)
        press(Qt::Key_Left);
    EXPECT_EQ(field.cursorPosition(), 3); // behind both bytes
    press(Qt::Key_Backspace);
    press(Qt::Key_Return);
    waitForName("1\xFFnameX");
    EXPECT_FALSE(isThere("1\xFF\xFEname"));
}

TEST_F(PaneRenameTest, escapeLeavesTheName)
{
    edit();
    type(QStringLiteral("new"));
    press(Qt::Key_Escape);
    waitForEnd();
    EXPECT_TRUE(isThere("a.txt"));
    EXPECT_TRUE(table(PaneSide::left).hasFocus());
    EXPECT_EQ(cursorName(), "a.txt");
}

TEST_F(PaneRenameTest, tabAndAClickElsewhereCommit)
{
    edit();
    type(QStringLiteral("new"));
    press(Qt::Key_Tab);
    waitForName("new.txt");
    EXPECT_TRUE(table(PaneSide::left).hasFocus());
    press(Qt::Key_F2);
    type(QStringLiteral("newer"));
    clickName(0);
    processUntil([this] { return isThere("newer.txt"); });
}

TEST_F(PaneRenameTest, theKeysOfTheTableAreTheFieldsMeanwhile)
{
    auto &field = edit();
    auto const row = active().cursorRow();
    for (auto const key :
         {Qt::Key_Down, Qt::Key_Home, Qt::Key_End, Qt::Key_PageDown, Qt::Key_Insert, Qt::Key_Backspace})
        press(key);
    EXPECT_EQ(active().cursorRow(), row);
    EXPECT_TRUE(active().model().isUnmarked());
    EXPECT_EQ(field.text(), QStringLiteral("a.tx"));
    EXPECT_FALSE(active().isSearching());
}

TEST_F(PaneRenameTest, whatWasTypedIsUndoneInside)
{
    auto &field = edit();
    type(QStringLiteral("x"));
    EXPECT_EQ(field.text(), QStringLiteral("x.txt"));
    press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(field.text(), QStringLiteral("a.txt"));
}

TEST_F(PaneRenameTest, theFieldGrowsWithTheNameAndStaysInTheTable)
{
    auto &field = edit();
    auto const before = field.width();
    field.setText(QString(60, QLatin1Char('w')));
    EXPECT_GT(field.width(), before);
    field.setText(QString(1000, QLatin1Char('w')));
    EXPECT_TRUE(table(PaneSide::left).viewport()->rect().contains(field.geometry()));
    field.setText(QStringLiteral("w"));
    EXPECT_EQ(field.width(), before);
}

TEST_F(PaneRenameTest, aRefreshLeavesTheFieldAndWhatIsTyped)
{
    edit();
    type(QStringLiteral("new"));
    left.file("later");
    pane(PaneSide::right).navigate(left.path()); // reads the folder that both show
    waitForPath(PaneSide::right, left.path());
    press(Qt::Key_R, Qt::ControlModifier);
    processUntil([this] { return !shownNames(PaneSide::right).empty(); });
    ASSERT_NE(editor(), nullptr);
    EXPECT_EQ(editor()->text(), QStringLiteral("new.txt"));
    press(Qt::Key_Return);
    waitForName("new.txt");
    EXPECT_THAT(shownNames(PaneSide::left), ElementsAre("..", "b.txt", "later", "new.txt"));
}

TEST_F(PaneRenameTest, aWindowThatLosesTheKeyboardKeepsTheField)
{
    edit();
    type(QStringLiteral("new"));
    QWidget other;
    other.show();
    other.activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(&other));
    ASSERT_NE(editor(), nullptr);
    EXPECT_EQ(editor()->text(), QStringLiteral("new.txt"));
    window->activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(window.get()));
    press(Qt::Key_Return);
    waitForName("new.txt");
}

TEST_F(PaneRenameTest, anExistingNameIsAnErrorAndBothFilesStay)
{
    edit();
    type(QStringLiteral("b"));
    press(Qt::Key_Return);
    processUntil([this] {
        auto *const sheet = window->findChild<QuestionSheet *>();
        return sheet && sheet->isVisible();
    });
    EXPECT_EQ(window->findChild<QuestionSheet *>()->windowTitle(), QStringLiteral("Operation failed"));
    EXPECT_TRUE(QTest::qWaitForWindowActive(window->findChild<QuestionSheet *>()));
    press(Qt::Key_Return);
    EXPECT_TRUE(isThere("a.txt"));
    EXPECT_TRUE(isThere("b.txt"));
    processUntil([this] { return table(PaneSide::left).hasFocus(); });
}

TEST_F(PaneRenameTest, aSecondClickOnTheNameOpensTheFieldAndADoubleClickDoesNot)
{
    open();
    clickName(1);
    EXPECT_EQ(cursorName(), "a.txt");
    auto const before = QApplication::doubleClickInterval();
    QApplication::setDoubleClickInterval(1);
    clickName(1);
    processUntil([this] { return editor() != nullptr; });
    QApplication::setDoubleClickInterval(before);
    press(Qt::Key_Escape);
    waitForEnd();
}

TEST_F(PaneRenameTest, aClickThatBringsTheKeyboardOpensNoField)
{
    open();
    press(Qt::Key_Down);
    press(Qt::Key_Tab);
    QApplication::setDoubleClickInterval(1);
    clickName(1);
    press(Qt::Key_Down);
    EXPECT_EQ(cursorName(), "b.txt");
    EXPECT_EQ(editor(), nullptr);
    QApplication::setDoubleClickInterval(400);
}

TEST_F(PaneRenameTest, theWindowCanCloseWhileANameIsEdited)
{
    edit();
    type(QStringLiteral("new"));
    close();
    EXPECT_EQ(window, nullptr);
}

} // namespace
} // namespace tw::test
