#include "TWEngine/SSH/GrowingListing.h"

#include "tests/support/Listings.h"
#include "tests/support/ManualClock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using namespace std::chrono_literals;
using namespace std::string_literals;

class GrowingListingTest : public ::testing::Test {
protected:
    /// `name` has one byte, and so all records are of the same length.
    void hear(char name)
    {
        come += "f\t5\t1700000000\t644\t"s + name + '\0';
        listing.hear(come);
    }

    std::vector<std::size_t> counts() const
    {
        std::vector<std::size_t> result;
        for (auto const &part : parts)
            result.push_back(part.count());
        return result;
    }

    std::shared_ptr<ManualClock> const clock = std::make_shared<ManualClock>();
    std::vector<DirectorySnapshot> parts;
    GrowingListing listing{"/srv", clock, clock->steadyNow(),
                           [this](DirectorySnapshot part) { parts.push_back(std::move(part)); }};
    std::string come;
};

TEST_F(GrowingListingTest, aPersonWhoWaitsGetsTheRowsSoFarAndThenTwiceAsMany)
{
    hear('a');
    EXPECT_THAT(parts, IsEmpty()) << "the whole listing may be there soon";
    clock->advance(500ms);
    for (auto const name : "bcdefghi"s)
        hear(name);
    EXPECT_THAT(counts(), ElementsAre(2U, 4U, 8U));
    EXPECT_THAT(names(parts.at(1)), ElementsAre("a", "b", "c", "d"));
    EXPECT_TRUE(parts.at(1).truncated());
}

TEST_F(GrowingListingTest, halfARecordIsNoRow)
{
    clock->advance(1s);
    come = "f\t5\t1700000000\t644\ta\0f\t5\t17"s;
    listing.hear(come);
    EXPECT_THAT(names(parts.at(0)), ElementsAre("a"));
}

TEST_F(GrowingListingTest, whatWasReadIsPartOfTheWhole)
{
    for (auto const name : "abcd"s)
        hear(name);
    clock->advance(1s);
    for (auto const name : "efgh"s)
        hear(name);
    auto const whole = listing.scan().finish(std::make_shared<std::string const>(come), clock->now(),
                                             ListingParser::Completeness::whole);
    EXPECT_THAT(names(whole.at("/srv")), ElementsAre("a", "b", "c", "d", "e", "f", "g", "h"));
}

TEST_F(GrowingListingTest, whatWasNoPartOfItIsForgotten)
{
    clock->advance(1s);
    for (auto const name : "xyz"s)
        hear(name);
    come.clear();
    listing.hear(come);
    for (auto const name : "abcdefgh"s)
        hear(name);
    auto const whole = listing.scan().finish(std::make_shared<std::string const>(come), clock->now(),
                                             ListingParser::Completeness::whole);
    EXPECT_THAT(names(whole.at("/srv")), ElementsAre("a", "b", "c", "d", "e", "f", "g", "h"));
}

} // namespace
} // namespace tw::test
