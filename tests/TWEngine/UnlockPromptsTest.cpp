#include "TWEngine/Passwords/UnlockPrompts.h"

#include "TWEngine/Runtime/EngineRuntime.h"
#include "tests/support/TestLoop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <latch>

namespace tw::test {
namespace {

using testing::ElementsAre;

/// The user's answers are values of the test.
class UnlockPromptsTest : public testing::Test {
protected:
    bool unlock(std::string host) { return loop.run(prompts->unlock(std::move(host))); }

    bool answer(std::string const &host, std::stop_token giveUp)
    {
        asked.push_back(host);
        if (waitsForStop) {
            std::latch stopped{1};
            std::stop_callback const onStop(giveUp, [&] { stopped.count_down(); });
            loop.context()->post([this] { isShown = true; });
            stopped.wait();
        }
        return isUnlocking;
    }

    TestLoop loop;
    bool isUnlocking = true;
    bool waitsForStop = false;
    bool isShown = false;
    std::vector<std::string> asked;
    EngineRuntime engine; // ends first, and with it its threads
    std::shared_ptr<UnlockPrompts> const prompts = std::make_shared<UnlockPrompts>(
        Strand(engine.workers().executor(WorkPriority::interactive)),
        [this](std::string const &host, std::stop_token giveUp) { return answer(host, std::move(giveUp)); });
};

TEST_F(UnlockPromptsTest, theAnswerOfTheUserIsReturned)
{
    EXPECT_TRUE(unlock("one"));
    isUnlocking = false;
    EXPECT_FALSE(unlock("two"));
    EXPECT_THAT(asked, ElementsAre("one", "two"));
}

TEST_F(UnlockPromptsTest, aHostIsAskedForOnce)
{
    isUnlocking = false;
    EXPECT_FALSE(unlock("box"));
    EXPECT_FALSE(unlock("box"));
    EXPECT_THAT(asked, ElementsAre("box"));
}

TEST_F(UnlockPromptsTest, callersAtTheSameTimeGetOnePrompt)
{
    auto const first = loop.start(prompts->unlock("box"));
    auto const second = loop.start(prompts->unlock("box"));
    loop.runUntil([&] { return first.isDone() && second.isDone(); });
    EXPECT_THAT(asked, ElementsAre("box"));
}

TEST_F(UnlockPromptsTest, aPromptThatIsGivenUpIsShownAgain)
{
    waitsForStop = true;
    isUnlocking = false;
    auto const given = loop.start(prompts->unlock("box"));
    loop.runUntil([&] { return isShown; });
    given.stop();
    loop.runUntil([&] { return given.isDone(); });

    waitsForStop = false;
    isUnlocking = true;
    EXPECT_TRUE(unlock("box"));
    EXPECT_THAT(asked, ElementsAre("box", "box"));
}

} // namespace
} // namespace tw::test
