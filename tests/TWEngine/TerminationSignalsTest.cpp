#include "TWEngine/Runtime/TerminationSignals.h"

#include "TWEngine/Runtime/EngineRuntime.h"
#include "tests/support/TestLoop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <thread>

namespace tw::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class TerminationSignalsTest : public testing::Test {
protected:
    /// The parent of the test program may ignore it.
    TerminationSignalsTest() : hangUpBefore(std::signal(SIGHUP, SIG_DFL)) {}

    ~TerminationSignalsTest() override { std::signal(SIGHUP, hangUpBefore); }

    static auto handlerOf(int signal)
    {
        struct sigaction now = {};
        ::sigaction(signal, nullptr, &now);
        return now.sa_handler;
    }

    void listen()
    {
        signals = std::make_unique<TerminationSignals>(engine.io(), loop.context(),
                                                       [this](int signal) { heard.push_back(signal); });
    }

    void waitUntilNobodyListens()
    {
        loop.runUntil([&] {
            loop.run(engine.clock()->sleep(std::chrono::milliseconds(1)));
            return handlerOf(SIGTERM) == SIG_DFL && handlerOf(SIGINT) == SIG_DFL && handlerOf(SIGHUP) == SIG_DFL;
        });
    }

    void (*hangUpBefore)(int);
    EngineRuntime engine;
    TestLoop loop;
    std::vector<int> heard;
    std::unique_ptr<TerminationSignals> signals;
};

TEST_F(TerminationSignalsTest, aSignalIsToldOnTheExecutor)
{
    for (auto const signal : {SIGTERM, SIGINT, SIGHUP}) {
        heard.clear();
        listen();
        ::kill(::getpid(), signal);
        loop.runUntil([&] { return !heard.empty(); });
        EXPECT_THAT(heard, ElementsAre(signal));
        signals.reset();
        waitUntilNobodyListens();
    }
}

TEST_F(TerminationSignalsTest, theNextOneIsForTheSystemAgain)
{
    listen();
    ::kill(::getpid(), SIGTERM);
    loop.runUntil([&] { return !heard.empty(); });
    EXPECT_EQ(handlerOf(SIGTERM), SIG_DFL);
    EXPECT_EQ(handlerOf(SIGINT), SIG_DFL);
    EXPECT_EQ(handlerOf(SIGHUP), SIG_DFL);
}

TEST_F(TerminationSignalsTest, aHangUpThatIsIgnoredStaysIgnored)
{
    std::signal(SIGHUP, SIG_IGN);
    listen();
    EXPECT_EQ(handlerOf(SIGHUP), SIG_IGN);
    EXPECT_NE(handlerOf(SIGTERM), SIG_DFL);
}

TEST_F(TerminationSignalsTest, whoHasGoneHearsNothing)
{
    listen();
    ::kill(::getpid(), SIGTERM);
    // Once nobody listens any more, the call is on its way to us, or will be in a moment.
    while (handlerOf(SIGTERM) != SIG_DFL)
        std::this_thread::yield();
    signals.reset();
    waitUntilNobodyListens();
    loop.drain();
    EXPECT_THAT(heard, IsEmpty());
}

} // namespace
} // namespace tw::test
