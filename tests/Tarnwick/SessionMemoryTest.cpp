#include "Tarnwick/Session/SessionMemory.h"

#include "Tarnwick/Session/SessionText.h"
#include "tests/support/ManualClock.h"
#include "tests/support/TestLoop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

class SessionMemoryTest : public ::testing::Test {
protected:
    ~SessionMemoryTest() override
    {
        memory.reset();
        loop.drain();
    }

    void begin()
    {
        memory = std::make_shared<SessionMemory>(SessionMemory::Collaborators{
            loop.context(), clock, defaults, [this](std::string_view line) { notes.emplace_back(line); }});
    }

    /// The settings as a next start finds them.
    void beginAgain()
    {
        memory->flush();
        begin();
    }

    void pass(std::chrono::seconds time)
    {
        loop.drain();
        clock->advance(time);
        loop.drain();
    }

    static SideState side(std::vector<std::string> const &paths)
    {
        SideState state;
        for (auto const &path : paths)
            state.tabs.push_back({.connection = "local", .path = path});
        return state;
    }

    TestLoop loop;
    std::shared_ptr<ManualClock> clock = std::make_shared<ManualClock>();
    MemoryDefaults defaults;
    std::vector<std::string> notes;
    std::shared_ptr<SessionMemory> memory;
};

TEST_F(SessionMemoryTest, nothingIsKnownAtFirst)
{
    begin();
    EXPECT_FALSE(memory->sides());
    EXPECT_TRUE(memory->locations().empty());
    EXPECT_TRUE(notes.empty());
}

TEST_F(SessionMemoryTest, theTabsOfBothSidesAreThereTheNextTime)
{
    begin();
    memory->rememberSides(side({"/a", "/b"}), side({"/c"}));
    beginAgain();
    EXPECT_EQ(memory->sides(), (SideStates{side({"/a", "/b"}), side({"/c"})}));
}

TEST_F(SessionMemoryTest, aChangeIsWrittenSoonWithoutBeingAskedFor)
{
    begin();
    memory->remember("web", "/srv", "log");
    loop.drain();
    EXPECT_FALSE(defaults.text("tw.locations")) << "the next key may change it again";
    pass(SessionMemory::writingDelay);
    EXPECT_TRUE(defaults.text("tw.locations"));
    memory->rememberSides(side({"/a"}), side({"/c"}));
    pass(SessionMemory::writingDelay);
    EXPECT_TRUE(defaults.text("tw.sides"));
}

TEST_F(SessionMemoryTest, whatChangesAllTheTimeIsWrittenAllTheSame)
{
    begin();
    for (auto second = 0; second < 2 * SessionMemory::writingDelay.count(); ++second) {
        memory->remember("web", "/srv", std::to_string(second));
        pass(std::chrono::seconds(1));
    }
    EXPECT_TRUE(defaults.text("tw.locations"));
}

TEST_F(SessionMemoryTest, theLastPlaceOfEachConnectionIsKept)
{
    begin();
    memory->remember("web", "/srv", "log");
    memory->remember("local", "/usr", std::nullopt);
    memory->remember("web", "/etc", "hosts");
    beginAgain();
    EXPECT_EQ(memory->location("web"), (Location{"/etc", "hosts"}));
    EXPECT_EQ(memory->location("local"), (Location{"/usr"}));
    EXPECT_EQ(memory->location("elsewhere"), std::nullopt);
}

TEST_F(SessionMemoryTest, withoutACursorTheOneOfTheSamePathStays)
{
    begin();
    memory->remember("web", "/srv", "log");
    memory->remember("web", "/srv", std::nullopt);
    EXPECT_EQ(memory->location("web"), (Location{"/srv", "log"}));
    memory->remember("web", "/etc", std::nullopt);
    EXPECT_EQ(memory->location("web"), (Location{"/etc"}));
}

TEST_F(SessionMemoryTest, noConnectionAndNoPathAreNoPlace)
{
    begin();
    memory->remember("", "/srv", std::nullopt);
    memory->remember("web", "", std::nullopt);
    EXPECT_TRUE(memory->locations().empty());
}

TEST_F(SessionMemoryTest, ofMoreThan64ConnectionsTheOneThatWasNotUsedForLongestIsForgotten)
{
    begin();
    for (auto number = 1; number <= 64; ++number)
        memory->remember("host" + std::to_string(number), "/", std::nullopt);
    memory->remember("host1", "/again", std::nullopt);
    memory->remember("host65", "/", std::nullopt);
    beginAgain();
    EXPECT_EQ(memory->locations().size(), 64U);
    EXPECT_TRUE(memory->location("host1"));
    EXPECT_FALSE(memory->location("host2"));
    EXPECT_TRUE(memory->location("host65"));
}

TEST_F(SessionMemoryTest, aPlaceThatIsGoneIsForgottenUnlessItIsAnotherOneByNow)
{
    begin();
    memory->remember("web", "/srv", std::nullopt);
    memory->forget("web", "/etc");
    EXPECT_TRUE(memory->location("web"));
    memory->forget("web", "/srv");
    EXPECT_FALSE(memory->location("web"));
}

TEST_F(SessionMemoryTest, whatCannotBeDecodedIsSetAsideAndNoted)
{
    defaults.setText("tw.sides", "[{\"tabs\":");
    defaults.setText("tw.locations", "no json");
    begin();
    EXPECT_FALSE(memory->sides());
    memory->rememberSides(side({"/a"}), side({"/b"}));
    memory->remember("web", "/srv", std::nullopt);
    memory->flush();
    EXPECT_EQ(defaults.text("tw.sides.broken"), "[{\"tabs\":");
    EXPECT_EQ(defaults.text("tw.locations.broken"), "no json");
    EXPECT_THAT(notes,
                testing::ElementsAre(testing::HasSubstr("tw.sides.broken"), testing::HasSubstr("tw.locations.broken")));
}

TEST_F(SessionMemoryTest, moreTabsThanASideHoldsAreSetAsideAndTheFirstOnesOpen)
{
    SideState many;
    for (auto number = 0; number < 10'000; ++number)
        many.tabs.push_back({.connection = "local", .path = "/" + std::to_string(number)});
    many.active = 9'000;
    auto const text = SessionText::encode(SideStates{many, side({"/c"})});
    defaults.setText("tw.sides", text);
    begin();
    ASSERT_TRUE(memory->sides());
    EXPECT_EQ(memory->sides()->at(0).tabs.size(), SideState::mostTabs);
    EXPECT_EQ(memory->sides()->at(0).active, SideState::mostTabs - 1);
    EXPECT_EQ(defaults.text("tw.sides.broken"), text);
}

} // namespace
} // namespace tw::test
