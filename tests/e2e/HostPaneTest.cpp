#include "Tarnwick/Connections/ConnectionRegistry.h"
#include "Tarnwick/Panes/PaneController.h"
#include "tests/support/Gate.h"
#include "tests/support/RecordingDisplay.h"
#include "tests/support/SSHProviderTest.h"
#include "tests/support/StoppedProcess.h"

namespace tw::test {
namespace {

using testing::IsEmpty;
using testing::MatchesRegex;
using testing::StartsWith;

/// A pane whose user waits for a real host, with what its strip says meanwhile.
class HostPaneTest : public SSHProviderTest {
protected:
    HostPaneTest()
    {
        local.file("here");
        folder.file("first");
        pane->attach(display);
        pane->navigate(local.path());
        waitForFolder(local.path());
    }

    ~HostPaneTest() override
    {
        pane->detach(display);
        pane.reset();
        loop.run(registry.giveUpAttempts());
        loop.run(registry.shutdownAll());
    }

    template <class Condition>
    void waitUntil(Condition const &condition)
    {
        loop.runUntil([&] {
            loop.run(engine.clock()->sleep(std::chrono::milliseconds(1)));
            return condition();
        });
    }

    void waitForFolder(std::string const &path)
    {
        waitUntil([&] { return pane->model().snapshot() && pane->pathOnShow() == path; });
        EXPECT_EQ(pane->pathOnShow(), path) << display.noticeText();
    }

    /// Waits until the strip says it.
    void expectStrip(testing::Matcher<std::string const &> const &words)
    {
        waitUntil([&] { return words.Matches(display.noticeText()); });
        EXPECT_THAT(display.noticeText(), words);
    }

    /// Waits until the strip says that of the host, with a number of seconds.
    void expectSeconds(std::string const &before, std::string const &after)
    {
        expectStrip(MatchesRegex(before + "[0-9]+" + after));
    }

    void openHost() { pane->open({"host", folder.path(), true}, registry); }

    /// The pane shows the folder of the host, and the line is at rest.
    void arriveAtHost()
    {
        reach();
        openHost();
        waitForFolder(folder.path());
        EXPECT_THAT(display.noticeText(), IsEmpty());
    }

    /// The shell that answers what a person asks of the host.
    pid_t shellOfHost()
    {
        auto const browser = loop.run(registry.ssh("host"));
        return std::stoi(
            shellOf(std::dynamic_pointer_cast<SSHProvider>(browser->providerRef()), CommandSession::interactive));
    }

    /// Somebody else makes a file on the host, and the user reads the folder anew.
    void refreshWith(std::string const &name)
    {
        folder.file(name);
        pane->refresh();
    }

    void escape() { EXPECT_TRUE(pane->handleKey(KeyPress{.key = Key::escape, .text = {}})); }

    MemoryDefaults defaults;
    RecordingDisplay display;
    ConnectionRegistry registry{{.engine = engine,
                                 .mainContext = loop.context(),
                                 .sshProgram = client.program(),
                                 .sockets = sockets,
                                 .sshConfig = client.home() + "/.ssh/config"}};
    std::shared_ptr<PaneController> pane = PaneController::create(
        {.mainContext = loop.context(), .clock = engine.clock(), .defaults = defaults}, registry.local(), "local");
};

TEST_F(HostPaneTest, aHostThatAcceptsAndIsSilentIsWaitedForAsLongAsTheUserHasSet)
{
    reach();
    client.add("host", host->address().through(line->port()), SSHClient::Knowledge::right, "ConnectTimeout 3\n");
    line->stall();
    openHost();
    expectSeconds("host: connecting, ", " s\\. Escape gives up\\.");
    ASSERT_TRUE(display.notice);
    EXPECT_THAT(display.notice->actions, testing::ElementsAre(PaneNotice::Action::giveUp));
    expectStrip(StartsWith("host does not answer. It may be switched off, or a firewall may be in between."));
    EXPECT_EQ(display.notice->actions.front(), PaneNotice::Action::retry);
    EXPECT_EQ(pane->pathOnShow(), local.path()) << "the old rows stay";
}

TEST_F(HostPaneTest, escapeGivesUpASilentHostAndItsClient)
{
    reach();
    auto const before = childrenOfOurs();
    line->stall();
    openHost();
    expectSeconds("host: connecting, ", " s\\. Escape gives up\\.");
    EXPECT_NE(childrenOfOurs(), before) << "the client";
    escape();
    EXPECT_THAT(display.noticeText(), IsEmpty());
    EXPECT_EQ(display.connection, "local");
    EXPECT_EQ(display.path, local.path());
    EXPECT_EQ(pane->pathOnShow(), local.path());
    waitUntil([&] { return childrenOfOurs() == before; });
    EXPECT_EQ(childrenOfOurs(), before);
}

TEST_F(HostPaneTest, aHostOfWhichAnotherFolderIsChosenWhileItIsReachedIsReachedOnce)
{
    reach();
    line->stall();
    openHost();
    expectSeconds("host: connecting, ", " s\\. Escape gives up\\.");
    auto const another = folder.folder("another");
    pane->open({"host", another, true}, registry);
    line->resume();
    waitForFolder(another);
    EXPECT_THAT(display.noticeText(), IsEmpty());
    EXPECT_EQ(line->traffic().connections, 1U);
}

TEST_F(HostPaneTest, aHostThatFreezesIsSaidToBeSilentAndAnswersOverAConnectionBeside)
{
    arriveAtHost();
    auto const frozen = shellOfHost();
    StoppedProcess const stopped(frozen);
    refreshWith("second");
    expectSeconds("No answer from host for ", " s\\. Escape gives up\\.");
    EXPECT_EQ(pane->model().snapshot()->count(), 1U) << "the old rows stay";
    expectStrip(IsEmpty());
    waitUntil([&] { return pane->model().snapshot()->count() == 2; });
    EXPECT_EQ(pane->model().snapshot()->count(), 2U);
    EXPECT_NE(shellOfHost(), frozen);
}

TEST_F(HostPaneTest, escapeLeavesAFrozenHostWithItsOldRows)
{
    arriveAtHost();
    line->stall();
    refreshWith("second");
    expectSeconds("No answer from host for ", " s\\. Escape gives up\\.");
    escape();
    EXPECT_THAT(display.noticeText(), IsEmpty());
    EXPECT_FALSE(display.isSpinning);
    EXPECT_EQ(pane->pathOnShow(), folder.path());
    EXPECT_EQ(pane->model().snapshot()->count(), 1U);
}

TEST_F(HostPaneTest, aStartFileThatTakesItsTimeIsWaitedForAndNamed)
{
    Gate const gate;
    reach({.loginScript = "#!/bin/sh\n" + gate.waiting() + "\nexec /bin/sh -c \"$SSH_ORIGINAL_COMMAND\"\n"});
    openHost();
    expectSeconds("host: logged in, waiting for the shell, ", " s\\. Escape gives up\\.");
    waitUntil([&] {
        gate.open(); // each session has a start file
        return pane->pathOnShow() == folder.path();
    });
    EXPECT_EQ(pane->pathOnShow(), folder.path()) << display.noticeText();
    EXPECT_THAT(display.noticeText(), IsEmpty());
}

} // namespace
} // namespace tw::test
