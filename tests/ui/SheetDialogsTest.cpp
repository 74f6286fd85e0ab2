#include "Tarnwick/Toolkit/Dialogs/SheetDialogs.h"

#include "TWCore/Async/Cancelled.h"
#include "TWCore/Async/Outcome.h"
#include "Tarnwick/Toolkit/Dialogs/PackSheet.h"
#include "Tarnwick/Toolkit/Dialogs/ProgressSheet.h"
#include "Tarnwick/Toolkit/Dialogs/PromptSheet.h"
#include "Tarnwick/Toolkit/Dialogs/QuestionSheet.h"
#include "Tarnwick/Toolkit/Dialogs/SheetText.h"
#include "Tarnwick/Toolkit/Dialogs/WordsView.h"
#include "Tarnwick/Toolkit/Program/QtMainContext.h"
#include "tests/ui/QtLoop.h"

#include <QAction>
#include <QComboBox>
#include <QGuiApplication>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QScreen>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <gtest/gtest.h>

#include <algorithm>

namespace tw::test {
namespace {

using Text = std::optional<std::string>;

/// What became of a question.
template <class T>
struct Asked {
    std::shared_ptr<Outcome<T>> outcome = std::make_shared<Outcome<T>>();
    std::stop_source stop;

    bool isDone() const { return outcome->value || outcome->failure; }

    bool isCancelled() const
    {
        try {
            outcome->take();
            return false;
        } catch (Cancelled const &) {
            return true;
        }
    }
};

class SheetDialogsTest : public testing::Test {
protected:
    SheetDialogsTest()
    {
        window->show();
        window->activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(window.get()));
    }

    ~SheetDialogsTest() override
    {
        window.reset();
        processPosted();
        while (mainContext.context()->runPending() > 0) {
        }
    }

    template <class T>
    static Task<void> keep(std::shared_ptr<Outcome<T>> outcome, Task<T> question)
    {
        auto ended = co_await outcomeOf(std::move(question));
        *outcome = std::move(ended);
    }

    template <class T>
    Asked<T> ask(Task<T> question)
    {
        Asked<T> asked;
        spawn({mainContext.context(), asked.stop.get_token()}, keep(asked.outcome, std::move(question)));
        processPosted();
        return asked;
    }

    Asked<Text> askForName(std::string const &title = "New folder") { return ask(dialogs->prompt(namedPrompt(title))); }

    static Dialogs::Prompt namedPrompt(std::string const &title)
    {
        return {.title = title, .message = "Create in local:/srv", .initial = "", .okTitle = "Create"};
    }

    Asked<Dialogs::Answer> askWhetherToDelete()
    {
        return ask(dialogs->confirm({.title = "Delete 1 item on host?",
                                     .message = "a.txt",
                                     .okTitle = "Delete Permanently",
                                     .danger = Dialogs::Danger::destructive}));
    }

    /// The sheets that can be seen.
    std::vector<Sheet *> shown() const
    {
        std::vector<Sheet *> visible;
        for (auto *const sheet : window->findChildren<Sheet *>()) {
            if (sheet->isVisible())
                visible.push_back(sheet);
        }
        return visible;
    }

    /// The one sheet on show.
    template <class T = Sheet>
    T &sheet()
    {
        auto const sheets = shown();
        EXPECT_EQ(sheets.size(), 1U);
        auto *const wanted = sheets.empty() ? nullptr : dynamic_cast<T *>(sheets.front());
        if (!wanted)
            throw std::logic_error("another sheet, or none, is on show");
        EXPECT_TRUE(QTest::qWaitForWindowActive(wanted));
        return *wanted;
    }

    std::string title() { return sheet().windowTitle().toStdString(); }

    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QTest::keyClick(sheet().focusWidget(), key, modifiers);
        processPosted();
    }

    void type(char const *text)
    {
        QTest::keyClicks(sheet().focusWidget(), QString::fromUtf8(text));
        processPosted();
    }

    /// Work whose sheet is on show.
    std::unique_ptr<Progress> showWork(std::string const &title, std::function<void()> onCancel = [] {})
    {
        auto const before = shown().size();
        auto progress = dialogs->progress(title, std::move(onCancel));
        processUntil([&] { return shown().size() > before; });
        return progress;
    }

    QPushButton &button(QString const &text)
    {
        for (auto *const each : sheet().findChildren<QPushButton *>()) {
            if (each->text() == text)
                return *each;
        }
        throw std::logic_error("no such button: " + text.toStdString());
    }

