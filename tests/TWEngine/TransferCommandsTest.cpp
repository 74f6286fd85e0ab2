#include "TWEngine/Transfer/TransferCommands.h"

#include "TWCore/Shell/Base64.h"
#include "TWCore/Shell/EndableCommand.h"
#include "TWCore/Shell/FileCommands.h"
#include "tests/support/HostShell.h"
#include "tests/support/PowerShellLiterals.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unicode/unistr.h>

namespace tw::test {
namespace {

using enum ShellDialect;
using testing::ElementsAre;
using testing::HasSubstr;
using Names = std::vector<std::string>;

TransferTools const tools{.cp = "/bin/cp", .tar = "/bin/tar", .ssh = "/bin/ssh"};

/// The script of a Windows command line.
std::string scriptOf(std::string const &command)
{
    constexpr std::string_view call = "powershell -NoProfile -NoLogo -EncodedCommand ";
    EXPECT_TRUE(command.starts_with(call));
    auto const wide = Base64::decode(command.substr(call.size())).value_or("");
    icu::UnicodeString units;
    for (std::size_t at = 0; at + 1 < wide.size(); at += 2)
        units += static_cast<char16_t>(static_cast<unsigned char>(wide[at]) |
                                       (static_cast<unsigned char>(wide[at + 1]) << 8U));
    std::string script;
    return units.toUTF8String(script);
}

TEST(TransferCommandsTest, theRootHasNoSecondSlash)
{
    EXPECT_EQ(TransferCommands::pathOf("/", "name"), "/name");
    EXPECT_EQ(TransferCommands::pathOf("/a", "name"), "/a/name");
}

TEST(TransferCommandsTest, theLabelIsTheNameOrTheirNumber)
{
    EXPECT_EQ(TransferCommands::label(Names{"one"}), "one");
    EXPECT_EQ(TransferCommands::label(Names{"one", "two"}), "2 items");
}

TEST(TransferCommandsTest, theProgramsOfThisMachine)
{
    using Existing = TransferCommands::Existing;
    auto copy = TransferCommands::copyHere(tools, nullptr, Names{"-a", "b"}, "/to", Existing::opened);
    EXPECT_EQ(copy.program, "/bin/cp");
    EXPECT_THAT(copy.arguments, ElementsAre("-a", "--force", "--target-directory=/to", "--", "-a", "b"));
    copy = TransferCommands::copyHere(tools, nullptr, Names{"b"}, "/to", Existing::removed);
    EXPECT_THAT(copy.arguments, ElementsAre("-a", "--remove-destination", "--target-directory=/to", "--", "b"));

    auto const pack = TransferCommands::pack(tools, "/from", Names{"-a", "@b"});
    EXPECT_EQ(pack.program, "/bin/tar");
    EXPECT_THAT(pack.arguments, ElementsAre("-cf", "-", "-C", "/from", "--", "-a", "./@b"));
    EXPECT_EQ(pack.environment.value().at("COPYFILE_DISABLE"), "1");

    auto const unpack = TransferCommands::unpack(tools, "/to");
    EXPECT_THAT(unpack.arguments, ElementsAre("-xpf", "-", "-C", "/to"));
}

TEST(TransferCommandsTest, theClientHasOptionsHostAndOneCommand)
{
    auto const client = TransferCommands::overSSH(tools, {"-o", "BatchMode=yes"}, "-host", "tar -cf -");
    EXPECT_EQ(client.program, "/bin/ssh");
    EXPECT_THAT(client.arguments, ElementsAre("-o", "BatchMode=yes", "--", "-host", "tar -cf -"));
    EXPECT_EQ(client.environment.value().at("COPYFILE_DISABLE"), "1");
    EXPECT_EQ(client.end, ChildCommand::End::withProgram);
}

TEST(TransferCommandsTest, theEnvironmentHasOneOptionForTarOnly)
{
    EXPECT_EQ(TransferCommands::tarEnvironment({{"TAR_OPTIONS", "--exclude=*"}, {"A", "b"}}),
              (Environment{{"A", "b"}, {"COPYFILE_DISABLE", "1"}, {"TAR_OPTIONS", "--no-unquote"}}));
}

TEST(TransferCommandsTest, theCommandsOfAPosixHost)
{
    EXPECT_EQ(TransferCommands::packThere(posix, "/a b", Names{"-n", "it's"}),
              "tar -cf - -C '/a b' -- '-n' 'it'\\''s'");
    EXPECT_EQ(TransferCommands::unpackThere(posix, "/a b"), "tar -xpf - -C '/a b'");
    EXPECT_EQ(TransferCommands::packThere(posix, "/a", Names{"b", "\\n"}),
              "env TAR_OPTIONS=--no-unquote tar -cf - -C '/a' -- 'b' '\\n'");
    EXPECT_EQ(TransferCommands::unpackThere(posix, "/\\n"), "env TAR_OPTIONS=--no-unquote tar -xpf - -C '/\\n'");
}

TEST(TransferCommandsTest, theCommandsOfAWindowsHost)
{
    EXPECT_EQ(scriptOf(TransferCommands::packThere(powershell, "/C:/Users/x", Names{"-n", "it's"})),
              "& tar @('-cf','-','-C','C:/Users/x','--','-n','it''s')");
    EXPECT_EQ(scriptOf(TransferCommands::unpackThere(powershell, "/C:/x")), "& tar @('-xf','-','-C','C:/x')");
    EXPECT_EQ(scriptOf(TransferCommands::unpackThere(powershell, "/")), "& tar @('-xf','-','-C','')");
    EXPECT_EQ(scriptOf(TransferCommands::packThere(powershell, "/", Names{"a"})),
              "& tar @('-cf','-','-C','','--','a')");
}

TEST(TransferCommandsTest, aWindowsHostReadsEachNameAsItIs)
{
    for (auto const &name : namesForPowerShell) {
        EXPECT_THAT(powerShellLiterals(scriptOf(TransferCommands::packThere(powershell, "/C:/x", Names{name, "b"}))),
                    ElementsAre("-cf", "-", "-C", "C:/x", "--", name.starts_with('@') ? "./" + name : name, "b"));
        EXPECT_THAT(powerShellLiterals(scriptOf(TransferCommands::unpackThere(powershell, "/C:/" + name))),
                    ElementsAre("-xf", "-", "-C", "C:/" + name));
        EXPECT_THAT(
            powerShellLiterals(TransferCommands::copyThere(powershell, Names{"/C:/" + name}, "/C:/" + name, "token")),
            ElementsAre("C:/" + name, "C:/" + name));
    }
}

TEST(TransferCommandsTest, aWindowsCommandIsPlainAsciiWhateverTheName)
{
    auto const command = TransferCommands::packThere(powershell, "/C:/", Names{"\xC3\xA4 '\"$x"});
    EXPECT_THAT(command, testing::MatchesRegex("powershell -NoProfile -NoLogo -EncodedCommand [A-Za-z0-9+/=]+"));
}

TEST(TransferCommandsTest, aCommandLineHoldsSoManyNames)
{
    Names const many(3000, std::string(200, 'n'));
    EXPECT_LT(TransferCommands::fittingFront(posix, many).size(), 500U);
    EXPECT_LT(TransferCommands::windowsTar(Names(TransferCommands::fittingFront(powershell, many).begin(),
                                                 TransferCommands::fittingFront(powershell, many).end()))
                  .size(),
              8000U);
    EXPECT_LT(TransferCommands::fittingFrontHere(many).size(), 2600U);
    Names const one{std::string(200'000, 'n')};
    EXPECT_EQ(TransferCommands::fittingFront(posix, one).size(), 1U);
    EXPECT_EQ(TransferCommands::fittingFront(posix, Names{}).size(), 0U);
}

TEST(TransferCommandsTest, aCopyOnAWindowsHostIsItsOwn)
{
    EXPECT_EQ(TransferCommands::copyThere(powershell, Names{"/C:/a"}, "/C:/to", "token"),
              "Copy-Item -LiteralPath 'C:/a' -Destination 'C:/to' -Recurse -Force -ErrorAction Stop");
}

/// Copies on a host, onto pipes that nobody reads and links to a file that is not meant.
class CopyCommandTest : public HostShellTest {
protected:
    CopyCommandTest()
    {
        for (std::string const name : {"from/tree", "to/tree"})
            folder.folder(name);
        for (std::string const name : {"from/a", "from/it's", "from/tree/b"})
            folder.file(name, "content");
    }

    void makeLink(std::string const &name) const
    {
        folder.file("elsewhere", "kept");
        folder.link(name, folder.path("elsewhere"));
    }

    void makePipe(std::string const &name) const { ASSERT_EQ(::mkfifo(folder.path(name).c_str(), 0600), 0); }

    void expectAllToBeCopied()
    {
        std::vector const paths{folder.path("from/a"), folder.path("from/it's"), folder.path("from/tree")};
        auto const result = run(FileCommands::copy(ShellDialect::posix, paths, folder.path("to")));
        EXPECT_EQ(result.status, 0) << result.output;
        for (std::string const name : {"a", "it's", "tree/b"}) {
            EXPECT_EQ(contentOf(folder.path("to/" + name)), "content");
            EXPECT_FALSE(std::filesystem::is_symlink(folder.path("to/" + name))) << name;
        }
        if (std::filesystem::exists(folder.path("elsewhere")))
            EXPECT_EQ(contentOf(folder.path("elsewhere")), "kept");
    }
};

TEST_F(CopyCommandTest, aPipeIsReplacedAlsoBelowAFolder)
{
    makePipe("to/it's");
    makePipe("to/tree/b");
    expectAllToBeCopied();
}

TEST_F(CopyCommandTest, aPipeIsReplacedWithBusybox)
{
    useBusybox();
    makePipe("to/it's");
    expectAllToBeCopied();
}

TEST_F(CopyCommandTest, aPipeIsReplacedByACopyWithoutThatOption)
{
    replaceTool("cp", "[ \"$1\" != --help ] || exit 64; exec /bin/cp \"$@\"");
    makePipe("to/it's");
    expectAllToBeCopied();
}

TEST_F(CopyCommandTest, aLinkIsReplacedAlsoBelowAFolder)
{
    makeLink("to/a");
    makeLink("to/tree/b");
    folder.link("to/it's", folder.path("none"));
    expectAllToBeCopied();
}

TEST_F(CopyCommandTest, aLinkIsReplacedWithBusybox)
{
    useBusybox();
    makeLink("to/a");
    expectAllToBeCopied();
}

TEST_F(CopyCommandTest, aLinkIsReplacedByACopyWithoutThatOption)
{
    replaceTool("cp", "[ \"$1\" != --help ] || exit 64; exec /bin/cp \"$@\"");
    makeLink("to/a");
    folder.link("to/it's", folder.path("to/tree"));
    expectAllToBeCopied();
}

TEST_F(CopyCommandTest, aLinkThatIsNotInTheWayCostsNoOldFile)
{
    replaceTool("cp", "printf '%s ' \"$@\" >>" + folder.path("calls") + "; exec /bin/cp \"$@\"");
    makeLink("to/other");
    makeLink("to/tree/other");
    expectAllToBeCopied();
    EXPECT_THAT(contentOf(folder.path("calls")), testing::Not(HasSubstr("--remove-destination")));
}

TEST_F(CopyCommandTest, aLookThroughTheSourceIsEndedWithTheCopy)
{
    auto const token = std::to_string(::getpid());
    makePipe("pipe");
    replaceTool("find", "(" + EndableCommand::end(token) + "); read -rt 5 <>" + folder.path("pipe") + "; : >" +
                            folder.path("survived"));
    auto const command = TransferCommands::copyThere(posix, Names{folder.path("from/tree")}, folder.path("to"), token);
    EXPECT_EQ(run(command).status, 143);
    EXPECT_FALSE(std::filesystem::exists(folder.path("survived")));
    EXPECT_FALSE(std::filesystem::exists(folder.path("to/tree/b")));
}

TEST_F(CopyCommandTest, withoutThatOptionALinkStaysUntilItsOwnCopyBegins)
{
    replaceTool("cp", "[ \"$1\" != --help ] || exit 64; exit 143");
    makeLink("to/a");
    makeLink("to/it's");
    std::vector const paths{folder.path("from/a"), folder.path("from/it's")};
    EXPECT_EQ(run(FileCommands::copy(ShellDialect::posix, paths, folder.path("to"))).status, 143);
    EXPECT_TRUE(std::filesystem::is_symlink(folder.path("to/it's")));
}

TEST_F(CopyCommandTest, aCopyOfAPipeOntoItselfLeavesIt)
{
    replaceTool("cp", "[ \"$1\" != --help ] || exit 64; exec /bin/cp \"$@\"");
    makePipe("from/pipe");
    EXPECT_NE(
        run(FileCommands::copy(ShellDialect::posix, std::vector{folder.path("from/pipe")}, folder.path("from"))).status,
        0);
    EXPECT_TRUE(std::filesystem::is_fifo(folder.path("from/pipe")));
}

} // namespace
} // namespace tw::test
