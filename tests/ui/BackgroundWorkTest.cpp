#include "Tarnwick/Operations/OperationTable.h"
#include "Tarnwick/Toolkit/Dialogs/JobLine.h"
#include "Tarnwick/Toolkit/Dialogs/JobStrip.h"
#include "Tarnwick/Toolkit/Dialogs/Sheet.h"
#include "tests/ui/QtLoop.h"
#include "tests/ui/WindowTest.h"

#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QTest>

namespace tw::test {
namespace {

/// Work in the background of a whole window.
class BackgroundWorkTest : public WindowTest {
protected:
    BackgroundWorkTest()
    {
        left.file("file");
        open();
    }

    ~BackgroundWorkTest() override
    {
        while (!works().underWay().empty())
            works().end(works().underWay().front());
    }

    JobList &works() { return *window->works(); }

    std::shared_ptr<Job> beginInBackground(std::string const &title)
    {
        auto work = works().begin(title, [this, title] { cancelled.push_back(title); });
        works().move(work, Job::Place::background);
        processPosted();
        return work;
    }

    /// What the strip shows, from top to bottom.
    std::vector<std::string> lines()
    {
        std::vector<std::string> titles;
        if (!window->jobStrip().isVisible())
            return titles;
        for (auto const *const line : window->jobStrip().findChildren<JobLine *>()) {
            if (line->isVisible())
                titles.push_back(line->work()->title);
        }
        for (auto const *const label :
             window->jobStrip().findChildren<QLabel *>(QString(), Qt::FindDirectChildrenOnly)) {
            if (label->isVisible())
                titles.push_back(label->text().toStdString());
        }
        return titles;
    }

    /// The sheet on show; null if there is none.
    Sheet *sheet()
    {
        for (auto *const each : window->findChildren<Sheet *>()) {
            if (each->isVisible())
                return each;
        }
        return nullptr;
    }

    void pressInSheet(Qt::Key key)
    {
        ASSERT_TRUE(sheet());
        EXPECT_TRUE(QTest::qWaitForWindowActive(sheet()));
        QTest::keyClick(sheet()->focusWidget(), key);
        processPosted();
    }

    void clickInSheet(QString const &text)
    {
        for (auto *const each : sheet()->findChildren<QPushButton *>()) {
            if (each->text() == text)
                return each->click();
        }
        ADD_FAILURE() << "no such button";
    }

    std::string focusedButton()
    {
        auto const *const button = qobject_cast<QPushButton *>(QApplication::focusWidget());
        return button ? button->text().toStdString() : std::string();
    }

