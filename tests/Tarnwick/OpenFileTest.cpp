#include "Tarnwick/Operations/OpenFile.h"

#include "TWEngine/Runtime/EngineRuntime.h"
#include "Tarnwick/Operations/ProgramQuestion.h"
#include "tests/support/FakeApplications.h"
#include "tests/support/FakeDialogs.h"
#include "tests/support/HeldReader.h"
#include "tests/support/ManualClock.h"
#include "tests/support/RecordingDisplay.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestLoop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

class OpenFileTest : public testing::Test {
protected:
    OpenFileTest() { pane->attach(display); }

    ~OpenFileTest() override
    {
        dialogs->close();
        loop.drain();
        pane->detach(display);
        pane.reset();
        auto const ended = loop.start(browser->shutdown());
        loop.drain();
        clock->advance(std::chrono::seconds(10)); // what was called off
        loop.drain();
        EXPECT_TRUE(ended.isDone());
    }

    OperationContext context(std::string connection)
    {
        return {.operands = {.browser = browser, .connection = std::move(connection), .path = "/srv", .names = {}},
                .pane = pane,
                .panes = {},
                .dialogs = dialogs,
                .opening = {.applications = applications,
                            .copies = copies,
                            .activationToken = [] { return std::string("token"); }},
                .view = [this](Operands const &where, FileToOpen const &viewedFile) {
                    viewed.push_back(where.connection + ':' + viewedFile.path);
                }};
    }

    static FileToOpen file(std::int64_t size = 4)
    {
        return {.path = "/srv/a.txt", .kind = EntryKind::file, .size = size, .mtime = 1, .mode = 0755};
    }

    Started<void> begin(Task<void> work) { return loop.start(std::move(work)); }

    void runUntil(std::function<bool()> condition) { loop.runUntil(std::move(condition)); }

    /// To its end, which needs no answer.
    void run(Task<void> work) { loop.run(std::move(work)); }

    TestLoop loop;
    EngineRuntime engine;
    TemporaryFolder folder;
    std::shared_ptr<ManualClock> clock = std::make_shared<ManualClock>();
    std::shared_ptr<HeldReader> host = std::make_shared<HeldReader>();
    std::shared_ptr<Browser> browser = std::make_shared<Browser>(
        host, Browser::Collaborators{.strand = Strand(loop.context()), .clock = clock}, Browser::Config{});
    MemoryDefaults defaults;
    RecordingDisplay display;
    std::shared_ptr<PaneController> pane =
        PaneController::create({.mainContext = loop.context(), .clock = clock, .defaults = defaults}, browser, "web");
    std::shared_ptr<FakeDialogs> dialogs = std::make_shared<FakeDialogs>();
    std::shared_ptr<FakeApplications> applications = std::make_shared<FakeApplications>();
    std::vector<std::string> viewed;
    std::shared_ptr<RemoteFiles> copies =
        std::make_shared<RemoteFiles>(engine, Scratch::Place{.base = folder.path("scratch")});
};

TEST_F(OpenFileTest, aFileOfThisMachineOpensWhereItLies)
{
    run(openWithSystem(context("local"), file()));
    ASSERT_THAT(applications->opened, SizeIs(1));
    EXPECT_EQ(applications->opened[0].path, "/srv/a.txt");
    EXPECT_EQ(applications->opened[0].contentType, "text/plain");
    EXPECT_EQ(applications->opened[0].activationToken, "token");
    EXPECT_EQ(display.status, "opened a.txt with Pen");
    EXPECT_THAT(host->requests, IsEmpty());
}

TEST_F(OpenFileTest, aFileOfAHostIsFetchedOnceAndOpenedAsACopy)
{
    run(openWithSystem(context("web"), file()));
    run(openWithSystem(context("web"), file(), "eye.desktop"));
    ASSERT_THAT(applications->opened, SizeIs(2));
    EXPECT_THAT(applications->opened[0].path, EndsWith("/a.txt"));
    EXPECT_EQ(contentOf(applications->opened[0].path), "text");
    EXPECT_EQ(applications->opened[1].application, "eye.desktop");
    EXPECT_EQ(display.status, "opened a local copy of a.txt — F4 edits the original");
    EXPECT_THAT(host->requests, ElementsAre("read /srv/a.txt"));
    EXPECT_THAT(applications->modesThere, ElementsAre(0755, 0755)) << "the copy has lost the mode of the original";
}

