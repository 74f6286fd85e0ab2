#include "TWEngine/Runtime/EngineRuntime.h"
#include "Tarnwick/Editing/EditSessions.h"
#include "Tarnwick/Editing/TerminalEditor.h"
#include "Tarnwick/Operations/EditFile.h"
#include "tests/support/DiskRows.h"
#include "tests/support/FakeApplications.h"
#include "tests/support/FakeDialogs.h"
#include "tests/support/HeldReader.h"
#include "tests/support/ManualClock.h"
#include "tests/support/RecordingDisplay.h"
#include "tests/support/ShellHost.h"
#include "tests/support/TestLoop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

/// What F4 does with a file, from the key to the session.
class RemoteEditTest : public testing::Test {
protected:
    RemoteEditTest() { pane->attach(display); }

    ~RemoteEditTest() override
    {
        dialogs->close();
        edits->leaveForNextStart();
        edits.reset();
        loop.drain();
        pane->detach(display);
        pane.reset();
        auto const ended = loop.start(browser->shutdown());
        loop.drain();
        clock->advance(std::chrono::seconds(10));
        loop.runUntil([&] { return ended.isDone(); });
        loop.settle(engine);
    }

    OperationContext context(std::string connection)
    {
        return {.operands = {.browser = browser, .connection = std::move(connection), .path = "/srv", .names = {}},
                .pane = pane,
                .panes = {},
                .dialogs = dialogs,
                .opening = {
                    .applications = applications, .edits = edits, .terminalEditor = [this] { return terminalEditor; }}};
    }

    FileToOpen file(std::int64_t size = 4) const
    {
        return {.path = path, .kind = EntryKind::file, .size = size, .mtime = 1, .mode = 0755};
    }

    void editOn(std::string const &connection) { loop.run(editFile(context(connection), file())); }

    static Task<std::shared_ptr<Browser>> reached(std::shared_ptr<Browser> browser) { co_return browser; }

    TestLoop loop;
    EngineRuntime engine;
    TemporaryFolder folder;
    std::string const path = folder.file("a.txt", "text");
    std::shared_ptr<ManualClock> clock = std::make_shared<ManualClock>();
    std::shared_ptr<ShellHost> host = std::make_shared<ShellHost>(engine);
    std::shared_ptr<Browser> browser = std::make_shared<Browser>(
        host, Browser::Collaborators{.strand = Strand(loop.context()), .clock = clock}, Browser::Config{});
    MemoryDefaults defaults;
    RecordingDisplay display;
    std::shared_ptr<PaneController> pane =
        PaneController::create({.mainContext = loop.context(), .clock = clock, .defaults = defaults}, browser, "web");
    std::shared_ptr<FakeDialogs> dialogs = std::make_shared<FakeDialogs>();
    std::shared_ptr<FakeApplications> applications = std::make_shared<FakeApplications>();
    std::string const staged = folder.path("edits");
    std::shared_ptr<EditSessions> edits = std::make_shared<EditSessions>(
        RemoteEditSession::Ports{.engine = engine,
                                 .mainContext = loop.context(),
                                 .clock = clock,
                                 .host = [this](std::string const & /*connection*/) { return reached(browser); }},
        EditStaging::Place{.base = staged});
    std::string terminalEditor;
};

TEST_F(RemoteEditTest, aFileOfThisMachineNeedsNoSession)
{
    editOn("local");
    ASSERT_THAT(applications->opened, SizeIs(1));
    EXPECT_EQ(applications->opened[0].path, path);
    EXPECT_THAT(edits->all(), IsEmpty());
    EXPECT_THAT(host->requests, IsEmpty());
}

TEST_F(RemoteEditTest, aFileOfAHostIsOpenedAsACopyAndItsEditorComesAgain)
{
    editOn("web");
    ASSERT_THAT(edits->all(), SizeIs(1));
    auto const copy = edits->all()[0]->localPath();
    EXPECT_EQ(contentOf(copy), "text");
    EXPECT_EQ(display.status, "editing a.txt — each save goes to web");
    editOn("web");
    ASSERT_THAT(applications->opened, SizeIs(2));
    EXPECT_EQ(applications->opened[1].path, copy);
    EXPECT_THAT(edits->all(), SizeIs(1));
    EXPECT_THAT(host->requests, ElementsAre("run", "download")) << "it was fetched once";
    EXPECT_THAT(applications->modesThere, ElementsAre(0755, 0755)) << "the copy has lost the mode of the original";
}