    std::vector<std::string> cancelled;
};

using Titles = std::vector<std::string>;

TEST_F(BackgroundWorkTest, theStripHasALineForEachWorkAndGoesWithTheLast)
{
    EXPECT_EQ(lines(), Titles{});
    auto const first = beginInBackground("one");
    auto const second = beginInBackground("two");
    EXPECT_EQ(lines(), (Titles{"one", "two"}));
    works().end(first);
    EXPECT_EQ(lines(), Titles{"two"});
    works().end(second);
    EXPECT_EQ(lines(), Titles{});
}

TEST_F(BackgroundWorkTest, ofManyWorksTheOldestThreeAreShown)
{
    auto const first = beginInBackground("one");
    for (auto const *const title : {"two", "three", "four", "five"})
        beginInBackground(title);
    EXPECT_EQ(lines(), (Titles{"one", "two", "three", "and 2 more"}));
    works().end(first);
    EXPECT_EQ(lines(), (Titles{"two", "three", "four", "and 1 more"}));
}

TEST_F(BackgroundWorkTest, workThatComesBackFromItsSheetHasItsLineAgain)
{
    auto const first = beginInBackground("one");
    auto const second = beginInBackground("two");
    works().move(first, Job::Place::sheet);
    EXPECT_EQ(lines(), Titles{"two"});
    works().move(first, Job::Place::background);
    EXPECT_EQ(lines().size(), 2U);
    works().end(second);
    EXPECT_EQ(lines(), Titles{"one"});
}

TEST_F(BackgroundWorkTest, thePanesKeepTheKeyboardWhenALineComesAndGoes)
{
    auto const work = beginInBackground("one");
    EXPECT_TRUE(table(PaneSide::left).hasFocus());
    press(Qt::Key_End);
    EXPECT_EQ(cursorName(), "file");
    works().end(work);
    EXPECT_TRUE(table(PaneSide::left).hasFocus());
}

TEST_F(BackgroundWorkTest, theStripIsWorkedByTheKeyboard)
{
    beginInBackground("one");
    auto const second = beginInBackground("two");
    window->perform(Command::backgroundWork);
    EXPECT_EQ(focusedButton(), "Show");
    press(Qt::Key_Down);
    press(Qt::Key_Right);
    EXPECT_EQ(focusedButton(), "Cancel");
    press(Qt::Key_Return);
    EXPECT_EQ(cancelled, Titles{"two"});
    press(Qt::Key_Up);
    press(Qt::Key_Escape);
    EXPECT_TRUE(table(PaneSide::left).hasFocus());
}

TEST_F(BackgroundWorkTest, theKeyboardIsNotLostWithALine)
{
    auto const work = beginInBackground("one");
    window->perform(Command::backgroundWork);
    works().end(work);
    EXPECT_TRUE(table(PaneSide::left).hasFocus());
}

TEST_F(BackgroundWorkTest, aLineBringsItsSheetBack)
{
    auto const work = beginInBackground("one");
    window->perform(Command::backgroundWork);
    press(Qt::Key_Return);
    processUntil([&] { return sheet(); });
    EXPECT_EQ(sheet()->windowTitle().toStdString(), "one");
    EXPECT_EQ(lines(), Titles{});
}

TEST_F(BackgroundWorkTest, theStripCannotBeGoneToWithoutWorkInTheBackground)
{
    EXPECT_FALSE(window->stateOf(Command::backgroundWork)->isEnabled);
    beginInBackground("one");
    EXPECT_TRUE(window->stateOf(Command::backgroundWork)->isEnabled);
}

TEST_F(BackgroundWorkTest, closingTheWindowAsksWhileWorkIsUnderWay)
{
    beginInBackground("Copy 2 items…");
    EXPECT_FALSE(window->close());
    EXPECT_FALSE(window->close());
    ASSERT_TRUE(sheet());
    EXPECT_EQ(sheet()->windowTitle(), QStringLiteral("Quit Tarnwick?"));
    pressInSheet(Qt::Key_Return);
    EXPECT_FALSE(sheet()) << "there was one question";
    EXPECT_TRUE(window->isVisible()) << "Return goes on with the work";
    EXPECT_EQ(cancelled, Titles{});
}

TEST_F(BackgroundWorkTest, agreeingEndsTheWorkAndClosesTheWindow)
{
    beginInBackground("Copy 2 items…");
    window->close();
    clickInSheet(QStringLiteral("Quit"));
    processUntil([&] { return !window->isVisible(); });
    EXPECT_EQ(cancelled, Titles{"Copy 2 items…"});
}

TEST_F(BackgroundWorkTest, theQuestionBeforeQuittingGoesBeforeAllOthers)
{
    controller->start(operationOf(Command::newFolder));
    processUntil([&] { return sheet(); });
    beginInBackground("Copy 2 items…");
    window->askToQuit([] {});
    processUntil([&] { return sheet() && sheet()->windowTitle() == QStringLiteral("Quit Tarnwick?"); });
    pressInSheet(Qt::Key_Escape);
    ASSERT_TRUE(sheet());
    EXPECT_EQ(sheet()->windowTitle(), QStringLiteral("New folder"));
    pressInSheet(Qt::Key_Escape);
}

TEST_F(BackgroundWorkTest, aSignalThatEndsTheProgramAsksNothing)
{
    beginInBackground("Copy 2 items…");
    window->letClose();
    EXPECT_TRUE(window->close());
    EXPECT_EQ(cancelled, Titles{"Copy 2 items…"});
}

TEST_F(BackgroundWorkTest, withoutWorkNothingIsAsked)
{
    auto hasQuit = false;
    window->askToQuit([&] { hasQuit = true; });
    EXPECT_TRUE(hasQuit);
}

} // namespace
} // namespace tw::test