TEST_F(OpenFileTest, aLargeFileIsFetchedAfterAQuestionOnly)
{
    for (auto const answer : {Dialogs::Answer::cancel, Dialogs::Answer::ok}) {
        auto const started = begin(openWithSystem(context("web"), file(mostFetchedUnasked + 1)));
        auto const asked = dialogs->confirmations.size() + 1;
        runUntil([&] { return dialogs->confirmations.size() == asked; });
        EXPECT_EQ(dialogs->confirmations.back().question.title, "Fetch a.txt?");
        EXPECT_EQ(dialogs->confirmations.back().question.message,
                  "It is 256M. Opening it means copying the whole file from web first.");
        EXPECT_THAT(host->requests, Not(Contains("download /srv/a.txt")));
        dialogs->confirmations.back().answer(answer);
        runUntil([&] { return started.isDone(); });
    }
    EXPECT_THAT(host->requests, Contains("download /srv/a.txt"));
    auto exactly = file(mostFetchedUnasked);
    run(openWithSystem(context("web"), exactly));
    EXPECT_THAT(dialogs->confirmations, SizeIs(2));
}

TEST_F(OpenFileTest, aFetchCanBeCancelled)
{
    host->isHeld = true;
    auto const started = begin(openWithSystem(context("web"), file(70000)));
    runUntil([&] { return !host->held.empty(); });
    EXPECT_EQ(display.status, "fetching a.txt…");
    ASSERT_THAT(dialogs->works, SizeIs(1));
    EXPECT_EQ(dialogs->works[0]->title, "Fetching a.txt…");
    dialogs->works[0]->cancel();
    runUntil([&] { return started.isDone(); });
    EXPECT_FALSE(dialogs->works[0]->isUnderWay);
    EXPECT_THAT(applications->opened, IsEmpty());
    EXPECT_EQ(display.status, "");
}

TEST_F(OpenFileTest, whatFailsIsSaidOnTheStatusLine)
{
    applications->suggested.clear();
    run(openWithSystem(context("local"), file()));
    EXPECT_EQ(display.status, "⚠︎ nothing on this Mac opens a.txt");
    run(openWithSystem(context("local"), {.path = "/srv/pipe", .kind = EntryKind::fifo}));
    EXPECT_EQ(display.status, "⚠︎ nothing on this Mac opens pipe");
    host->isHeld = true;
    auto const started = begin(openWithSystem(context("web"), file(70000)));
    runUntil([&] { return !host->held.empty(); });
    host->held[0]->fail(std::make_exception_ptr(std::runtime_error("gone")));
    runUntil([&] { return started.isDone(); });
    EXPECT_EQ(display.status, "⚠︎ a.txt: gone");
}

