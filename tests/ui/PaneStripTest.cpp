#include "Tarnwick/Toolkit/Dialogs/SheetDialogs.h"
#include "Tarnwick/Toolkit/Dialogs/WordsSheet.h"
#include "Tarnwick/Toolkit/Dialogs/WordsView.h"
#include "Tarnwick/Toolkit/Notices/NoticeStrip.h"
#include "Tarnwick/Toolkit/Widgets/PathField.h"
#include "tests/ui/QtLoop.h"
#include "tests/ui/WindowTest.h"

#include <QApplication>
#include <QClipboard>
#include <QFontInfo>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>
#include <gmock/gmock.h>

#include <filesystem>

namespace tw::test {
namespace {

using ::testing::HasSubstr;

/// A folder "locked" that cannot be shown, and its strip.
class PaneStripTest : public WindowTest {
protected:
    PaneStripTest() { left.link("broken", left.path("nowhere")); }

    void openAndFail()
    {
        left.folder("inner");
        open();
        press(Qt::Key_End);
        ASSERT_EQ(cursorName(), "broken");
        press(Qt::Key_Return);
        waitForNotice();
    }

    void waitForNotice()
    {
        processUntil([this] { return !notice(PaneSide::left).empty(); });
    }

    NoticeStrip &strip() { return window->pane(PaneSide::left).noticeStrip(); }

    QPushButton *button(std::string const &title)
    {
        for (auto *const each : strip().buttons()) {
            if (each->text().toStdString() == title)
                return each;
        }
        return nullptr;
    }

    WordsSheet *sheet() const { return window->findChild<WordsSheet *>(); }
};

TEST_F(PaneStripTest, aFolderThatCannotBeShownIsSaidBetweenThePathAndTheRows)
{
    openAndFail();
    auto &view = window->pane(PaneSide::left);
    auto const top = [&](QWidget &part) { return part.mapTo(&view, QPoint()).y(); };
    EXPECT_GT(top(strip()), top(view.pathField()));
    EXPECT_LT(top(strip()), top(view.table()));
    EXPECT_EQ(strip().height(), strip().heightForWidth(strip().width()));
    EXPECT_TRUE(window->pane(PaneSide::right).noticeStrip().isHidden());
}

TEST_F(PaneStripTest, itsFirstActionHasTheKeyboardAndEscapeClosesIt)
{
    openAndFail();
    EXPECT_TRUE(strip().hasKeyboard());
    press(Qt::Key_Escape);
    EXPECT_EQ(notice(PaneSide::left), "");
    EXPECT_TRUE(table(PaneSide::left).hasFocus());
}

TEST_F(PaneStripTest, aKeyOfTheRowsLeadsBackToThem)
{
    openAndFail();
    press(Qt::Key_Up);
    EXPECT_TRUE(table(PaneSide::left).hasFocus());
    EXPECT_EQ(cursorName(), "inner");
    EXPECT_NE(notice(PaneSide::left), "") << "it stays to be read";
    press(Qt::Key_Right);
    EXPECT_TRUE(strip().hasKeyboard());
    press(Qt::Key_Down);
    EXPECT_EQ(cursorName(), "broken");
    press(Qt::Key_Escape);
    EXPECT_EQ(notice(PaneSide::left), "");
}

TEST_F(PaneStripTest, tabLeadsToTheOtherPaneFromTheStripToo)
{
    openAndFail();
    press(Qt::Key_Tab);
    EXPECT_TRUE(table(PaneSide::right).hasFocus());
    EXPECT_EQ(controller->activeSide(), PaneSide::right);
    press(Qt::Key_Tab);
    EXPECT_TRUE(table(PaneSide::left).hasFocus());
}

TEST_F(PaneStripTest, retryTriesTheFolderAgainAndGivesTheKeyboardBack)
{
    openAndFail();
    auto *const retry = button("Retry");
    ASSERT_NE(retry, nullptr);
    left.folder("nowhere");
    QTest::mouseClick(retry, Qt::LeftButton);
    waitForPath(PaneSide::left, left.path("broken"));
    EXPECT_EQ(notice(PaneSide::left), "");
    EXPECT_TRUE(table(PaneSide::left).hasFocus());
}

TEST_F(PaneStripTest, aClickInTheStripOfTheOtherPaneMakesThatPaneTheActiveOne)
{
    openAndFail();
    press(Qt::Key_Tab);
    ASSERT_EQ(controller->activeSide(), PaneSide::right);
    QTest::mouseClick(button("Retry"), Qt::LeftButton);
    EXPECT_EQ(controller->activeSide(), PaneSide::left);
}

TEST_F(PaneStripTest, aPersonWhoTypesAPathIsNotInterrupted)
{
    open();
    active().navigate(left.path("nowhere"));
    window->pane(PaneSide::left).pathField().setFocus();
    waitForNotice();
    EXPECT_TRUE(window->pane(PaneSide::left).pathField().hasFocus());
}

TEST_F(PaneStripTest, theDetailsCanBeReadSelectedAndCopiedAndEscapeClosesThem)
{
    open();
    auto words = std::string("kex_exchange_identification: read: Connection reset by peer\nfound \x1b[31mred\n");
    active().callbacks.onDetailsWanted("Details", words);
    processUntil([this] { return sheet() && sheet()->isVisible(); });
    auto &text = sheet()->text();
    EXPECT_TRUE(text.isReadOnly());
    EXPECT_TRUE(QFontInfo(text.font()).fixedPitch());
    EXPECT_TRUE(text.textInteractionFlags().testFlag(Qt::TextSelectableByKeyboard));
    EXPECT_THAT(text.toPlainText().toStdString(), HasSubstr("reset by peer\nfound ␛[31mred"));
    for (auto *const each : sheet()->buttons().buttons()) {
        if (each->text() == QStringLiteral("Copy"))
            each->click();
    }
    EXPECT_EQ(QGuiApplication::clipboard()->text(), text.toPlainText());
    QTest::keyClick(sheet(), Qt::Key_Escape);
    processUntil([this] { return table(PaneSide::left).hasFocus(); });
    EXPECT_TRUE(!sheet() || !sheet()->isVisible());
}

} // namespace
} // namespace tw::test
