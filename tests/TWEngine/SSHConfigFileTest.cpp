#include "TWEngine/SSHConfig/SSHConfigFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

using SSHConfigFile::aliases;
using SSHConfigFile::Entry;
using SSHConfigFile::explain;
using SSHConfigFile::parse;
using SSHConfigFile::testCommand;
using testing::ElementsAre;
using testing::IsEmpty;

std::string inBlock(std::string const &stanzas)
{
    return std::string(SSHConfigFile::beginMarker) + '\n' + stanzas + std::string(SSHConfigFile::endMarker) + '\n';
}

TEST(SSHConfigFileParseTest, aStanzaIsAnEntry)
{
    EXPECT_THAT(parse("Host box\n"
                      "    HostName 10.0.0.1\n"
                      "\tUser\tann\n"
                      "    Port 2222\n"
                      "    IdentityFile ~/.ssh/box\n"
                      "    ProxyJump gate,inner\n"),
                ElementsAre(Entry{.alias = "box",
                                  .hostName = "10.0.0.1",
                                  .user = "ann",
                                  .port = "2222",
                                  .identityFile = "~/.ssh/box",
                                  .proxyJump = "gate,inner"}));
}

TEST(SSHConfigFileParseTest, anEmptyTextHasNone)
{
    EXPECT_THAT(parse(""), IsEmpty());
    EXPECT_THAT(parse("\n\n"), IsEmpty());
    EXPECT_THAT(parse("# only a comment"), IsEmpty());
}

TEST(SSHConfigFileParseTest, entriesAreInTheOrderOfTheFile)
{
    EXPECT_THAT(parse("Host b\nHost a\nHost b"),
                ElementsAre(Entry{.alias = "b"}, Entry{.alias = "a"}, Entry{.alias = "b"}));
}

TEST(SSHConfigFileParseTest, keywordsAreTheSameInAnyCaseAndWithAnEqualsSign)
{
    for (auto const *line : {"Port 2222", "Port=2222", "port = 2222", "PORT\t=\t2222", "  pOrT  2222  "})
        EXPECT_THAT(parse("HOST box\n" + std::string(line)), ElementsAre(Entry{.alias = "box", .port = "2222"}))
            << line;
}

TEST(SSHConfigFileParseTest, theLastOfARepeatedOptionStands)
{
    EXPECT_THAT(parse("Host a\nUser x\nUser y"), ElementsAre(Entry{.alias = "a", .user = "y"}));
    EXPECT_THAT(parse("Host a\nUser x\nUser"), ElementsAre(Entry{.alias = "a"}));
}

TEST(SSHConfigFileParseTest, furtherNamesOfAHostAreOneExtra)
{
    EXPECT_THAT(parse("Host a b\tc\nForwardAgent yes"),
                ElementsAre(Entry{.alias = "a", .extras = {"# also: b c", "ForwardAgent yes"}}));
}

TEST(SSHConfigFileParseTest, aHostWithoutANameHasAnEmptyOne)
{
    EXPECT_THAT(parse("Host\nUser ann\nHost ="), ElementsAre(Entry{.user = "ann"}, Entry{}));
    EXPECT_THAT(aliases("Host\nHost a"), ElementsAre("a"));
}

TEST(SSHConfigFileParseTest, aQuotedValueLosesOnlyItsRunsOfBlanks)
{
    EXPECT_THAT(parse("Host a\nIdentityFile \"~/my   keys/id\""),
                ElementsAre(Entry{.alias = "a", .identityFile = "\"~/my keys/id\""}));
}

TEST(SSHConfigFileParseTest, otherOptionsAreKeptAsTheirLinesStand)
{
    EXPECT_THAT(parse("Host a\n\t LocalForward 80  =x:80 \t\nFancy=New\n"),
                ElementsAre(Entry{.alias = "a", .extras = {"LocalForward 80  =x:80", "Fancy=New"}}));
}

