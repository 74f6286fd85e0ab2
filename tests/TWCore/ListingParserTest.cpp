#include "TWCore/Model/ListingParser.h"

namespace tw::test {

TEST(ListingParserTest, aNormalisedPathHasNoTrailingSlash)
{
    EXPECT_EQ(ListingParser::normalize("/a/"), "/a");
    EXPECT_EQ(ListingParser::normalize("/a/b///"), "/a/b");
    EXPECT_EQ(ListingParser::normalize("/a"), "/a");
}

TEST(ListingParserTest, theRootStaysTheRoot)
{
    EXPECT_EQ(ListingParser::normalize("/"), "/");
    EXPECT_EQ(ListingParser::normalize("//"), "/");
    EXPECT_EQ(ListingParser::normalize("///"), "/");
}

TEST(ListingParserTest, nothingElseIsChanged)
{
    EXPECT_EQ(ListingParser::normalize(""), "");
    EXPECT_EQ(ListingParser::normalize("//a//b"), "//a//b");
    EXPECT_EQ(ListingParser::normalize("a/"), "a");
    EXPECT_EQ(ListingParser::normalize("/a/\xFF/"), "/a/\xFF");
}

} // namespace tw::test