    QtMainContext mainContext;
    std::unique_ptr<QWidget> window = std::make_unique<QWidget>();
    std::shared_ptr<JobList> works = std::make_shared<JobList>();
    std::shared_ptr<SheetDialogs> dialogs = std::make_shared<SheetDialogs>(*window, works);
};

TEST_F(SheetDialogsTest, aPromptTakesTheKeyboardAndAnswersWithTheTrimmedText)
{
    auto const asked = askForName();
    EXPECT_EQ(sheet().windowModality(), Qt::WindowModal);
    type("  new name ");
    press(Qt::Key_Return);
    EXPECT_EQ(asked.outcome->value, Text("new name"));
    EXPECT_TRUE(shown().empty());
}

TEST_F(SheetDialogsTest, theWindowBelowGivesTheKeyboardBackToTheSheet)
{
    auto const asked = askForName();
    sheet();
    QSignalSpy const windows(qApp, &QGuiApplication::focusWindowChanged);
    window->activateWindow();                           // as a desktop does when the user clicks on the window
    processUntil([&] { return windows.count() == 2; }); // to the window and back
    type("name");
    press(Qt::Key_Return);
    EXPECT_EQ(asked.outcome->value, Text("name"));
}

TEST_F(SheetDialogsTest, escapeAndAnEmptyTextAreNoAnswerToAPrompt)
{
    auto const escaped = askForName();
    type("a");
    press(Qt::Key_Escape);
    EXPECT_EQ(escaped.outcome->take(), std::nullopt);
    auto const empty = askForName();
    press(Qt::Key_Return);
    EXPECT_EQ(empty.outcome->take(), std::nullopt);
}

TEST_F(SheetDialogsTest, theInitialTextIsThereToBeReplaced)
{
    auto question = namedPrompt("Copy");
    question.initial = "/srv";
    auto const asked = ask(dialogs->prompt(question));
    EXPECT_EQ(sheet<PromptSheet>().field().selectedText(), QStringLiteral("/srv"));
    press(Qt::Key_Return);
    EXPECT_EQ(asked.outcome->value, Text("/srv"));
}

TEST_F(SheetDialogsTest, bytesOfThePathThatAreNoTextAreInTheAnswer)
{
    auto question = namedPrompt("Copy");
    question.initial = "/srv/bad\xFF";
    auto const asked = ask(dialogs->prompt(question));
    press(Qt::Key_End);
    type("/new");
    press(Qt::Key_Return);
    EXPECT_EQ(asked.outcome->value, Text("/srv/bad\xFF/new"));
}

TEST_F(SheetDialogsTest, thePathOfAnArchiveFollowsItsFormatAndANameThatSaysAFormatCountsMore)
{
    using enum ArchiveFormat;
    Dialogs::PackPrompt const question{
        .title = "Pack 1 item", .message = "a", .directory = "/srv", .stem = "a", .formats = {zip, sevenZip, tarGz}};
    auto const first = ask(dialogs->packPrompt(question));
    EXPECT_EQ(sheet<PackSheet>().field().text(), QStringLiteral("/srv/a.zip"));
    EXPECT_EQ(sheet<PackSheet>().field().selectedText(), QStringLiteral("a"));
    auto &menu = sheet<PackSheet>().formatMenu();
    menu.setFocus();
    press(Qt::Key_End);
    EXPECT_EQ(sheet<PackSheet>().field().text(), QStringLiteral("/srv/a.tar.gz"));
    press(Qt::Key_Return);
    EXPECT_EQ(first.outcome->value, std::optional(std::optional(PackTarget{"/srv/a.tar.gz", tarGz})));
    auto const second = ask(dialogs->packPrompt(question));
    sheet<PackSheet>().field().setText(QStringLiteral(" b.7z "));
    press(Qt::Key_Return);
    EXPECT_EQ(second.outcome->value, std::optional(std::optional(PackTarget{"b.7z", sevenZip})));
    auto const third = ask(dialogs->packPrompt(question));
    press(Qt::Key_Escape);
    ASSERT_TRUE(third.outcome->value);
    EXPECT_FALSE(*third.outcome->value);
}

