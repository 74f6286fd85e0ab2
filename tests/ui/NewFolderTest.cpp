#include "Tarnwick/Toolkit/Commands/FunctionKeyButton.h"
#include "Tarnwick/Toolkit/Dialogs/PromptSheet.h"
#include "Tarnwick/Toolkit/Dialogs/QuestionSheet.h"
#include "tests/ui/QtLoop.h"
#include "tests/ui/WindowTest.h"

#include <QLineEdit>
#include <QTest>

#include <algorithm>
#include <filesystem>

namespace tw::test {
namespace {

/// F7 in the real window, on real folders.
class NewFolderTest : public WindowTest {
protected:
    template <class T>
    T *shownSheet()
    {
        for (auto *const sheet : window->findChildren<T *>()) {
            if (sheet->isVisible())
                return sheet;
        }
        return nullptr;
    }

    template <class T>
    T &waitForSheet()
    {
        processUntil([this] { return shownSheet<T>() != nullptr; });
        EXPECT_TRUE(QTest::qWaitForWindowActive(shownSheet<T>()));
        return *shownSheet<T>();
    }

    void pressF7()
    {
        press(Qt::Key_F7);
        waitForSheet<PromptSheet>();
    }

    void typeAndConfirm(QString const &name)
    {
        QTest::keyClicks(QApplication::focusWidget(), name);
        press(Qt::Key_Return);
    }

    bool exists(std::string const &name) const { return std::filesystem::is_directory(left.path(name)); }
};

TEST_F(NewFolderTest, theNewFolderIsThereAndUnderTheCursorAndThePaneHasTheKeyboardAgain)
{
    left.folder("old");
    open();
    pressF7();
    typeAndConfirm(QStringLiteral("made here"));
    processUntil([this] { return cursorName() == "made here"; });
    EXPECT_TRUE(exists("made here"));
    processUntil([this] { return table(PaneSide::left).hasFocus(); });
    press(Qt::Key_Return);
    waitForPath(PaneSide::left, left.path("made here"));
}

TEST_F(NewFolderTest, theFunctionButtonAsksToo)
{
    open();
    auto const buttons = window->findChildren<FunctionKeyButton *>();
    auto const button = std::ranges::find(buttons, QStringLiteral("F7 NewDir"), &FunctionKeyButton::text);
    ASSERT_NE(button, buttons.end());
    QTest::mouseClick(*button, Qt::LeftButton);
    EXPECT_EQ(waitForSheet<PromptSheet>().windowTitle(), QStringLiteral("New folder"));
    press(Qt::Key_Escape);
    EXPECT_EQ(shownSheet<PromptSheet>(), nullptr);
}

TEST_F(NewFolderTest, aNameThatCannotBeIsRefusedAndStaysToBeCorrected)
{
    open();
    pressF7();
    typeAndConfirm(QStringLiteral("a/b"));
    EXPECT_TRUE(shownSheet<PromptSheet>()->complaint().contains(QLatin1Char('/')));
    EXPECT_EQ(shownSheet<PromptSheet>()->field().text(), QStringLiteral("a/b"));
    press(Qt::Key_Escape);
    EXPECT_FALSE(exists("a"));
}

TEST_F(NewFolderTest, aNameThatAFileHasIsAnErrorThatSaysSo)
{
    left.file("taken");
    open();
    pressF7();
    typeAndConfirm(QStringLiteral("taken"));
    EXPECT_EQ(waitForSheet<QuestionSheet>().windowTitle(), QStringLiteral("Operation failed"));
    press(Qt::Key_Return);
    processUntil([this] { return table(PaneSide::left).hasFocus(); });
}

TEST_F(NewFolderTest, aFolderThatIsThereAlreadyIsPutUnderTheCursor)
{
    left.folder("old");
    open();
    pressF7();
    typeAndConfirm(QStringLiteral("old"));
    processUntil([this] { return cursorName() == "old"; });
}

TEST_F(NewFolderTest, theOtherPaneOnTheSameFolderShowsItToo)
{
    open();
    pane(PaneSide::right).navigate(left.path());
    waitForPath(PaneSide::right, left.path());
    pressF7();
    typeAndConfirm(QStringLiteral("new"));
    processUntil([this] { return shownNames(PaneSide::right) == std::vector<std::string>{"..", "new"}; });
}

TEST_F(NewFolderTest, theWindowCanCloseWhileTheUserIsAsked)
{
    open();
    pressF7();
    close();
    EXPECT_EQ(window, nullptr);
}

} // namespace
} // namespace tw::test
