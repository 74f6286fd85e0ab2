#include "TWCore/Model/Text.h"

#include <gtest/gtest.h>

namespace tw::test {
namespace {

/// A catalogue that knows two keys.
std::string_view german(std::string_view key)
{
    if (key == "%@ failed on %@")
        return "%@ misslang bei %@";
    if (key == "reading")
        return "Lesen";
    return key;
}

TEST(TextTest, anArgumentStandsForEachPlaceOfTheKey)
{
    EXPECT_EQ(Text("%d files, %d dirs", {Text(std::string("3")), Text(std::string("1"))}).english(), "3 files, 1 dirs");
    EXPECT_EQ(Text("%.0f ms network", {Text(std::string("87"))}).english(), "87 ms network");
    EXPECT_EQ(Text("100%% of %@", {Text(std::string("it"))}).english(), "100% of it");
    EXPECT_EQ(Text("not connected").english(), "not connected");
}

TEST(TextTest, aPlaceWithoutAnArgumentIsEmptyAndAnArgumentWithoutAPlaceIsLeftOut)
{
    EXPECT_EQ(Text("<%@>").english(), "<>");
    EXPECT_EQ(Text("ends in %").english(), "ends in ");
    EXPECT_EQ(Text("none", {Text("one")}).english(), "none");
}

TEST(TextTest, whatANameHoldsIsNoPlace)
{
    EXPECT_EQ(Text("cannot read %@: %@", {Text(std::string("/50%@ off")), Text(std::string("%d"))}).english(),
              "cannot read /50%@ off: %d");
    EXPECT_EQ(Text(std::string("100%")).english(), "100%");
}

TEST(TextTest, aCatalogueKnowsKeysAndArgumentsThatAreKeysButNoNames)
{
    EXPECT_EQ(Text("%@ failed on %@", {Text("reading"), Text(std::string("reading"))}).inWordsOf(german),
              "Lesen misslang bei reading");
    EXPECT_EQ(Text(std::string("reading")).inWordsOf(german), "reading");
    EXPECT_EQ(Text::ofWords("reading").inWordsOf(german), "Lesen");
    EXPECT_EQ(Text::ofWords("100%d").inWordsOf(german), "100%d");
}

TEST(TextTest, aSequenceIsOneTextBehindTheOther)
{
    EXPECT_EQ(Text::sequence({Text("reading"), Text(std::string(" %d")), Text()}).inWordsOf(german), "Lesen %d");
    EXPECT_TRUE(Text::sequence({}).isEmpty());
}

} // namespace
} // namespace tw::test