TEST_F(RemoteEditTest, aKeyThatIsPressedTwiceFetchesOnce)
{
    auto const first = loop.start(editFile(context("web"), file()));
    editOn("web");
    loop.runUntil([&] { return first.isDone(); });
    EXPECT_THAT(host->requests, ElementsAre("run", "download"));
    EXPECT_THAT(edits->all(), SizeIs(1));
}

TEST_F(RemoteEditTest, aLargeFileIsFetchedAfterAQuestionOnly)
{
    constexpr auto large = std::int64_t(3) << 30;
    for (auto const answer : {Dialogs::Answer::cancel, Dialogs::Answer::ok}) {
        auto const started = loop.start(editFile(context("web"), file(large)));
        auto const asked = dialogs->confirmations.size() + 1;
        loop.runUntil([&] { return dialogs->confirmations.size() == asked; });
        auto const &question = dialogs->confirmations.back();
        EXPECT_EQ(question.question.title, "Fetch a.txt?");
        EXPECT_EQ(question.question.message, "It is 3.0G. Editing it means copying the whole file from web first.");
        EXPECT_THAT(host->requests, IsEmpty());
        question.answer(answer);
        loop.runUntil([&] { return started.isDone(); });
        EXPECT_THAT(edits->all(), SizeIs(answer == Dialogs::Answer::ok ? 1 : 0));
    }
}

TEST_F(RemoteEditTest, whatHasNoApplicationAndWhatWouldRunOpensAsText)
{
    applications->nature.contentType = "application/x-odd";
    applications->typeWithoutApplication = "application/x-odd";
    editOn("local");
    applications->nature = {.kind = FileNature::Kind::script, .contentType = "text/x-python"};
    editOn("local");
    ASSERT_THAT(applications->opened, SizeIs(2));
    for (auto const &opening : applications->opened)
        EXPECT_EQ(opening.contentType, "text/plain");
    EXPECT_THAT(applications->ran, IsEmpty());
}

TEST_F(RemoteEditTest, withoutAnEditorNothingStays)
{
    applications->typeWithoutApplication = "text/plain";
    editOn("web");
    EXPECT_EQ(display.status, "⚠︎ nothing on this Mac opens a.txt");
    EXPECT_THAT(edits->all(), IsEmpty());
    engine.workers().waitUntilIdle();
    EXPECT_THAT(namesOnDisk(staged), IsEmpty());
}

TEST_F(RemoteEditTest, aFailedFetchIsShownAndLeavesNothing)
{
    host->before = [](auto const &) { throw std::runtime_error("the line was cut"); };
    auto const started = loop.start(editFile(context("web"), file()));
    loop.runUntil([&] { return !dialogs->errors.empty(); });
    EXPECT_EQ(dialogs->errors[0].question, "the line was cut");
    dialogs->errors[0].answer({});
    loop.runUntil([&] { return started.isDone(); });
    EXPECT_THAT(edits->all(), IsEmpty());
    EXPECT_THAT(applications->opened, IsEmpty());
    engine.workers().waitUntilIdle();
    EXPECT_THAT(namesOnDisk(staged), IsEmpty());
}

TEST_F(RemoteEditTest, aPlaceThatIsNoHostSaysSo)
{
    auto const reader = std::make_shared<Browser>(
        std::make_shared<HeldReader>(), Browser::Collaborators{.strand = Strand(loop.context()), .clock = clock},
        Browser::Config{});
    auto elsewhere = context("archive");
    elsewhere.operands.browser = reader;
    loop.run(editFile(elsewhere, file()));
    EXPECT_EQ(display.status, "⚠︎ archive cannot be edited");
    auto const ended = loop.start(reader->shutdown());
    loop.drain();
    clock->advance(std::chrono::seconds(10));
    loop.runUntil([&] { return ended.isDone(); });
}

TEST_F(RemoteEditTest, anEditorInATerminalEndsTheSessionWithItself)
{
    terminalEditor = "vi -R";
    editOn("local");
    editOn("web");
    ASSERT_THAT(applications->commands, SizeIs(2));
    EXPECT_THAT(applications->opened, IsEmpty());
    ASSERT_THAT(edits->all(), SizeIs(1));
    auto const &copy = edits->all()[0]->staged();
    EXPECT_EQ(applications->commands[0], TerminalEditor::command("vi -R", path, ""));
    EXPECT_EQ(applications->commands[1], TerminalEditor::command("vi -R", copy.path, EditStaging::endMark(copy)));
    std::ofstream(EditStaging::endMark(copy)) << '.';
    loop.runUntil([&] {
        clock->advance(std::chrono::seconds(1));
        loop.context()->post([] {});
        return edits->all().empty();
    });
}

} // namespace
} // namespace tw::test
