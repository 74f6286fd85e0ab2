#include "TWEngine/Transfer/Blamed.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using enum Blamed::Unreadable;

std::vector<std::string> const copied{"a", "b", "c d"};

TEST(BlamedTest, theNameOfAPathIsBlamed)
{
    auto const blamed = Blamed::in("tar: a/x: Cannot open: Permission denied\n"
                                   "/usr/bin/tar: c d: file changed as we read it\n"
                                   "tar: Exiting with failure status due to previous errors",
                                   copied, meansEverything);
    EXPECT_THAT(blamed.names, ElementsAre("a", "c d"));
    EXPECT_FALSE(blamed.isEverything);
}

TEST(BlamedTest, otherProgramsPutThePathFirst)
{
    auto const blamed =
        Blamed::in("./b/x: Can't create 'b/x'\ntar: Error exit delayed from previous errors.", copied, meansEverything);
    EXPECT_THAT(blamed.names, ElementsAre("b"));
    EXPECT_FALSE(blamed.isEverything);
}

TEST(BlamedTest, aComplaintThatCannotBeReadMayMeanAnything)
{
    EXPECT_TRUE(Blamed::in("tar: can't open 'a': Permission denied", copied, meansEverything).isEverything);
    auto const ofSSH = Blamed::in("client_loop: send disconnect: Broken pipe\n", copied, meansNothing);
    EXPECT_FALSE(ofSSH.isEverything);
    EXPECT_THAT(ofSSH.names, IsEmpty());
}

TEST(BlamedTest, theEndOfAStreamIsNobodysFault)
{
    auto const blamed = Blamed::in("tar: Unexpected EOF in archive\ntar: Error is not recoverable: exiting now", copied,
                                   meansEverything);
    EXPECT_FALSE(blamed.isEverything);
    EXPECT_THAT(blamed.names, IsEmpty());
    EXPECT_FALSE(Blamed::in("", copied, meansEverything).isEverything);
}

TEST(BlamedTest, aCopyComplainsAboutPathsInQuotes)
{
    auto const blamedBy = [](std::string const &line) { return Blamed::inCopy(line, copied, "/to/"); };
    auto const blamed = blamedBy("/bin/cp: cannot open 'c d/x' for reading: Permission denied\n"
                                 "cp: error copying '/to/a' to 'b': No space left on device\n");
    EXPECT_THAT(blamed.names, ElementsAre("a", "c d"));
    EXPECT_FALSE(blamed.isEverything);
    for (auto const *const line : {"cp: no space", "cp: cannot stat 'none'", "cp: cannot stat '/other/a'",
                                   "cp: cannot stat 'a'\\''s'", "cp: cannot stat 'a'$'\\n'"}) {
        EXPECT_TRUE(blamedBy(line).isEverything) << line;
        EXPECT_THAT(blamedBy(line).names, IsEmpty()) << line;
    }
}

} // namespace
} // namespace tw::test
