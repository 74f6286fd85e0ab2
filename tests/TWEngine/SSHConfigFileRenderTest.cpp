#include "TWEngine/SSHConfig/SSHConfigFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

using SSHConfigFile::Entry;
using SSHConfigFile::parse;
using SSHConfigFile::render;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

using Entries = std::vector<Entry>;

std::string const begin(SSHConfigFile::beginMarker);
std::string const end(SSHConfigFile::endMarker);
std::string const comments = "# Written by Tarnwick. Anything outside these two lines\n"
                             "# is yours and is never rewritten.\n";

std::string block(std::string const &stanzas = {})
{
    return begin + '\n' + comments + stanzas + end;
}

std::string onEmpty(Entry const &entry)
{
    return render("", Entries{entry});
}

TEST(SSHConfigFileRenderTest, anEmptyFileBecomesTheBlockAndALineEnd)
{
    EXPECT_EQ(render("", Entries{{.alias = "a"}}), block("\nHost a\n") + '\n');
    EXPECT_EQ(render("\n \n\t\n", Entries{{.alias = "a"}}), block("\nHost a\n") + '\n');
}

TEST(SSHConfigFileRenderTest, optionsAreInOneOrderAndOnlyThoseThatAreSet)
{
    EXPECT_EQ(onEmpty({.alias = "a",
                       .hostName = "h",
                       .user = "u",
                       .port = "1",
                       .identityFile = "\"~/my key\"",
                       .proxyJump = "j",
                       .extras = {"ForwardAgent yes", "  Odd  =1"}}),
              block("\nHost a\n"
                    "    HostName h\n"
                    "    User u\n"
                    "    Port 1\n"
                    "    IdentityFile \"~/my key\"\n"
                    "    ProxyJump j\n"
                    "    ForwardAgent yes\n"
                    "      Odd  =1\n") +
                  '\n');
    EXPECT_EQ(onEmpty({.alias = "a", .hostName = " \t", .user = " u\t"}), block("\nHost a\n    User u\n") + '\n');
}

TEST(SSHConfigFileRenderTest, aFileWithoutTheBlockGetsItBehindAnEmptyLine)
{
    for (auto const *existing : {"Host x", "Host x\n", "Host x\n\n\n \n"})
        EXPECT_EQ(render(existing, Entries{{.alias = "a"}}), "Host x\n\n" + block("\nHost a\n") + '\n') << existing;
}

TEST(SSHConfigFileRenderTest, theBlockStaysWhereItIs)
{
    EXPECT_EQ(render("Host x\n" + block("\nHost old\n") + "\nHost y", Entries{{.alias = "a"}}),
              "Host x\n" + block("\nHost a\n") + "\nHost y");
}

TEST(SSHConfigFileRenderTest, aFileThatEndsWithTheMarkerStillDoes)
{
    EXPECT_EQ(render(block("\nHost old\n"), Entries{{.alias = "a"}}), block("\nHost a\n"));
}

TEST(SSHConfigFileRenderTest, anIndentedMarkerIsFound)
{
    EXPECT_EQ(render("  " + begin + "\nHost old\n\t" + end + " \nHost y", Entries{{.alias = "a"}}),
              block("\nHost a\n") + "\nHost y");
}

TEST(SSHConfigFileRenderTest, withoutEntriesABlockThatIsThereBecomesEmpty)
{
    EXPECT_EQ(render("Host x\n" + block("\nHost old\n") + '\n', {}), "Host x\n" + block() + '\n');
}

TEST(SSHConfigFileRenderTest, withoutEntriesAFileWithoutABlockStays)
{
    for (std::string const existing : {"", "Host x", "Host x\r\n\r\n", "\n\n"})
        EXPECT_EQ(render(existing, {}), existing);
    EXPECT_EQ(render("Host x\n" + end, {}), "Host x\n" + end);
}

TEST(SSHConfigFileRenderTest, entriesWithoutANameAndFurtherNamesAreNotWritten)
{
    EXPECT_EQ(render("", Entries{{.hostName = "h"}, {.alias = " \t"}, {.alias = "a", .extras = {"# also: b c"}}}),
              block("\nHost a\n") + '\n');
    EXPECT_EQ(render("", Entries{{.hostName = "h"}}), block() + '\n');
}

TEST(SSHConfigFileRenderTest, aValueCannotBringALineOfItsOwn)
{
    std::string const evil = "x\n    ProxyCommand evil";
    Entry const entry{.alias = evil,
                      .hostName = evil,
                      .user = evil,
                      .port = evil,
                      .identityFile = evil,
                      .proxyJump = evil,
                      .extras = {evil}};
    EXPECT_EQ(onEmpty(entry), block("\nHost x\n"
                                    "    HostName x\n"
                                    "    User x\n"
                                    "    Port x\n"
                                    "    IdentityFile x\n"
                                    "    ProxyJump x\n"
                                    "    x\n") +
                                  '\n');
    EXPECT_EQ(onEmpty({.alias = "\nHost evil"}), block() + '\n');
    EXPECT_EQ(onEmpty({.alias = "a", .user = "\nProxyCommand evil"}), block("\nHost a\n") + '\n');
    EXPECT_EQ(onEmpty({.alias = "a", .user = std::string("u\0v", 3)}), block("\nHost a\n    User u\n") + '\n');
}

TEST(SSHConfigFileRenderTest, anExtraCannotEndTheBlock)
{
    EXPECT_EQ(onEmpty({.alias = "a", .extras = {end, "\t" + begin, "# note"}}), block("\nHost a\n    # note\n") + '\n');
}