TEST(SSHConfigFileParseTest, commentsAndLinesWithoutAWordAreSkipped)
{
    EXPECT_THAT(parse("Host a\n# User x\n\n  \t\n===\n  #User y\nUser z"),
                ElementsAre(Entry{.alias = "a", .user = "z"}));
}

TEST(SSHConfigFileParseTest, whatStandsBeforeTheFirstHostIsNotKept)
{
    EXPECT_THAT(parse("User everybody\nInclude other\nHost a"), ElementsAre(Entry{.alias = "a"}));
}

TEST(SSHConfigFileParseTest, aMatchEndsTheHostBeforeItAndIsNotKept)
{
    EXPECT_THAT(parse("Host a\nUser x\nmatch host b\nUser y\nPort 1\nHost c\nUser z"),
                ElementsAre(Entry{.alias = "a", .user = "x"}, Entry{.alias = "c", .user = "z"}));
}

TEST(SSHConfigFileParseTest, whatLiesInTheBlockIsManaged)
{
    EXPECT_THAT(parse("Host a\n" + inBlock("Host b\nUser x\nHost c\n") + "User lost\nHost d"),
                ElementsAre(Entry{.alias = "a"}, Entry{.alias = "b", .user = "x", .isManaged = true},
                            Entry{.alias = "c", .isManaged = true}, Entry{.alias = "d"}));
}

TEST(SSHConfigFileParseTest, aHostThatRunsIntoTheBlockIsNotManaged)
{
    EXPECT_THAT(parse("Host a\n" + inBlock("User x\n") + "Port 1\n"), ElementsAre(Entry{.alias = "a", .user = "x"}))
        << "and it ends with the block";
}

TEST(SSHConfigFileParseTest, anIndentedMarkerIsOne)
{
    auto const text = "\t " + std::string(SSHConfigFile::beginMarker) + "  \nHost a\n   " +
                      std::string(SSHConfigFile::endMarker) + "\nHost b";
    EXPECT_THAT(parse(text), ElementsAre(Entry{.alias = "a", .isManaged = true}, Entry{.alias = "b"}));
}

TEST(SSHConfigFileParseTest, aMarkerWithOtherWordsIsAComment)
{
    EXPECT_THAT(parse("# --- Tarnwick: managed hosts\nHost a"), ElementsAre(Entry{.alias = "a"}));
    EXPECT_THAT(parse("# --- tarnwick: managed hosts ---\nHost a"), ElementsAre(Entry{.alias = "a"}));
}

TEST(SSHConfigFileParseTest, aCarriageReturnStaysInTheValue)
{
    EXPECT_THAT(parse("Host a\r\nPort 22\r\n"), ElementsAre(Entry{.alias = "a\r", .port = "22\r", .extras = {}}));
}

TEST(SSHConfigFileParseTest, anEmptyLineOfWindowsIsAnOptionWithoutAName)
{
    EXPECT_THAT(parse("Host a\r\n\r\n"), ElementsAre(Entry{.alias = "a\r", .extras = {"\r"}}));
}

TEST(SSHConfigFileAliasesTest, patternsAreNoPlacesToGo)
{
    auto const *const text = "Host *\nHost a?\nHost !bad\nHost good\nHost x*y\nHost not!bad";
    EXPECT_EQ(parse(text).size(), 6U);
    EXPECT_THAT(aliases(text), ElementsAre("good", "not!bad"));
}

TEST(SSHConfigFileAliasesTest, aNameIsListedOnceWhereItStandsFirst)
{
    EXPECT_THAT(aliases("Host b\nHost a\nHost b\nHost c\nHost a"), ElementsAre("b", "a", "c"));
}

TEST(SSHConfigFileAliasesTest, aPatternIsToldByItsSigns)
{
    for (auto const *name : {"*", "a*", "?", "a?b", "!a", "!"})
        EXPECT_TRUE(Entry{.alias = name}.isPattern()) << name;
    for (auto const *name : {"", "a", "a!", "[a]"})
        EXPECT_FALSE(Entry{.alias = name}.isPattern()) << name;
}

