#include "Tarnwick/Operations/ProgressState.h"

#include <gtest/gtest.h>

namespace tw::test {
namespace {

TEST(ProgressStateTest, theTextIsWhatIsDoneOfTheWhole)
{
    EXPECT_EQ((ProgressState{.bytes = 12 * 1024, .total = 100}.text()), "12K of 100");
}

TEST(ProgressStateTest, withoutATotalTheTextIsWhatIsDone)
{
    EXPECT_EQ(ProgressState{.bytes = 12 * 1024}.text(), "12K");
}

TEST(ProgressStateTest, theShareIsBetweenNothingAndAll)
{
    EXPECT_EQ((ProgressState{.bytes = 1, .total = 4}.share()), 0.25);
    EXPECT_EQ((ProgressState{.bytes = 9, .total = 4}.share()), 1.0);
    EXPECT_EQ((ProgressState{.bytes = -9, .total = 4}.share()), 0.0);
}

TEST(ProgressStateTest, ofATotalThatIsNotKnownThereIsNoShare)
{
    EXPECT_EQ(ProgressState{.bytes = 9}.share(), std::nullopt);
    EXPECT_EQ((ProgressState{.bytes = 9, .total = 0}.share()), std::nullopt);
    EXPECT_EQ((ProgressState{.bytes = 9, .total = -1}.share()), std::nullopt);
}

TEST(ProgressStateTest, workWithoutBytesIsSeenByItsItems)
{
    using enum ProgressState::Unit;
    EXPECT_EQ((ProgressState{.files = 1, .totalFiles = 4, .unit = items}.share()), 0.25);
    EXPECT_EQ((ProgressState{.files = 0, .totalFiles = 1, .unit = items}.share()), std::nullopt)
        << "a single item is a folder that may take long";
    EXPECT_EQ((ProgressState{.files = 1, .totalFiles = 4, .unit = items}.text()), "");
}

} // namespace
} // namespace tw::test
