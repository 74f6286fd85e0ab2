#include "Tarnwick/Operations/FolderName.h"

#include <gtest/gtest.h>

namespace tw::test {
namespace {

TEST(FolderNameTest, nearlyEveryTextIsAName)
{
    for (auto const *name : {"a", "...", ".hidden", "-rf", "with blanks in it", "a\nb", "'\"\\*", "Ärger", "\xff\xfe"})
        EXPECT_EQ(objectionToFolderName(name), std::nullopt) << name;
}

TEST(FolderNameTest, whatNamesAnotherFolderIsRefused)
{
    EXPECT_EQ(objectionToFolderName(""), "A folder needs a name.");
    EXPECT_EQ(objectionToFolderName("."), "“.” already stands for another folder.");
    EXPECT_EQ(objectionToFolderName(".."), "“..” already stands for another folder.");
}

TEST(FolderNameTest, whatNoFileSystemHasInANameIsRefused)
{
    EXPECT_EQ(objectionToFolderName("a/b"), "A name cannot have a “/” in it.");
    EXPECT_EQ(objectionToFolderName("/"), "A name cannot have a “/” in it.");
    EXPECT_EQ(objectionToFolderName(std::string_view("a\0b", 3)), "A name cannot have a zero byte in it.");
}

TEST(FolderNameTest, aNameHasAtMostTwoHundredAndFiftyFiveBytes)
{
    EXPECT_EQ(objectionToFolderName(std::string(255, 'a')), std::nullopt);
    EXPECT_EQ(objectionToFolderName(std::string(256, 'a')),
              "This name is too long: it has 256 bytes, and 255 are allowed.");
    std::string umlauts;
    for (int i = 0; i < 128; ++i)
        umlauts += "ü";
    EXPECT_NE(objectionToFolderName(umlauts), std::nullopt); // two bytes each
}

} // namespace
} // namespace tw::test