TEST(SSHConfigFileTestCommandTest, itAsksNobodyAndGivesUpSoon)
{
    EXPECT_THAT(testCommand("box"), ElementsAre("-o", "BatchMode=yes", "-o", "ConnectTimeout=8", "-o",
                                                "StrictHostKeyChecking=accept-new", "box", "echo tw-ok"));
}

TEST(SSHConfigFileTestCommandTest, aNameWithADashIsNoOption)
{
    auto const arguments = testCommand("-oProxyCommand=evil");
    EXPECT_THAT(std::vector(arguments.end() - 3, arguments.end()),
                ElementsAre("--", "-oProxyCommand=evil", "echo tw-ok"));
}

struct Explanation {
    std::int32_t exitCode;
    std::string output;
    std::string text;
};

class SSHConfigFileExplainTest : public testing::TestWithParam<Explanation> {};

TEST_P(SSHConfigFileExplainTest, theFirstRuleThatAppliesSaysIt)
{
    EXPECT_EQ(explain(GetParam().exitCode, GetParam().output), GetParam().text);
}

constexpr auto noName = "the name does not resolve — check HostName";
constexpr auto refused = "nothing is listening — check Port, or whether sshd is running";
constexpr auto noAnswer = "no answer — check the address, or whether a jump host is needed";
constexpr auto denied = "reached the server, but it refused the key — check User and IdentityFile";
constexpr auto otherKey = "the host key changed since last time — verify it before trusting it";
constexpr auto noKeyFile = "the key file in IdentityFile is not there";

INSTANTIATE_TEST_SUITE_P(
    Outcomes, SSHConfigFileExplainTest,
    testing::Values(
        Explanation{0, "tw-ok\n", ""}, Explanation{0, "Welcome!\r\ntw-ok\r\n", ""},
        Explanation{0, "Warning: Permanently added 'x' to the list of known hosts.\r\ntw-ok\n", ""},
        Explanation{1, "tw-ok\n", "tw-ok"}, Explanation{0, "hello", "hello"},
        Explanation{255, "ssh: Could not resolve hostname nope: Name or service not known\r\n", noName},
        Explanation{255, "ssh: Could not resolve hostname nope: Temporary failure in name resolution\r\n", noName},
        Explanation{255, "NAME OR SERVICE NOT KNOWN", noName},
        Explanation{255, "ssh: connect to host x port 22: Connection refused\r\n", refused},
        Explanation{255, "ssh: connect to host x port 22: Connection timed out\r\n", noAnswer},
        Explanation{255, "ssh: connect to host x port 22: Operation timed out\r\n", noAnswer},
        Explanation{255, "ann@x: Permission denied (publickey,password).\r\n", denied},
        Explanation{255, "Host key verification failed.\r\n", otherKey},
        Explanation{255, "no such identity: /k: No such file or directory\r\n", noKeyFile},
        Explanation{255, "no such identity: /k: No such file or directory\nann@x: Permission denied (publickey).",
                    denied},
        Explanation{255, "/etc/motd: No such file or directory", "/etc/motd: No such file or directory"},
        Explanation{255, "connection refused; could not resolve", noName}, Explanation{255, "", "failed with code 255"},
        Explanation{0, "", "failed with code 0"}, Explanation{-9, "", "failed with code -9"},
        Explanation{0, " \r\n", "failed with code 0"},
        Explanation{255, " \r\n kex_exchange_identification: read: reset \n\n",
                    "kex_exchange_identification: read: reset"}));

TEST(SSHConfigFileFurtherNamesTest, areNeverWrittenBackHoweverTheyStand)
{
    std::vector const managed{Entry{.alias = "a", .extras = {"# also:", "# also:b", "# also: b c", "# alsob"}}};
    auto const text = SSHConfigFile::render("", managed);
    EXPECT_EQ(text.find("also:"), std::string::npos) << text;
    EXPECT_NE(text.find("    # alsob\n"), std::string::npos) << text;
}

} // namespace
} // namespace tw::test
