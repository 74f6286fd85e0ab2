#include "TWEngine/Platform/UserPaths.h"

#include <gtest/gtest.h>

namespace tw::test {
namespace {

TEST(UserPathsTest, theyLieInTheHomeWhereNothingElseIsSaid)
{
    auto const paths = UserPaths::from({{"HOME", "/home/ann"}});
    EXPECT_EQ(paths.caches, "/home/ann/.cache/com.velmora.Tarnwick");
    EXPECT_EQ(paths.edits, "/home/ann/.cache/com.velmora.Tarnwick/edits");
    EXPECT_EQ(paths.lifeLog, "/home/ann/.local/state/Tarnwick/life.log");
}

TEST(UserPathsTest, theEnvironmentMayPutThemElsewhere)
{
    auto const paths =
        UserPaths::from({{"HOME", "/home/ann"}, {"XDG_CACHE_HOME", "/fast/c"}, {"XDG_STATE_HOME", "/safe/s"}});
    EXPECT_EQ(paths.caches, "/fast/c/com.velmora.Tarnwick");
    EXPECT_EQ(paths.edits, "/fast/c/com.velmora.Tarnwick/edits");
    EXPECT_EQ(paths.scratch, "/fast/c/com.velmora.Tarnwick/scratch");
    EXPECT_EQ(paths.thumbnails, "/fast/c/thumbnails");
    EXPECT_EQ(paths.lifeLog, "/safe/s/Tarnwick/life.log");
}

TEST(UserPathsTest, aVariableThatIsEmptyOrRelativeIsNotSet)
{
    for (auto const *const value : {"", "cache", "./cache", "~/cache"}) {
        auto const paths =
            UserPaths::from({{"HOME", "/home/ann"}, {"XDG_CACHE_HOME", value}, {"XDG_STATE_HOME", value}});
        EXPECT_EQ(paths.caches, "/home/ann/.cache/com.velmora.Tarnwick") << value;
        EXPECT_EQ(paths.lifeLog, "/home/ann/.local/state/Tarnwick/life.log") << value;
    }
}

TEST(UserPathsTest, thoseOfThisUserAreAbsolute)
{
    auto const paths = UserPaths::ofThisUser();
    EXPECT_TRUE(paths.caches.starts_with('/'));
    EXPECT_TRUE(paths.lifeLog.starts_with('/'));
    EXPECT_TRUE(paths.edits.starts_with(paths.caches + '/'));
}

} // namespace
} // namespace tw::test
