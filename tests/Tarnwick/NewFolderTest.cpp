#include "Tarnwick/Operations/NewFolder.h"

#include "TWCore/Model/FileOperationError.h"
#include "Tarnwick/Operations/ClaimedNames.h"
#include "tests/support/FakeConnections.h"
#include "tests/support/FakeDialogs.h"
#include "tests/support/Listings.h"
#include "tests/support/ManualClock.h"
#include "tests/support/RecordingDisplay.h"
#include "tests/support/ScriptedWriter.h"
#include "tests/support/TestLoop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

using std::chrono::milliseconds;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

/// A pane that shows /srv of a place that writes when the test says so.
class NewFolderTest : public testing::Test {
protected:
    NewFolderTest()
    {
        writer->usefulDepth = 1;
        use(writer);
    }

    ~NewFolderTest() override
    {
        dialogs->close();
        pane.reset();
        auto const ended = loop.start(browser->shutdown());
        loop.drain();
        clock->advance(milliseconds(200));
        loop.drain();
        EXPECT_TRUE(ended.isDone());
    }

    void use(std::shared_ptr<ScriptedProvider> const &provider)
    {
        source = provider;
        browser = std::make_shared<Browser>(
            provider, Browser::Collaborators{.strand = Strand(loop.context()), .clock = clock, .store = nullptr},
            Browser::Config{});
        pane = PaneController::create({.mainContext = loop.context(), .clock = clock, .defaults = defaults}, browser,
                                      "web1");
        pane->attach(display);
        go("/srv");
    }

    void go(std::string const &path)
    {
        pane->navigate(path);
        answer({directory("old")});
    }

    /// Answers the listing that the pane waits for.
    void answer(std::vector<ListedEntry> const &rows)
    {
        loop.drain();
        auto const found = std::ranges::find(source->waiting, pane->requestedPath(), &ScriptedProvider::Request::path);
        ASSERT_NE(found, source->waiting.end());
        auto const request = *found;
        source->waiting.erase(found);
        request.answer->succeed({{request.path, listing(request.path, rows, clock->now())}});
        loop.drain();
    }

    void press(Key key)
    {
        KeyPress pressed;
        pressed.key = key;
        pane->handleKey(pressed);
    }

    void begin()
    {
        operation = loop.start(newFolder({.operands = pane->operands(),
                                          .pane = pane,
                                          .panes = {pane},
                                          .dialogs = dialogs,
                                          .claims = std::make_shared<ClaimedNames>()}));
        loop.drain();
    }

    void answerWithName(std::string name)
    {
        dialogs->prompts.back().answer(std::move(name));
        loop.drain();
    }

    void beginToCreate(std::string name)
    {
        begin();
        answerWithName(std::move(name));
    }

    void endWrite()
    {
        writer->writes.back().succeed();
        loop.drain();
    }

    void failWrite()
    {
        writer->writes.back().fail(
            std::make_exception_ptr(FileOperationError::Failed("create folder", "/srv/new", "no space")));
        loop.drain();
    }

    TestLoop loop;
    std::shared_ptr<ManualClock> clock = std::make_shared<ManualClock>();
    std::shared_ptr<ScriptedWriter> writer = std::make_shared<ScriptedWriter>();
    std::shared_ptr<ScriptedProvider> source;
    std::shared_ptr<Browser> browser;
    MemoryDefaults defaults;
    std::shared_ptr<PaneController> pane;
    RecordingDisplay display;
    std::shared_ptr<FakeDialogs> dialogs = std::make_shared<FakeDialogs>();
    std::optional<Started<void>> operation;
};

TEST_F(NewFolderTest, asksForANameAndSaysWhereTheFolderWillBe)
{
    begin();
    ASSERT_THAT(dialogs->prompts, SizeIs(1));
    auto const &question = dialogs->prompts.front().question;
    EXPECT_EQ(question.title, "New folder");
    EXPECT_EQ(question.message, "Create in web1:/srv");
    EXPECT_EQ(question.initial, "");
    EXPECT_EQ(question.okTitle, "Create");
    EXPECT_EQ(question.objection("name"), std::nullopt);
    EXPECT_NE(question.objection(".."), std::nullopt);
}

TEST_F(NewFolderTest, theFolderIsCreatedAndStandsUnderTheCursor)
{
    beginToCreate("new");
    ASSERT_THAT(writer->writes, SizeIs(1));
    EXPECT_EQ(writer->writes.front().what, "makeDirectory /srv/new");
    endWrite();
    answer({directory("a"), directory("new"), directory("old")});
    EXPECT_TRUE(operation->isDone());
    EXPECT_EQ(pane->cursorName(), "new");
    EXPECT_THAT(dialogs->errors, IsEmpty());
}

TEST_F(NewFolderTest, belowTheRootThereIsOneSlash)
{
    go("/");
    beginToCreate("new");
    EXPECT_EQ(writer->writes.front().what, "makeDirectory /new");
    endWrite();
    answer({directory("new")});
}

