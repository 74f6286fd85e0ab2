#include "Tarnwick/Table/NewName.h"

#include <gtest/gtest.h>

namespace tw::test {
namespace {

TEST(NewNameTest, nearlyEveryTextIsAName)
{
    for (auto const *name : {"a", "...", ".hidden", "-rf", "with blanks in it", "a\nb", "'\"\\*", "Ärger", "\xff\xfe"})
        EXPECT_EQ(objectionToNewName(name), std::nullopt) << name;
}

TEST(NewNameTest, whatNamesAnotherFolderIsRefused)
{
    EXPECT_EQ(objectionToNewName(""), "A name is needed.");
    EXPECT_EQ(objectionToNewName("."), "“.” already stands for another folder.");
    EXPECT_EQ(objectionToNewName(".."), "“..” already stands for another folder.");
}

TEST(NewNameTest, whatNoFileSystemHasInANameIsRefused)
{
    EXPECT_EQ(objectionToNewName("a/b"), "A name cannot have a “/” in it.");
    EXPECT_EQ(objectionToNewName("/"), "A name cannot have a “/” in it.");
    EXPECT_EQ(objectionToNewName(std::string_view("a\0b", 3)), "A name cannot have a zero byte in it.");
}

TEST(NewNameTest, aNameHasAtMostTwoHundredAndFiftyFiveBytes)
{
    EXPECT_EQ(objectionToNewName(std::string(255, 'a')), std::nullopt);
    EXPECT_EQ(objectionToNewName(std::string(256, 'a')),
              "This name is too long: it has 256 bytes, and 255 are allowed.");
    std::string umlauts;
    for (int i = 0; i < 128; ++i)
        umlauts += "ü";
    EXPECT_NE(objectionToNewName(umlauts), std::nullopt); // two bytes each
}

} // namespace
} // namespace tw::test