TEST_F(SheetDialogsTest, anObjectionIsShownAndTheTextStaysToBeCorrected)
{
    auto question = namedPrompt("New folder");
    question.objection = [](std::string_view text) { return text == "good" ? Text() : Text("Not this one."); };
    auto const asked = ask(dialogs->prompt(question));
    type("goo");
    press(Qt::Key_Return);
    EXPECT_FALSE(asked.isDone());
    EXPECT_TRUE(sheet<PromptSheet>().complaint().contains(QStringLiteral("Not this one.")));
    EXPECT_EQ(sheet<PromptSheet>().text(), "goo");
    type("d");
    EXPECT_EQ(sheet<PromptSheet>().complaint(), QString());
    press(Qt::Key_Return);
    EXPECT_EQ(asked.outcome->value, Text("good"));
}

TEST_F(SheetDialogsTest, returnMeansTheDestructiveAnswerOnlyOnItsButton)
{
    auto const asked = askWhetherToDelete();
    press(Qt::Key_Return);
    EXPECT_EQ(asked.outcome->value, Dialogs::Answer::cancel);
    auto const again = askWhetherToDelete();
    auto &destructive = button(QStringLiteral("Delete Permanently"));
    for (auto tabs = 0; tabs < 3 && !destructive.hasFocus(); ++tabs)
        press(Qt::Key_Tab);
    EXPECT_TRUE(destructive.isDefault()); // no other button looks as if Return pressed it
    press(Qt::Key_Return);
    EXPECT_EQ(again.outcome->value, Dialogs::Answer::ok);
}

TEST_F(SheetDialogsTest, theDestructiveAnswerTakesItsButton)
{
    auto const asked = askWhetherToDelete();
    button(QStringLiteral("Delete Permanently")).click();
    processPosted();
    EXPECT_EQ(asked.outcome->value, Dialogs::Answer::ok);
}

TEST_F(SheetDialogsTest, returnAgreesToWhatIsHarmlessAndEscapeDoesNot)
{
    Dialogs::Confirmation const question{.title = "Move 1 item to the Trash?", .message = "a", .okTitle = "Move"};
    auto const agreed = ask(dialogs->confirm(question));
    press(Qt::Key_Return);
    EXPECT_EQ(agreed.outcome->value, Dialogs::Answer::ok);
    auto const refused = ask(dialogs->confirm(question));
    press(Qt::Key_Escape);
    EXPECT_EQ(refused.outcome->value, Dialogs::Answer::cancel);
}

TEST_F(SheetDialogsTest, anErrorGoesWithReturnAndWithEscape)
{
    for (auto const key : {Qt::Key_Return, Qt::Key_Escape}) {
        auto const asked = ask(dialogs->error("create folder failed on /a: no space"));
        EXPECT_EQ(title(), "Operation failed");
        press(key);
        EXPECT_TRUE(asked.isDone());
        EXPECT_FALSE(asked.outcome->failure);
    }
}

TEST_F(SheetDialogsTest, theWordsOfAProgramThatHasFailedComeUpWithAButton)
{
    auto const asked = ask(dialogs->error("Copying failed.", "tar: a: Cannot open\ntar: Exiting"));
    auto &words = *sheet().findChild<WordsView *>();
    EXPECT_FALSE(words.isVisible());
    button(QStringLiteral("&Details")).setFocus();
    press(Qt::Key_Return);
    EXPECT_TRUE(words.isVisible());
    EXPECT_EQ(words.toPlainText(), QStringLiteral("tar: a: Cannot open\ntar: Exiting"));
    press(Qt::Key_Escape);
    EXPECT_TRUE(asked.isDone());
}

TEST_F(SheetDialogsTest, anErrorWithoutSuchWordsOffersNone)
{
    auto const asked = ask(dialogs->error("Copying failed."));
    EXPECT_EQ(sheet().findChildren<QPushButton *>().size(), 1);
    press(Qt::Key_Return);
    EXPECT_TRUE(asked.isDone());
}

