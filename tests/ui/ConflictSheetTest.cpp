#include "Tarnwick/Toolkit/Dialogs/ConflictSheet.h"

#include "Tarnwick/Toolkit/Dialogs/ConflictTable.h"
#include "Tarnwick/Toolkit/Dialogs/SheetText.h"
#include "tests/ui/QtLoop.h"

#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

using testing::ElementsAre;
using Answer = NameConflict::Answer;

NameConflict conflictAbout(std::string const &name, std::int64_t sourceTime = 1000, std::int64_t targetTime = 1000)
{
    return {{.name = name, .kind = EntryKind::file, .size = 1, .mtime = sourceTime},
            {.name = name, .kind = EntryKind::file, .size = 1, .mtime = targetTime}};
}

class ConflictSheetTest : public testing::Test {
protected:
    ConflictSheetTest()
    {
        window.resize(800, 600);
        window.show();
    }

    void ask(std::vector<NameConflict> names)
    {
        sheet = new ConflictSheet({.title = "Copy 3 items", .message = "Names are taken.", .names = std::move(names)},
                                  &window);
        sheet->open();
        EXPECT_TRUE(QTest::qWaitForWindowActive(sheet));
    }

    void press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QTest::keyClick(sheet->focusWidget(), static_cast<Qt::Key>(key), modifiers);
        processPosted();
    }

    QPushButton &button(QString const &text)
    {
        for (auto *const each : sheet->findChildren<QPushButton *>()) {
            if (each->text() == text)
                return *each;
        }
        throw std::logic_error("no such button: " + text.toStdString());
    }

    QString cell(int row, int column) { return sheet->table().model()->index(row, column).data().toString(); }

    bool isAccepted() const { return !sheet->isVisible() && sheet->result() == QDialog::Accepted; }

    QWidget window;
    ConflictSheet *sheet = nullptr; ///< a child of the window
};

TEST_F(ConflictSheetTest, returnSkipsWhatHasNoAnswer)
{
    ask({conflictAbout("a"), conflictAbout("b")});
    press(Qt::Key_Return);
    EXPECT_TRUE(isAccepted());
    EXPECT_THAT(sheet->answers(), ElementsAre(Answer::skip, Answer::skip));
}

TEST_F(ConflictSheetTest, replaceIsNotOfferedForAFolderAndAFile)
{
    auto mixed = conflictAbout("b");
    mixed.source.kind = EntryKind::directory;
    ask({conflictAbout("a"), mixed});
    button(QStringLiteral("&Replace")).click();
    EXPECT_TRUE(sheet->isVisible());
    EXPECT_FALSE(button(QStringLiteral("&Replace")).isEnabled());
    button(QStringLiteral("&Keep Both")).click();
    EXPECT_TRUE(isAccepted());
    EXPECT_THAT(sheet->answers(), ElementsAre(Answer::replace, Answer::keepBoth));
}

TEST_F(ConflictSheetTest, aSingleFolderThatMeetsAFileIsKeptOrSkipped)
{
    auto mixed = conflictAbout("a");
    mixed.source.kind = EntryKind::directory;
    ask({mixed});
    EXPECT_FALSE(button(QStringLiteral("&Replace")).isEnabled());
    press(Qt::Key_R);
    EXPECT_TRUE(sheet->isVisible());
    press(Qt::Key_K);
    EXPECT_TRUE(isAccepted());
    EXPECT_THAT(sheet->answers(), ElementsAre(Answer::keepBoth));
}

TEST_F(ConflictSheetTest, returnDoesNotReplaceEvenOnItsButton)
{
    ask({conflictAbout("a"), conflictAbout("b")});
    button(QStringLiteral("&Replace")).setFocus();
    press(Qt::Key_Return);
    EXPECT_TRUE(sheet->isVisible());
    press(Qt::Key_Space);
    EXPECT_TRUE(isAccepted());
    EXPECT_THAT(sheet->answers(), ElementsAre(Answer::replace, Answer::replace));
}

TEST_F(ConflictSheetTest, aReturnThatIsStillHeldAnswersNothing)
{
    ask({conflictAbout("a")});
    QKeyEvent held(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, QStringLiteral("\r"), true);
    QCoreApplication::sendEvent(sheet->focusWidget(), &held);
    EXPECT_TRUE(sheet->isVisible());
}

