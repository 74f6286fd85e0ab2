// How long commands of a host are ended, with a host that answers when the test says so.

#include "TWEngine/Transfer/HostWork.h"

#include "TWCore/Shell/EndableCommand.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "tests/support/FakeCommandHost.h"
#include "tests/support/TestLoop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

using testing::HasSubstr;

class HostWorkTest : public ::testing::Test {
protected:
    ~HostWorkTest() override { loop.drain(); }

    /// A command that is stopped before its answer has come.
    Started<CommandResult> startAndStop()
    {
        auto running = loop.start(HostWork::run(engine, host, "token", "work"));
        waitForRuns(1);
        running.stop();
        waitForRuns(2);
        EXPECT_THAT(textOf(1), HasSubstr("kill"));
        return running;
    }

    void answer(std::size_t index, std::int32_t status)
    {
        host->runs.at(index).answer->succeed({.output = {}, .status = status});
        loop.drain();
    }

    void waitForRuns(std::size_t count)
    {
        loop.runUntil([&] { return host->runs.size() >= count; });
    }

    void expectCancelled(Started<CommandResult> const &running)
    {
        loop.runUntil([&] { return running.isDone(); });
        EXPECT_THROW(running.value(), Cancelled);
    }

    std::string textOf(std::size_t index) const { return host->runs.at(index).command.text; }

    EngineRuntime engine;
    TestLoop loop;
    std::shared_ptr<FakeCommandHost> host = std::make_shared<FakeCommandHost>();
};

TEST_F(HostWorkTest, aCommandThatWasEndedIsOverWhenItsCallerGoesOnAndCleansUpItself)
{
    auto const running = startAndStop();
    answer(1, 0);
    EXPECT_FALSE(running.isDone()) << "it may still be ending";
    answer(0, 143);
    expectCancelled(running);
    EXPECT_EQ(host->runs.size(), 2U);
}

TEST_F(HostWorkTest, nothingStaysThereIfTheAnswerAndTheEndCross)
{
    auto const running = startAndStop();
    answer(0, 0);
    answer(1, 1);
    expectCancelled(running);
    waitForRuns(3);
    EXPECT_EQ(textOf(2), "rm -f \"${TMPDIR:-/tmp}\"/.tarnwick-token.end");
    answer(2, 0);
}

TEST_F(HostWorkTest, aCommandThatHadNotBegunIsWaitedForBeforeItsEndIsForgotten)
{
    host->areSent = true;
    auto const running = startAndStop();
    answer(1, 1);
    expectCancelled(running);
    EXPECT_EQ(host->runs.size(), 2U) << "the command still has to see that it was ended";
    answer(0, 143);
    waitForRuns(3);
    EXPECT_THAT(textOf(2), HasSubstr("rm -f"));
    answer(2, 0);
}

TEST_F(HostWorkTest, aCommandThatWaitsForItsTurnIsNotSentAnyMore)
{
    auto const running = startAndStop();
    answer(1, 1);
    expectCancelled(running);
    waitForRuns(3);
    EXPECT_THAT(textOf(2), HasSubstr("rm -f")) << "and its end is forgotten, since nothing will see it";
    answer(2, 0);
}

TEST_F(HostWorkTest, aCommandThatCannotBeEndedIsNotCalledCancelled)
{
    host->areSent = true;
    auto const running = startAndStop();
    answer(1, EndableCommand::cannotBeEnded);
    loop.runUntil([&] { return running.isDone(); });
    EXPECT_THROW(running.value(), HostWork::MayGoOn);
    answer(0, 0);
    waitForRuns(3);
    answer(2, 0);
}

TEST_F(HostWorkTest, whatIsSentInAnotherWayIsStoppedIfTheHostCannotBeAsked)
{
    auto const sent = std::make_shared<Completion<CommandResult>>();
    auto running = loop.start(HostWork::run(engine, host, "token", Completion<CommandResult>::wait(sent)));
    loop.drain();
    running.stop();
    waitForRuns(1);
    host->runs[0].answer->fail(std::make_exception_ptr(std::runtime_error("no connection")));
    expectCancelled(running);
    waitForRuns(2);
    EXPECT_THAT(textOf(1), HasSubstr("rm -f"));
    answer(1, 0);
}

} // namespace
} // namespace tw::test
