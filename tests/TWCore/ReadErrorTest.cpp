#include "TWCore/Model/ReadError.h"

namespace tw::test {

TEST(ReadErrorTest, whatIsNotReadableSaysWhy)
{
    ReadError::NotReadable const error("/root", "Permission denied");

    EXPECT_STREQ(error.what(), "cannot read /root: Permission denied");
    EXPECT_EQ(error.path, "/root");
    EXPECT_EQ(error.detail, "Permission denied");
}

TEST(ReadErrorTest, whatIsTooLargeSaysByHowMuch)
{
    ReadError::TooLarge const error("/a", 10, 5);

    EXPECT_STREQ(error.what(), "/a is 10 bytes, over the 5 byte limit");
    EXPECT_EQ(error.path, "/a");
    EXPECT_EQ(error.bytes, 10);
    EXPECT_EQ(error.limit, 5);
}

TEST(ReadErrorTest, isCaughtAsItsBase)
{
    EXPECT_THROW(throw ReadError::NotReadable("/a", "b"), ReadError);
    EXPECT_THROW(throw ReadError::TooLarge("/a", 2, 1), std::exception);
}

} // namespace tw::test