TEST_F(OpenFileTest, aProgramIsNotRunByOpeningIt)
{
    applications->nature = {.kind = FileNature::Kind::script, .contentType = "text/plain", .mayBeExecuted = true};
    auto const own = begin(openWithSystem(context("local"), file()));
    runUntil([&] { return dialogs->waysAsked.size() == 1; });
    EXPECT_THAT(dialogs->waysAsked[0].question.ways, ElementsAre("View", "Open With…", "Run"));
    dialogs->waysAsked[0].answer(2);
    runUntil([&] { return own.isDone(); });
    EXPECT_THAT(applications->ran, ElementsAre("/srv/a.txt"));

    for (auto const way : {std::optional<std::size_t>(), std::optional<std::size_t>(0)}) {
        auto const asked = dialogs->waysAsked.size();
        auto const started = begin(openWithSystem(context("web"), file()));
        runUntil([&] { return dialogs->waysAsked.size() == asked + 1; });
        EXPECT_EQ(display.status, "") << "nothing is being fetched any more";
        dialogs->waysAsked.back().answer(way);
        runUntil([&] { return started.isDone(); });
    }
    EXPECT_THAT(viewed, ElementsAre("web:/srv/a.txt"));

    auto const remote = begin(openWithSystem(context("web"), file()));
    runUntil([&] { return dialogs->waysAsked.size() == 4; });
    EXPECT_THAT(dialogs->waysAsked[3].question.ways, ElementsAre("View", "Open With…"));
    dialogs->waysAsked[3].answer(1);
    runUntil([&] { return dialogs->choices.size() == 1; });
    dialogs->choices[0].answer("eye.desktop");
    runUntil([&] { return remote.isDone(); });
    EXPECT_THAT(applications->ran, SizeIs(1));
    ASSERT_THAT(applications->opened, SizeIs(1)) << "by the application that was chosen, without a second question";
    EXPECT_EQ(applications->opened[0].application, "eye.desktop");
}

TEST_F(OpenFileTest, aLargeProgramOnAHostIsNotFetchedToBeAskedAbout)
{
    applications->nature.kind = FileNature::Kind::program;
    auto const started = begin(openWithSystem(context("web"), file(mostFetchedUnasked + 1)));
    runUntil([&] { return dialogs->waysAsked.size() == 1; });
    dialogs->waysAsked[0].answer(0);
    runUntil([&] { return started.isDone(); });
    EXPECT_THAT(viewed, ElementsAre("web:/srv/a.txt"));
    EXPECT_THAT(host->requests, ElementsAre("read /srv/a.txt"));
    EXPECT_THAT(dialogs->confirmations, IsEmpty());
}

TEST_F(OpenFileTest, theChoiceHasTheUsualApplicationsFirstAndEachOnce)
{
    auto const started = begin(chooseApplication(context("local"), file()));
    runUntil([&] { return dialogs->choices.size() == 1; });
    auto const &question = dialogs->choices[0].question;
    EXPECT_EQ(question.file, "a.txt");
    EXPECT_THAT(question.suggested, ElementsAre(testing::Field(&Application::name, "Pen")));
    EXPECT_THAT(question.others, ElementsAre(testing::Field(&Application::name, "Eye")));
    dialogs->choices[0].answer(std::nullopt);
    runUntil([&] { return started.isDone(); });
    EXPECT_THAT(applications->opened, IsEmpty());
}

TEST(ProgramQuestionTest, onlyWhatIsTheUsersOwnCanBeRun)
{
    using Kind = FileNature::Kind;
    using ProgramQuestion::Way;

    struct Case {
        FileNature nature;
        std::string host;
        std::string message;
        bool canBeRun = false;
    };

    for (auto const &[nature, host, message, canBeRun] : std::vector<Case>{
             {{Kind::program, "", true, false}, "", "This is a program.", true},
             {{Kind::script, "", true, false}, "", "This is a script, which is a program.", true},
             {{Kind::launcher, "", false, false},
              "",
              "This is a launcher, which starts a program.\nIt may not be executed, so it is not run from here."},
             {{Kind::program, "", true, true},
              "",
              "This is a program.\nIt was downloaded, so it is not run from here."},
             {{Kind::launcher, "", true, false},
              "web",
              "This is a launcher, which starts a program.\nIt comes from web, so it is not run from here."},
         }) {
        auto const question = ProgramQuestion::before(nature, "x", {.host = host});
        ASSERT_TRUE(question);
        EXPECT_EQ(question->choice.title, "Open x?");
        EXPECT_EQ(question->choice.message, message);
        std::vector ways{Way::view, Way::openWith};
        if (canBeRun)
            ways.push_back(Way::run);
        EXPECT_EQ(question->ways, ways);
        EXPECT_EQ(question->choice.ways.size(), ways.size());
    }
    EXPECT_FALSE(ProgramQuestion::before({Kind::document, "", true, true}, "x", {.host = "web"}));
}

} // namespace
} // namespace tw::test
