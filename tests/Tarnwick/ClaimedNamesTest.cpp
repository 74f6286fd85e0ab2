#include "Tarnwick/Operations/ClaimedNames.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

using ::testing::ElementsAre;
using ::testing::Optional;

class ClaimedNamesTest : public ::testing::Test {
protected:
    static ClaimedNames::Names namesIn(std::string folder, std::vector<std::string> names, std::string place = "web1")
    {
        return {.place = std::move(place), .folder = std::move(folder), .names = std::move(names)};
    }

    /// The path of what is claimed; nothing if it is free.
    std::optional<std::string> clash(ClaimedNames::Names const &wanted, ClaimedNames::Claim const &own = nullptr)
    {
        auto const found = claims.clash({wanted}, own);
        return found ? std::optional(found->path) : std::nullopt;
    }

    ClaimedNames claims;
};

TEST_F(ClaimedNamesTest, aNameIsClaimedInItsFolderAsLongAsTheClaimExists)
{
    auto claim = claims.hold({namesIn("/dst", {"a", "b"})});
    EXPECT_THAT(clash(namesIn("/dst", {"c", "b"})), Optional(std::string("/dst/b")));
    EXPECT_EQ(clash(namesIn("/dst", {"c"})), std::nullopt);
    EXPECT_EQ(clash(namesIn("/dst2", {"b"})), std::nullopt);
    EXPECT_EQ(clash(namesIn("/dst", {"b"}, "web2")), std::nullopt);
    EXPECT_EQ(clash(namesIn("/dst", {"b"}), claim), std::nullopt) << "its own";
    auto const endings = claims.endings();
    claim.reset();
    EXPECT_EQ(clash(namesIn("/dst", {"b"})), std::nullopt);
    EXPECT_EQ(claims.endings(), endings + 1);
}

TEST_F(ClaimedNamesTest, whatIsBelowAClaimedNameIsClaimedToo)
{
    auto const claim = claims.hold({namesIn("/dst", {"f"})});
    EXPECT_THAT(clash(namesIn("/dst/f/deep", {"x"})), Optional(std::string("/dst/f")));
    EXPECT_EQ(clash(namesIn("/dst/ff", {"x"})), std::nullopt);
    EXPECT_THAT(clash(namesIn("/", {"x", "dst"})), Optional(std::string("/dst")));
    EXPECT_EQ(clash(namesIn("/", {"ds"})), std::nullopt);
}

TEST_F(ClaimedNamesTest, namesThatAreOneNameThereAreClaimedTogether)
{
    auto folding = namesIn("/dst", {"Ä"});
    folding.takesCasesForOne = true;
    auto const claim = claims.hold({folding});
    EXPECT_THAT(clash(namesIn("/dst", {"ä"})), Optional(std::string("/dst/ä")));
    EXPECT_THAT(clash(namesIn("/dst/ä", {"x"})), Optional(std::string("/dst/Ä")));
}

TEST_F(ClaimedNamesTest, besidesOnesOwnAreTheNamesOfOthersInTheFolder)
{
    auto const own = claims.hold({namesIn("/dst", {"a"})});
    auto const other = claims.hold({namesIn("/dst", {"b", "c"})});
    auto const elsewhere = claims.hold({namesIn("/other", {"d"})});
    EXPECT_THAT(claims.besides(own->front(), own), ElementsAre("b", "c"));
}

TEST_F(ClaimedNamesTest, aMoveClaimsItsSourceToo)
{
    auto leaving = namesIn("/src", {"a"}, "local");
    leaving.use = ClaimedNames::Use::moved;
    auto const claim = claims.hold({namesIn("/dst", {"a"}), leaving});
    EXPECT_EQ(claims.clash({namesIn("/src/a", {"x"}, "local")}),
              (ClaimedNames::Clash{.path = "/src/a", .use = ClaimedNames::Use::moved}));
    EXPECT_EQ(clash(leaving, claim), std::nullopt);
    EXPECT_TRUE(claims.isAnyAt("local"));
    EXPECT_FALSE(claims.isAnyAt("web2"));
}

} // namespace
} // namespace tw::test
