#include "Tarnwick/Toolkit/Appearance/Wording.h"

#include <gtest/gtest.h>

namespace tw::test {
namespace {

TEST(WordingTest, aTextInTheWordsOfAnotherDesktopIsShownInThoseOfThisOne)
{
    EXPECT_EQ(Wording::shown("This Mac"), QStringLiteral("This Computer"));
}

TEST(WordingTest, anyOtherTextIsShownAsItStands)
{
    EXPECT_EQ(Wording::shown("No hosts in ~/.ssh/config"), QStringLiteral("No hosts in ~/.ssh/config"));
    EXPECT_EQ(Wording::shown("This Machine…"), QStringLiteral("This Machine…"));
    EXPECT_EQ(Wording::shown(""), QString());
}

} // namespace
} // namespace tw::test
