#include "TWCore/Model/Trimmed.h"

#include <gtest/gtest.h>

namespace tw::test {
namespace {

TEST(TrimmedTest, whiteSpaceGoesFromBothEndsAndStaysWithin)
{
    EXPECT_EQ(trimmed(" \t\r\n\v\f a b\tc\n"), "a b\tc");
    EXPECT_EQ(trimmed("a"), "a");
}

TEST(TrimmedTest, aTextOfNothingElseIsEmpty)
{
    EXPECT_EQ(trimmed(""), "");
    EXPECT_EQ(trimmed(" \n"), "");
}

TEST(TrimmedTest, noOtherByteIsWhiteSpace)
{
    std::string const text("\0 \xA0", 3);
    EXPECT_EQ(trimmed(text), text);
}

} // namespace
} // namespace tw::test