TEST(SSHConfigFileRenderTest, whatIsWrittenIsReadAgain)
{
    Entries const entries{{.alias = "a", .hostName = "h", .port = "1", .extras = {"Fancy yes"}, .isManaged = true},
                          {.alias = "b", .identityFile = "\"x y\"", .proxyJump = "a", .isManaged = true}};
    EXPECT_EQ(parse(render("", entries)), entries);
}

// Damaged blocks: what is there stays, whatever it is.

TEST(SSHConfigFileDamagedTest, aBlockWithoutAnEndStays)
{
    auto const existing = "Host x\n" + begin + "\nHost mine";
    EXPECT_EQ(render(existing, Entries{{.alias = "a"}}), existing + "\n\n" + block("\nHost a\n") + '\n');
    EXPECT_EQ(render(existing, {}), existing + "\n\n" + block() + '\n');
}

TEST(SSHConfigFileDamagedTest, aBlockWithoutABeginningStays)
{
    auto const existing = "Host x\n" + end + "\nHost mine";
    EXPECT_EQ(render(existing, Entries{{.alias = "a"}}), existing + "\n\n" + block("\nHost a\n") + '\n');
}

TEST(SSHConfigFileDamagedTest, markersInTheWrongOrderStay)
{
    auto const existing = end + "\nHost mine\n" + begin;
    EXPECT_EQ(render(existing, Entries{{.alias = "a"}}), existing + "\n\n" + block("\nHost a\n") + '\n');
}

TEST(SSHConfigFileDamagedTest, ofSeveralBlocksTheFirstIsOurs)
{
    auto const second = "\nHost mine\n" + block("\nHost older\n") + "\n";
    EXPECT_EQ(render(block("\nHost old\n") + second, Entries{{.alias = "a"}}), block("\nHost a\n") + second);
}

TEST(SSHConfigFileDamagedTest, aNewBlockAfterOneWithoutAnEndReachesBackToItsBeginning)
{
    // The two markers are looked for independently, so the second writing takes both for one block.
    auto const once = render("Host x\n" + begin + "\nHost old", Entries{{.alias = "a"}});
    EXPECT_EQ(render(once, Entries{{.alias = "a"}}), "Host x\n" + block("\nHost a\n") + '\n');
}

// What holds for every file.

constexpr auto ordinary = "Include ~/.ssh/work/*\n"
                          "# my machines\n"
                          "Host *\n"
                          "\tServerAliveInterval 5\n"
                          "\n"
                          "Match host db* exec \"test -f /etc/x\"\n"
                          "\tUser dba\n";

std::vector<std::string> realLifeTexts()
{
    std::string const text = ordinary;
    std::string windows;
    for (auto const character : text)
        windows += character == '\n' ? std::string("\r\n") : std::string(1, character);
    return {"",
            "\n",
            " ",
            "\t\n\n",
            "Host a",
            "# --- Tarnwick: managed hosts\nHost a\n# --- end of Tarnwick ---\n",
            text,
            text.substr(0, text.size() - 1),
            text + "\n\n\n",
            windows,
            windows + "\r\n \r\n",
            std::string("Host \0a\n\xFF\xFE\n", 11),
            "Host a\rHost b\r"};
}

class SSHConfigFilePropertyTest : public testing::TestWithParam<std::string> {
protected:
    Entries const some{{.alias = "one", .hostName = "10.0.0.1"}, {.alias = "two", .extras = {"Fancy yes"}}};
    Entries const others{{.alias = "three", .user = "ann"}};
};

TEST_P(SSHConfigFilePropertyTest, whatLiesAroundABlockIsKeptByteForByte)
{
    for (auto const &before : realLifeTexts()) {
        auto const head = before.empty() ? before : before + '\n';
        auto const tail = '\n' + GetParam();
        for (auto const &entries : {some, others, Entries()}) {
            auto const text = render(head + block("\nHost old\n    Port 1\n") + tail, entries);
            ASSERT_THAT(text, StartsWith(head + begin));
            EXPECT_TRUE(text.ends_with(end + tail)) << text;
            EXPECT_EQ(text, render(head + block() + tail, entries)) << "it depends on what was in the block";
        }
    }
}

TEST_P(SSHConfigFilePropertyTest, aNewBlockKeepsAllButEmptyLinesAtTheEnd)
{
    auto const &existing = GetParam();
    auto const text = render(existing, some);
    auto const added = text.find(begin + '\n' + comments);
    ASSERT_NE(added, std::string::npos);
    auto const kept = existing.substr(0, existing.find_last_not_of(" \t\n") + 1);
    EXPECT_THAT(text, StartsWith(kept));
    EXPECT_EQ(text.substr(0, added).find_first_not_of(" \t\n", kept.size()), std::string::npos);
    EXPECT_TRUE(text.ends_with(end + '\n'));
}

TEST_P(SSHConfigFilePropertyTest, writingTheSameAgainChangesNothing)
{
    auto const once = render(GetParam(), some);
    EXPECT_EQ(render(once, some), once);
    EXPECT_EQ(render(render(once, others), some), once);
    EXPECT_EQ(render(GetParam(), {}), GetParam());
}

TEST_P(SSHConfigFilePropertyTest, theHostsOfTheUserAreAsTheyWere)
{
    auto entries = parse(render(GetParam(), some));
    std::erase_if(entries, [](auto const &entry) { return entry.isManaged; });
    EXPECT_EQ(entries, parse(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(RealLife, SSHConfigFilePropertyTest, testing::ValuesIn(realLifeTexts()),
                         [](auto const &one) { return std::to_string(one.index); });

} // namespace
} // namespace tw::test