TEST_F(NewFolderTest, marksThatStillApplyStay)
{
    press(Key::down);
    press(Key::insert);
    beginToCreate("new");
    endWrite();
    answer({directory("new"), directory("old")});
    EXPECT_EQ(pane->operands().names, std::vector<std::string>{"old"});
}

TEST_F(NewFolderTest, nothingHappensWithoutAName)
{
    begin();
    dialogs->prompts.front().answer(std::nullopt);
    loop.drain();
    EXPECT_TRUE(operation->isDone());
    EXPECT_THAT(writer->writes, IsEmpty());
}

TEST_F(NewFolderTest, whereNothingCanBeWrittenTheStatusLineSaysSo)
{
    loop.run(browser->shutdown());
    use(std::make_shared<ScriptedProvider>());
    beginToCreate("new");
    EXPECT_TRUE(operation->isDone());
    EXPECT_EQ(display.status, "⚠︎ web1 is read-only");
    EXPECT_THAT(dialogs->errors, IsEmpty());
}

TEST_F(NewFolderTest, aFailureIsShownAndTheFolderIsReadAgain)
{
    beginToCreate("new");
    failWrite();
    ASSERT_THAT(dialogs->errors, SizeIs(1));
    EXPECT_EQ(dialogs->errors.front().question, "create folder failed on /srv/new: no space");
    EXPECT_FALSE(operation->isDone());
    answer({directory("new"), directory("old")}); // it was done after all
    dialogs->errors.front().answer({});
    loop.drain();
    EXPECT_TRUE(operation->isDone());
}

TEST_F(NewFolderTest, afterAFailureTheCursorStaysWhereItIs)
{
    press(Key::down);
    beginToCreate("new");
    failWrite();
    answer({directory("new"), directory("old")});
    EXPECT_EQ(pane->cursorName(), "old");
    dialogs->errors.front().answer({});
    loop.drain();
}

TEST_F(NewFolderTest, theFolderIsCreatedWhereThePaneWasWhenTheKeyWasPressed)
{
    begin();
    go("/elsewhere");
    answerWithName("new");
    EXPECT_EQ(writer->writes.front().what, "makeDirectory /srv/new");
    endWrite();
    EXPECT_TRUE(operation->isDone());
    EXPECT_THAT(writer->waiting, IsEmpty());
    EXPECT_EQ(pane->pathOnShow(), "/elsewhere");
}

TEST_F(NewFolderTest, aPaneThatIsOnItsWayElsewhereIsNotCalledBack)
{
    beginToCreate("new");
    pane->navigate("/elsewhere");
    loop.drain();
    endWrite();
    answer({file("a")});
    EXPECT_EQ(pane->pathOnShow(), "/elsewhere");
}

TEST_F(NewFolderTest, aPaneThatIsConnectingToAnotherHostIsNotCalledBack)
{
    beginToCreate("new");
    FakeConnections connections{browser};
    pane->open({"web2", "/", true}, connections);
    loop.drain();
    endWrite();
    EXPECT_EQ(display.path, "connecting…");
    EXPECT_THAT(writer->waiting, IsEmpty());
    connections.waiting.at(0).answer->fail(std::make_exception_ptr(std::runtime_error("no way")));
    loop.drain();
}

TEST_F(NewFolderTest, aPaneThatHasBeenClosedChangesNothing)
{
    begin();
    pane.reset();
    answerWithName("new");
    ASSERT_THAT(writer->writes, SizeIs(1));
    endWrite();
    EXPECT_TRUE(operation->isDone());
}

TEST_F(NewFolderTest, theSpinnerTurnsWhileTheWriteTakesLong)
{
    beginToCreate("new");
    clock->advance(milliseconds(119));
    loop.drain();
    EXPECT_FALSE(display.isSpinning);
    clock->advance(milliseconds(1));
    loop.drain();
    EXPECT_TRUE(display.isSpinning);
    endWrite();
    answer({directory("new")});
    EXPECT_FALSE(display.isSpinning);
}

TEST_F(NewFolderTest, theSpinnerRestsWhileTheUserIsAsked)
{
    begin();
    clock->advance(milliseconds(500));
    loop.drain();
    EXPECT_FALSE(display.isSpinning);
    answerWithName("new");
    failWrite();
    clock->advance(milliseconds(500));
    loop.drain();
    answer({directory("old")});
    EXPECT_FALSE(display.isSpinning);
    dialogs->errors.front().answer({});
    loop.drain();
}

TEST_F(NewFolderTest, aWalkToAnotherFolderAndBackDoesNotStopTheSpinner)
{
    beginToCreate("new");
    clock->advance(milliseconds(200));
    go("/elsewhere");
    EXPECT_TRUE(display.isSpinning);
    endWrite();
    EXPECT_FALSE(display.isSpinning);
}

TEST_F(NewFolderTest, aWindowThatClosesEndsTheOperation)
{
    begin();
    dialogs->close();
    loop.drain();
    EXPECT_TRUE(operation->failed());
    EXPECT_THAT(writer->writes, IsEmpty());
}

} // namespace
} // namespace tw::test
