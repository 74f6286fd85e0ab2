#include "Tarnwick/Table/RenameEdit.h"

#include <gtest/gtest.h>

namespace tw::test {
namespace {

RenameEdit fileNamed(std::string name)
{
    return {std::move(name), Fmt::IsDirectory::no};
}

TEST(RenameEditTest, theExtensionIsNotSelected)
{
    EXPECT_EQ(fileNamed("a.txt").base(), "a");
    EXPECT_EQ(fileNamed("a.tar.gz").base(), "a.tar");
    EXPECT_EQ(fileNamed(".profile").base(), ".profile");
    EXPECT_EQ(fileNamed("Makefile").base(), "Makefile");
    EXPECT_EQ(RenameEdit("folder.d", Fmt::IsDirectory::yes).base(), "folder.d");
}

TEST(RenameEditTest, aNewNameIsTrimmed)
{
    auto const edit = fileNamed("a.txt");
    EXPECT_EQ(edit.newName("b.txt"), "b.txt");
    EXPECT_EQ(edit.newName(" \tb c.txt\n"), "b c.txt");
    EXPECT_EQ(edit.newName("A.txt"), "A.txt");
}

TEST(RenameEditTest, theSameNameAndNoNameAreNoNewName)
{
    auto const edit = fileNamed("a.txt");
    for (auto const *const typed : {"a.txt", " a.txt ", "", "  \n"})
        EXPECT_EQ(edit.newName(typed), std::nullopt) << typed;
}

TEST(RenameEditTest, aFieldThatWasNotTouchedRenamesNothing)
{
    for (std::string const name : {" blanks around ", "line end\n", "bad \xFF bytes", " "}) {
        auto const edit = fileNamed(name);
        EXPECT_EQ(edit.newName(edit.original()), std::nullopt) << name;
        EXPECT_EQ(edit.original(), name);
    }
}

TEST(RenameEditTest, theFieldGetsTheBytesOfTheName)
{
    auto const edit = fileNamed("bad\xFF\xFE.txt");
    EXPECT_EQ(edit.original(), "bad\xFF\xFE.txt");
    EXPECT_EQ(edit.base(), "bad\xFF\xFE");
}

TEST(RenameEditTest, aTrimmedNameIsANewNameOnceTheFieldWasTouched)
{
    EXPECT_EQ(fileNamed("a ").newName("a"), "a");
    EXPECT_EQ(fileNamed("bad\xFF").newName("good"), "good");
}

} // namespace
} // namespace tw::test
