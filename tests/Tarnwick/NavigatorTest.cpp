#include "Tarnwick/Panes/Navigator.h"

#include "tests/support/Listings.h"
#include "tests/support/ManualClock.h"
#include "tests/support/ScriptedProvider.h"
#include "tests/support/TestLoop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// A navigator over a provider that answers when the test says so.
class NavigatorTest : public ::testing::Test {
protected:
    NavigatorTest() { provider->usefulDepth = 1; }

    ~NavigatorTest() override
    {
        navigator.reset();
        auto const ended = loop.start(browser->shutdown());
        loop.drain();
        wait(std::chrono::seconds(1)); // the timers that were called off
        EXPECT_TRUE(ended.isDone());
    }

    void begin(std::string path, Navigator::Source source = Navigator::Source::known)
    {
        navigator->begin({.path = std::move(path), .source = browser}, source);
        loop.drain();
    }

    void answer(std::string const &path)
    {
        auto const found = std::ranges::find(provider->waiting, path, &ScriptedProvider::Request::path);
        ASSERT_NE(found, provider->waiting.end()) << path;
        found->answer->succeed({{path, listing(path, {file("a")}, clock->now())}});
        loop.drain();
    }

    void wait(std::chrono::milliseconds time)
    {
        clock->advance(time);
        loop.drain();
    }

    TestLoop loop;
    std::shared_ptr<ManualClock> clock = std::make_shared<ManualClock>();
    std::shared_ptr<ScriptedProvider> provider = std::make_shared<ScriptedProvider>();
    std::shared_ptr<Browser> browser = std::make_shared<Browser>(
        provider, Browser::Collaborators{Strand(loop.context()), clock, nullptr}, Browser::Config{});
    std::vector<std::string> arrived;
    std::vector<std::string> failed;
    std::optional<Navigator::Arrival> last;
    int turns = 0; ///< of the spinner on or off
    PaneSpinner spinner{loop.context(), clock, [this] { ++turns; }};
    std::shared_ptr<Navigator> navigator = std::make_shared<Navigator>(
        loop.context(), clock,
        Navigator::Events{.onArrived =
                              [this](Navigation const &navigation, Navigator::Arrival arrival) {
                                  arrived.push_back(navigation.path);
                                  last.emplace(std::move(arrival));
                              },
                          .onFailed = [this](Navigation const &navigation,
                                             std::exception_ptr const &) { failed.push_back(navigation.path); }},
        spinner);
};

TEST_F(NavigatorTest, ofSeveralWishesOnlyTheNewestArrives)
{
    begin("/first");
    begin("/second");
    answer("/second");
    answer("/first");
    EXPECT_THAT(arrived, ElementsAre("/second"));
}

TEST_F(NavigatorTest, aFailureOfAnOlderWishIsDropped)
{
    begin("/first");
    begin("/second");
    provider->waiting.front().answer->fail(std::make_exception_ptr(std::runtime_error("no")));
    loop.drain();
    EXPECT_THAT(failed, IsEmpty());
    provider->waiting.back().answer->fail(std::make_exception_ptr(std::runtime_error("no")));
    loop.drain();
    EXPECT_THAT(failed, ElementsAre("/second"));
}

TEST_F(NavigatorTest, whatWasCancelledDoesNotArrive)
{
    begin("/srv");
    navigator->cancel();
    answer("/srv");
    wait(PaneSpinner::delay);
    EXPECT_THAT(arrived, IsEmpty());
    EXPECT_EQ(turns, 0);
}

TEST_F(NavigatorTest, aWishThatIsSupersededOrGivenUpDoesNotWaitForItsFolderAnyMore)
{
    auto const beginElsewhere = [this] {
        auto const other = std::make_shared<Browser>(
            provider, Browser::Collaborators{Strand(loop.context()), clock, nullptr}, Browser::Config{});
        navigator->begin({.path = "/slow", .source = other}, Navigator::Source::known);
        loop.drain();
        return std::weak_ptr(other);
    };
    auto const superseded = beginElsewhere();
    EXPECT_FALSE(superseded.expired()) << "the wish uses it";
    begin("/next");
    EXPECT_TRUE(superseded.expired());
    auto const givenUp = beginElsewhere();
    EXPECT_FALSE(givenUp.expired());
    navigator->cancel();
    loop.drain();
    EXPECT_TRUE(givenUp.expired());
    auto const closed = beginElsewhere();
    navigator.reset();
    loop.drain();
    EXPECT_TRUE(closed.expired());
    while (!provider->waiting.empty()) {
        provider->takeOldest().answer->succeed({});
        loop.drain();
    }
}

TEST_F(NavigatorTest, everyWishAndEveryCancelChangesTheToken)
{
    auto const before = navigator->token();
    begin("/srv");
    auto const during = navigator->token();
    EXPECT_NE(during, before);
    answer("/srv");
    EXPECT_EQ(navigator->token(), during);
    navigator->cancel();
    EXPECT_NE(navigator->token(), during);
}

TEST_F(NavigatorTest, aWishIsLateFromItsPatienceToItsAnswer)
{
    begin("/srv");
    wait(PaneSpinner::delay - std::chrono::milliseconds(1));
    EXPECT_FALSE(spinner.isSpinning());
    wait(std::chrono::milliseconds(1));
    EXPECT_TRUE(spinner.isSpinning());
    EXPECT_EQ(turns, 1);
    answer("/srv");
    EXPECT_FALSE(spinner.isSpinning());
}

TEST_F(NavigatorTest, aWishBehindALateOneIsLateAtOnce)
{
    begin("/first");
    wait(PaneSpinner::delay);
    begin("/second");
    EXPECT_TRUE(spinner.isSpinning()) << "a spinner that stops for a moment would flicker";
    answer("/second");
    EXPECT_FALSE(spinner.isSpinning());
}

TEST_F(NavigatorTest, theTimeIsThatOfTheOpening)
{
    begin("/srv");
    wait(std::chrono::milliseconds(87));
    answer("/srv");
    EXPECT_EQ(last->elapsed, std::chrono::milliseconds(87));
    EXPECT_TRUE(last->result.wasCold);
}

TEST_F(NavigatorTest, onlyANewSourceComesWithItsUpdates)
{
    begin("/known");
    answer("/known");
    EXPECT_FALSE(last->updates);
    begin("/new", Navigator::Source::newToThePane);
    answer("/new");
    EXPECT_TRUE(last->updates);
}

TEST_F(NavigatorTest, itIsNotKeptAliveByItsOwnQuestion)
{
    begin("/srv");
    std::weak_ptr<Navigator> const gone = navigator;
    navigator.reset();
    EXPECT_TRUE(gone.expired());
    answer("/srv");
    EXPECT_THAT(arrived, IsEmpty());
}

} // namespace
} // namespace tw::test
