#include "TWCore/Model/LowerCased.h"

#include <gtest/gtest.h>

namespace tw::test {

TEST(LowerCasedTest, theLettersOfAsciiAreLowerAndNothingElseIsTouched)
{
    EXPECT_EQ(lowerCased("HostName [AZ@`{] \xC3\x84\xFF"), "hostname [az@`{] \xC3\x84\xFF");
    EXPECT_EQ(lowerCased(""), "");
}

} // namespace tw::test
