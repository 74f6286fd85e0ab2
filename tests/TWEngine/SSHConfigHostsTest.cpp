#include "TWEngine/SSHConfig/SSHConfigHosts.h"

#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

using SSHConfigHosts::Line;
using SSHConfigHosts::linesIn;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

Line hosts(std::vector<std::string> names)
{
    return {Line::Kind::hosts, std::move(names)};
}

Line files(std::vector<std::string> patterns)
{
    return {Line::Kind::files, std::move(patterns)};
}

TEST(SSHConfigHostsTest, everyNameOfALineIsAHost)
{
    EXPECT_THAT(linesIn("Host a b\tc\nHostName x\nhost=d\n HOST \"e\" # not f\r\n"),
                ElementsAre(hosts({"a", "b", "c"}), hosts({"d"}), hosts({"e"})));
}

TEST(SSHConfigHostsTest, aPatternIsNoHost)
{
    EXPECT_THAT(linesIn("Host a *.b ?c !d\nHost *\nHost"), ElementsAre(hosts({"a"})));
}

TEST(SSHConfigHostsTest, aCommentNamesNothing)
{
    EXPECT_THAT(linesIn("# Host a\n#Include b\n\nHostX c"), IsEmpty());
}

TEST(SSHConfigHostsTest, anIncludeNamesFiles)
{
    EXPECT_THAT(linesIn("Include config.d/* ~/x\ninclude \"with blank\""),
                ElementsAre(files({"config.d/*", "~/x"}), files({"with blank"})));
}

TEST(SSHConfigHostsTest, anIncludeThatCountsForSomeHostsOnlyNamesNone)
{
    EXPECT_THAT(linesIn("Host a\nInclude b"), ElementsAre(hosts({"a"})));
    EXPECT_THAT(linesIn("Match user ann\nInclude b"), IsEmpty());
    EXPECT_THAT(linesIn("Host * !a\nInclude b"), IsEmpty());
    EXPECT_THAT(linesIn("Host a\nHost *\nInclude b"), ElementsAre(hosts({"a"}), files({"b"})));
    EXPECT_THAT(linesIn("Host a\nMatch all\nInclude b"), ElementsAre(hosts({"a"}), files({"b"})));
}

class SSHConfigHostsOnDiskTest : public testing::Test {
protected:
    std::vector<std::string> all() { return SSHConfigHosts::all(folder.path("config")); }

    TemporaryFolder folder;
};

TEST_F(SSHConfigHostsOnDiskTest, includedHostsStandWhereTheIncludeIs)
{
    folder.folder("config.d");
    folder.file("config", "Host first\nMatch all\nInclude config.d/*.conf missing\nHost last first\n");
    folder.file("config.d/2.conf", "Host two\n");
    folder.file("config.d/1.conf", "Host one uno\n");
    folder.file("config.d/3.off", "Host three\n");
    EXPECT_THAT(all(), ElementsAre("first", "one", "uno", "two", "last"));
}

TEST_F(SSHConfigHostsOnDiskTest, anIncludedFileIncludesOthersBesideTheConfiguration)
{
    folder.folder("config.d");
    folder.file("config", "Include config.d/more\n");
    folder.file("config.d/more", "Include other\nHost more\n");
    folder.file("other", "Host other\n");
    EXPECT_THAT(all(), ElementsAre("other", "more"));
}

TEST_F(SSHConfigHostsOnDiskTest, anIncludeByItsWholePathIsThatFile)
{
    TemporaryFolder const elsewhere;
    folder.file("config", "Include " + elsewhere.file("hosts", "Host far\n") + "\n");
    EXPECT_THAT(all(), ElementsAre("far"));
}

TEST_F(SSHConfigHostsOnDiskTest, aFileThatIncludesItselfEnds)
{
    folder.file("config", "Host a\nMatch all\nInclude config config\n");
    EXPECT_THAT(all(), ElementsAre("a"));
}

TEST_F(SSHConfigHostsOnDiskTest, moreNamesThanAnybodyHasAreNotRead)
{
    std::string text = "Host";
    for (std::size_t number = 0; number < SSHConfigHosts::mostNames + 10; ++number)
        text += " h" + std::to_string(number);
    folder.file("config", text);
    EXPECT_THAT(all(), SizeIs(SSHConfigHosts::mostNames));
}

TEST_F(SSHConfigHostsOnDiskTest, whatCannotBeReadHasNoHosts)
{
    EXPECT_THAT(all(), IsEmpty());
    folder.folder("folder");
    folder.file("config", "Include folder\nHost a\n");
    EXPECT_THAT(all(), ElementsAre("a"));
}

} // namespace
} // namespace tw::test