TEST_F(SheetDialogsTest, aMessageOfAnyLengthStaysOnTheScreen)
{
    auto const asked = ask(dialogs->error(std::string(3000, 'x') + "\n" + std::string(60'000, '\n') + "<b>end</b>"));
    EXPECT_LT(sheet().width(), 600);
    EXPECT_LT(sheet().height(), sheet().screen()->availableGeometry().height());
    press(Qt::Key_Return);
    EXPECT_TRUE(asked.isDone());
}

TEST_F(SheetDialogsTest, theDetailsOfALongMessageStayOnTheScreenToo)
{
    auto const asked = ask(dialogs->error(std::string(200, '\n') + "end", std::string(100, '\n')));
    auto const before = sheet().height();
    button(QStringLiteral("&Details")).click();
    processUntil([&] { return sheet().height() > before; });
    EXPECT_LT(sheet().height(), sheet().screen()->availableGeometry().height());
    press(Qt::Key_Escape);
    EXPECT_TRUE(asked.isDone());
}

TEST_F(SheetDialogsTest, aMessageDoesNotScrollWhileTheScreenHasRoom)
{
    std::string message;
    for (auto line = 0; line < 20; ++line)
        message += "name\n";
    auto const asked = ask(dialogs->error(message + "… and 3 more"));
    EXPECT_EQ(sheet().findChild<SheetText *>()->verticalScrollBar()->maximum(), 0);
    press(Qt::Key_Return);
    EXPECT_TRUE(asked.isDone());
}

TEST_F(SheetDialogsTest, aMessageIsNotMarkup)
{
    auto const asked = ask(dialogs->error("<b>bold</b>"));
    EXPECT_EQ(sheet().findChild<SheetText *>()->toPlainText(), QStringLiteral("<b>bold</b>"));
    press(Qt::Key_Return);
    EXPECT_TRUE(asked.isDone());
}

TEST_F(SheetDialogsTest, oneQuestionStandsAtATimeAndTheOthersFollowInTheirOrder)
{
    auto const first = askForName("first");
    auto const second = askForName("second");
    auto const third = ask(dialogs->error("third"));
    EXPECT_EQ(title(), "first");
    press(Qt::Key_Escape);
    EXPECT_EQ(title(), "second");
    press(Qt::Key_Escape);
    EXPECT_EQ(title(), "Operation failed");
    press(Qt::Key_Escape);
    EXPECT_TRUE(first.isDone() && second.isDone() && third.isDone());
}

TEST_F(SheetDialogsTest, aCallerThatIsStoppedTakesItsQuestionWithIt)
{
    auto first = askForName("first");
    auto second = askForName("second");
    first.stop.request_stop();
    processUntil([&] { return first.isDone(); });
    EXPECT_TRUE(first.isCancelled());
    EXPECT_EQ(title(), "second");
    second.stop.request_stop();
    processUntil([&] { return second.isDone(); });
    EXPECT_TRUE(shown().empty());
}

TEST_F(SheetDialogsTest, whenTheWindowClosesEveryQuestionIsCancelledAndLaterOnesAreToo)
{
    auto const open = askForName("first");
    auto const waiting = askForName("second");
    dialogs->sheets().close();
    auto const later = askForName("third");
    processUntil([&] { return open.isDone() && waiting.isDone() && later.isDone(); });
    EXPECT_TRUE(open.isCancelled());
    EXPECT_TRUE(waiting.isCancelled());
    EXPECT_TRUE(later.isCancelled());
    EXPECT_TRUE(shown().empty());
}

TEST_F(SheetDialogsTest, aWindowThatIsDestroyedCancelsItsQuestions)
{
    auto const open = askForName("first");
    auto const waiting = askForName("second");
    window.reset();
    auto const later = askForName("third");
    processUntil([&] { return open.isDone() && waiting.isDone() && later.isDone(); });
    EXPECT_TRUE(open.isCancelled());
    EXPECT_TRUE(waiting.isCancelled());
    EXPECT_TRUE(later.isCancelled());
    dialogs->progress("Copy", [] {})->update({.bytes = 1});
}

TEST_F(SheetDialogsTest, anAnswerIsDroppedIfTheWindowGoesBeforeTheCallerGoesOn)
{
    auto const asked = askForName();
    type("a");
    QTest::keyClick(sheet().focusWidget(), Qt::Key_Return); // the caller has not gone on yet
    window.reset();
    processUntil([&] { return asked.isDone(); });
    EXPECT_TRUE(asked.isCancelled());
}

TEST_F(SheetDialogsTest, actionsOfTheWholeProgramWorkInASheet)
{
    QAction quit;
    quit.setShortcut(Qt::CTRL | Qt::Key_Q);
    quit.setShortcutContext(Qt::ApplicationShortcut);
    auto asked = 0;
    QObject::connect(&quit, &QAction::triggered, [&] { ++asked; });
    dialogs->sheets().setActions({&quit});
    auto const question = askForName();
    press(Qt::Key_Q, Qt::ControlModifier);
    EXPECT_EQ(asked, 1);
    press(Qt::Key_Escape);
    EXPECT_TRUE(question.isDone());
}

TEST_F(SheetDialogsTest, progressIsShownUntilItsHandleGoes)
{
    auto progress = showWork("Copy 2 items…");
    auto &bar = *sheet<ProgressSheet>().findChild<QProgressBar *>();
    EXPECT_EQ(bar.maximum(), 0);
    progress->update({.bytes = 1, .total = 4, .item = "a.txt"});
    processUntil([&] { return bar.maximum() > 0; });
    EXPECT_EQ(bar.value() * 4, bar.maximum());
    progress.reset();
    EXPECT_TRUE(shown().empty());
}

TEST_F(SheetDialogsTest, progressSaysHowFarTheWorkIs)
{
    auto const progress = showWork("Copy 2 items…");
    progress->update({.bytes = 1024, .total = 4096, .item = "a.txt", .files = 412, .totalFiles = 10'000});
    auto const says = [&](char const *words) {
        auto const labels = sheet().findChildren<QLabel *>();
        return std::ranges::find(labels, QString::fromUtf8(words), &QLabel::text) != labels.end();
    };
    processUntil([&] { return says("a.txt"); });
    EXPECT_TRUE(says("412 of 10,000 files"));
    EXPECT_TRUE(says("1.0K of 4.0K"));
}

TEST_F(SheetDialogsTest, aLongNameDoesNotChangeTheSheet)
{
    auto const progress = showWork("Copy 2 items…");
    auto const size = sheet().size();
    progress->update({.bytes = 1, .total = 4, .item = std::string(255, 'x'), .files = 1, .totalFiles = 1'000'000'000});
    auto const *const bar = sheet().findChild<QProgressBar *>();
    processUntil([&] { return bar->maximum() > 0; });
    processPosted();
    EXPECT_EQ(sheet().size(), size);
}

TEST_F(SheetDialogsTest, workThatIsOverSoonHasNoSheet)
{
    dialogs->progress("Copy 1 item…", [] {}).reset();
    auto const later = showWork("Copy 2 items…");
    EXPECT_EQ(title(), "Copy 2 items…");
}

TEST_F(SheetDialogsTest, cancelIsReportedOnceAndTheSheetStaysUntilTheWorkHasEnded)
{
    auto cancels = 0;
    auto const progress = showWork("Copy 2 items…", [&] { ++cancels; });
    press(Qt::Key_Escape);
    press(Qt::Key_Escape);
    EXPECT_EQ(cancels, 1);
    EXPECT_EQ(title(), "Copy 2 items…");
}

TEST_F(SheetDialogsTest, aQuestionGoesBeforeProgressWhichThenComesBack)
{
    auto const progress = showWork("Copy 2 items…");
    auto const asked = askForName();
    EXPECT_EQ(title(), "New folder");
    press(Qt::Key_Escape);
    EXPECT_TRUE(asked.isDone());
    EXPECT_EQ(title(), "Copy 2 items…");
}

TEST_F(SheetDialogsTest, aProgressSheetDoesNotKeepAProgramFromQuitting)
{
    auto cancels = 0;
    auto const progress = showWork("Copy 2 items…", [&] { ++cancels; });
    EXPECT_TRUE(sheet().close());
    EXPECT_EQ(cancels, 1);
}

TEST_F(SheetDialogsTest, workInTheBackgroundLeavesTheWindowFreeAndComesBackWhenItIsWanted)
{
    auto const progress = showWork("Copy 2 items…");
    button(QStringLiteral("Run in &Background")).click();
    EXPECT_TRUE(shown().empty());
    ASSERT_EQ(works->inBackground().size(), 1U);
    works->move(works->inBackground().front(), Job::Place::sheet);
    processUntil([&] { return !shown().empty(); });
    EXPECT_EQ(title(), "Copy 2 items…");
}

TEST_F(SheetDialogsTest, theQuestionOfASecondWorkComesUpOverTheFirstOne)
{
    auto const first = showWork("Copy 2 items…");
    button(QStringLiteral("Run in &Background")).click();
    auto second = showWork("Move 1 item…");
    auto const asked = askForName("A name is taken");
    EXPECT_EQ(title(), "A name is taken");
    press(Qt::Key_Escape);
    EXPECT_TRUE(asked.isDone());
    EXPECT_EQ(title(), "Move 1 item…");
    second.reset();
    EXPECT_TRUE(shown().empty());
}

} // namespace
} // namespace tw::test
