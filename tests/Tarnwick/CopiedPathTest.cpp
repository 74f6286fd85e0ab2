#include "Tarnwick/Operations/CopiedPath.h"

#include <gtest/gtest.h>

namespace tw::test {
namespace {

using CopiedPath::relativePath;
using CopiedPath::render;
using CopiedPath::Style;

CopiedPath::Place const here{.connection = "local", .homeFolder = "/home/ann", .otherPath = "/home/ann/music"};
CopiedPath::Place const onHost{.connection = "web", .homeFolder = "/home/ann", .otherPath = "/srv"};

TEST(CopiedPathTest, aNameIsTheLastPartOfThePath)
{
    EXPECT_EQ(render("/srv/a.tar.gz", Style::name, here), "a.tar.gz");
    EXPECT_EQ(render("/a", Style::name, here), "a");
}

TEST(CopiedPathTest, anExtensionIsLeftOutAsTheTableShowsIt)
{
    EXPECT_EQ(render("/srv/a.tar.gz", Style::nameWithoutExtension, here), "a.tar");
    EXPECT_EQ(render("/srv/.profile", Style::nameWithoutExtension, here), ".profile");
}

TEST(CopiedPathTest, aPathIsThatOfItsHost)
{
    EXPECT_EQ(render("/srv/a", Style::fullPath, onHost), "/srv/a");
    EXPECT_EQ(render("/C:/Users/ann", Style::fullPath, onHost), "C:/Users/ann");
}

TEST(CopiedPathTest, aHostStandsBeforeItsPath)
{
    EXPECT_EQ(render("/srv/a", Style::hostAndPath, onHost), "web:/srv/a");
    EXPECT_EQ(render("/C:/Users/ann", Style::hostAndPath, onHost), "web:C:/Users/ann");
    EXPECT_EQ(render("/srv/a", Style::hostAndPath, here), "/srv/a");
}

TEST(CopiedPathTest, homeIsATildeInPathsOfThisMachineOnly)
{
    EXPECT_EQ(render("/home/ann/a/b", Style::relativeToHome, here), "~/a/b");
    EXPECT_EQ(render("/home/ann", Style::relativeToHome, here), "~");
    EXPECT_EQ(render("/home/anna/b", Style::relativeToHome, here), "/home/anna/b");
    EXPECT_EQ(render("/home/ann/a", Style::relativeToHome, onHost), "/home/ann/a");
}

TEST(CopiedPathTest, theFolderAroundIsThePathWithoutItsLastPart)
{
    EXPECT_EQ(render("/srv/www/a", Style::enclosingFolder, here), "/srv/www");
    EXPECT_EQ(render("/srv", Style::enclosingFolder, here), "/");
    EXPECT_EQ(render("/C:/Users/ann", Style::enclosingFolder, onHost), "C:/Users");
}

TEST(CopiedPathTest, theOtherPaneIsWhereARelativePathBegins)
{
    EXPECT_EQ(render("/home/ann/a", Style::relativeToOtherPane, here), "../a");
}

TEST(CopiedPathTest, aRelativePathGoesUpToWhatBothShare)
{
    EXPECT_EQ(relativePath("/a/b", "/a/c/d"), "../c/d");
    EXPECT_EQ(relativePath("/a", "/a"), ".");
    EXPECT_EQ(relativePath("/", "/a/b"), "a/b");
    EXPECT_EQ(relativePath("/a/b", "/"), "../..");
    EXPECT_EQ(relativePath("/a/b", "/a/bc"), "../bc") << "parts are shared, not letters";
}

TEST(CopiedPathTest, onlyTheCommandsThatCopyPathsHaveAStyle)
{
    EXPECT_EQ(CopiedPath::styleOf(Command::copyHomePath), Style::relativeToHome);
    EXPECT_EQ(CopiedPath::styleOf(Command::refresh), std::nullopt);
}

} // namespace
} // namespace tw::test