TEST_F(ConflictSheetTest, lettersAnswerNameByNameAndTheButtonsTheRest)
{
    ask({conflictAbout("a"), conflictAbout("b"), conflictAbout("c"), conflictAbout("d")});
    press(Qt::Key_R);
    press(Qt::Key_K);
    EXPECT_TRUE(sheet->isVisible());
    EXPECT_EQ(cell(0, ConflictModel::answer), QStringLiteral("Replace"));
    EXPECT_EQ(cell(1, ConflictModel::answer), QStringLiteral("Keep Both"));
    button(QStringLiteral("&Skip")).click();
    EXPECT_THAT(sheet->answers(), ElementsAre(Answer::replace, Answer::keepBoth, Answer::skip, Answer::skip));
}

TEST_F(ConflictSheetTest, onceEveryNameHasItsAnswerReturnGoesOn)
{
    ask({conflictAbout("a"), conflictAbout("b")});
    EXPECT_FALSE(button(QStringLiteral("&Continue")).isEnabled());
    press(Qt::Key_R);
    press(Qt::Key_S);
    EXPECT_TRUE(sheet->isVisible());
    press(Qt::Key_Return);
    EXPECT_TRUE(isAccepted());
    EXPECT_THAT(sheet->answers(), ElementsAre(Answer::replace, Answer::skip));
}

TEST_F(ConflictSheetTest, anAnswerCanBeTakenBack)
{
    ask({conflictAbout("a"), conflictAbout("b")});
    press(Qt::Key_R);
    press(Qt::Key_Up);
    press(Qt::Key_Backspace);
    EXPECT_EQ(cell(0, ConflictModel::answer), QString());
}

TEST_F(ConflictSheetTest, severalRowsAreAnsweredTogether)
{
    ask({conflictAbout("a"), conflictAbout("b"), conflictAbout("c")});
    press(Qt::Key_Down, Qt::ShiftModifier);
    press(Qt::Key_K);
    press(Qt::Key_Return);
    EXPECT_THAT(sheet->answers(), ElementsAre(Answer::keepBoth, Answer::keepBoth, Answer::skip));
}

TEST_F(ConflictSheetTest, oneNameIsAnsweredByOneLetter)
{
    ask({conflictAbout("a")});
    press(Qt::Key_K);
    EXPECT_TRUE(isAccepted());
    EXPECT_THAT(sheet->answers(), ElementsAre(Answer::keepBoth));
}

TEST_F(ConflictSheetTest, escapeCancels)
{
    ask({conflictAbout("a")});
    press(Qt::Key_Escape);
    EXPECT_EQ(sheet->result(), QDialog::Rejected);
    EXPECT_FALSE(sheet->isVisible());
}

TEST_F(ConflictSheetTest, theNewerFileAndTheSameFileSayThatTheyAre)
{
    ask({conflictAbout("a", 2000, 1000), conflictAbout("b", 1000, 2000), conflictAbout("c")});
    auto const saysNewer = [&](int row, int column) { return cell(row, column).endsWith(QStringLiteral(" · newer")); };
    EXPECT_TRUE(saysNewer(0, ConflictModel::arriving));
    EXPECT_FALSE(saysNewer(0, ConflictModel::present));
    EXPECT_FALSE(saysNewer(1, ConflictModel::arriving));
    EXPECT_TRUE(saysNewer(1, ConflictModel::present));
    EXPECT_TRUE(cell(2, ConflictModel::arriving).endsWith(QStringLiteral(" · same")));
}

TEST_F(ConflictSheetTest, foldersAreMerged)
{
    FolderFacts::Occupant const folder{.name = "f", .kind = EntryKind::directory};
    ask({{folder, folder}, conflictAbout("a")});
    press(Qt::Key_R);
    EXPECT_EQ(cell(0, ConflictModel::answer), QStringLiteral("Merge"));
}

TEST_F(ConflictSheetTest, theMessageIsAsWideAsTheTable)
{
    ask({conflictAbout("a")});
    EXPECT_EQ(sheet->findChild<SheetText *>()->width(), sheet->findChild<ConflictTable *>()->width());
}

TEST_F(ConflictSheetTest, tenThousandLongNamesFitOnASmallWindowAndGetOneAnswer)
{
    ask(std::vector<NameConflict>(10'000, conflictAbout(std::string(255, 'x'))));
    EXPECT_LE(sheet->width(), window.width());
    EXPECT_LE(sheet->height(), window.height());
    press(Qt::Key_A, Qt::ControlModifier);
    press(Qt::Key_S);
    press(Qt::Key_Return);
    EXPECT_EQ(sheet->answers(), std::vector<Answer>(10'000, Answer::skip));
}

} // namespace
} // namespace tw::test
