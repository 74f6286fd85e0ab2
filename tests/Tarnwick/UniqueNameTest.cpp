#include "Tarnwick/Operations/UniqueName.h"

#include <gtest/gtest.h>

#include <set>

namespace tw::test {
namespace {

std::string uniqueAmong(std::set<std::string> const &taken, std::string const &name)
{
    return uniqueName(name, [&](std::string const &each) { return taken.contains(each); });
}

TEST(UniqueNameTest, aNameThatIsFreeStays)
{
    EXPECT_EQ(uniqueAmong({"b.txt"}, "a.txt"), "a.txt");
}

TEST(UniqueNameTest, theFirstFreeNumberStandsBeforeTheExtension)
{
    EXPECT_EQ(uniqueAmong({"a.txt"}, "a.txt"), "a(2).txt");
    EXPECT_EQ(uniqueAmong({"a.txt", "a(2).txt"}, "a.txt"), "a(3).txt");
    EXPECT_EQ(uniqueAmong({"archive.tar.gz"}, "archive.tar.gz"), "archive.tar(2).gz");
}

TEST(UniqueNameTest, whatIsNoExtensionBelongsToTheName)
{
    EXPECT_EQ(uniqueAmong({".bashrc"}, ".bashrc"), ".bashrc(2)");
    EXPECT_EQ(uniqueAmong({"a.abcdefghijklm"}, "a.abcdefghijklm"), "a.abcdefghijklm(2)");
    EXPECT_EQ(uniqueAmong({"folder"}, "folder"), "folder(2)");
}

TEST(UniqueNameTest, withAllNumbersTakenTheNameComesBack)
{
    EXPECT_EQ(uniqueName("a", [](auto const &) { return true; }), "a");
    EXPECT_EQ(uniqueName("a", [](auto const &name) { return name != "a(9999)"; }), "a(9999)");
}

} // namespace
} // namespace tw::test
