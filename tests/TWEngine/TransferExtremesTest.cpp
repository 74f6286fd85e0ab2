// Copies that meet an unusual machine: no permission, no room, missing or other tools, trees of an unusual shape.

#include "TWEngine/Transfer/Measure.h"
#include "tests/hosts/LoginScripts.h"
#include "tests/support/HostShell.h"
#include "tests/support/SmallDisk.h"
#include "tests/support/TransferFaultsTest.h"

#include <sys/xattr.h>

namespace tw::test {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::UnorderedElementsAreArray;

class TransferExtremesTest : public TransferFaultsTest {
protected:
    ~TransferExtremesTest() override
    {
        std::error_code none;
        for (auto const &path : {folder.path("a/locked"), local.path("d")})
            std::filesystem::permissions(path, std::filesystem::perms::owner_all, none);
    }

    /// The text of a script that runs `program` for a user to whom permissions apply.
    static std::string withoutPrivileges(std::string const &program)
    {
        return "if [ $(id -u) = 0 ]; then r=-dac_override,-dac_read_search\n"
               "exec setpriv --bounding-set $r --inh-caps $r -- " +
               program + " \"$@\"; fi\nexec " + program + " \"$@\"";
    }

    /// A client whose host runs the command, which it gets as $1, so.
    std::string clientOf(std::string const &text)
    {
        return script("ssh", "for word; do :; done; set -- \"$word\"\n" + text);
    }

    std::string onFullTarget(std::string const &program) const
    {
        return onSmallDisk(program, local.path(), scripts.folder("real"));
    }
};

TEST_F(TransferExtremesTest, aFolderThatCannotBeReadIsNamedAndTheRestArrives)
{
    auto const names = makeItems();
    folder.folder("a/locked");
    folder.file("a/locked/secret", "x");
    ASSERT_EQ(::chmod(folder.path("a/locked").c_str(), 0), 0);
    programs.tar = tarOf(withoutPrivileges("tar"));
    programs.cp = script("cp", withoutPrivileges("cp"));
    EXPECT_THAT(carry(names, sourceHere(), targetThere()),
                AllOf(HasSubstr("a/locked"), HasSubstr("Permission denied")));
    EXPECT_THAT(transfer->summary().partial, ElementsAre("a"));
    EXPECT_THAT(transfer->summary().complete, ElementsAre("b", "c", "d"));
    emptyTarget();
    EXPECT_THAT(carry(names, sourceHere(), targetHere()), AllOf(HasSubstr("a/locked"), HasSubstr("Permission denied")));
    expectTruth(names);
}

TEST_F(TransferExtremesTest, aFileThatAHostMayNotReadIsNamedAndTheRestArrives)
{
    auto const names = makeItems();
    ASSERT_EQ(::chmod(folder.path("a/file 3").c_str(), 0), 0);
    programs.ssh = clientOf(withoutPrivileges("sh -c"));
    for (auto const &to : {targetHere(), targetThere()}) {
        emptyTarget();
        EXPECT_THAT(carry(names, sourceThere(), to), AllOf(HasSubstr("a/file 3"), HasSubstr("Permission denied")));
        expectTruth(names);
        EXPECT_THAT(transfer->summary().partial, ElementsAre("a"));
        EXPECT_THAT(transfer->summary().complete, ElementsAre("b", "c", "d"));
        EXPECT_EQ(namesIn(local.path("a")).size(), 4U);
    }
}

TEST_F(TransferExtremesTest, aFolderThatCannotBeWrittenIsNamedAndTheRestArrives)
{
    auto const names = makeItems();
    programs.tar = tarOf(withoutPrivileges("tar"));
    programs.ssh = clientOf(withoutPrivileges("sh -c"));
    local.folder("d");
    // The folder gets the mode of the one that comes at the end, so this one keeps others from writing too.
    ASSERT_EQ(::chmod(folder.path("d").c_str(), 0500), 0);
    for (auto const &[from, to] : streams()) {
        ASSERT_EQ(::chmod(local.path("d").c_str(), 0500), 0);
        EXPECT_THAT(carry(names, from, to), AllOf(HasSubstr("d/file"), HasSubstr("Permission denied")));
        EXPECT_THAT(transfer->summary().complete, ElementsAre("a", "b", "c"));
        EXPECT_THAT(transfer->summary().partial, ElementsAre("d"));
    }
}

TEST_F(TransferExtremesTest, aDiskThatIsFullIsSaidByItsName)
{
    auto const names = makeItems();
    programs.tar = tarOf(whenUnpacking(onFullTarget("tar")));
    programs.ssh = clientOf("case $1 in *-xpf*) " + onFullTarget("sh -c") + ";; esac; exec sh -c \"$@\"");
    for (auto const &[from, to] : streams()) {
        emptyTarget();
        EXPECT_THAT(carry(names, from, to), AllOf(HasSubstr("write to "), HasSubstr("No space left on device")));
        expectTruth(names);
        EXPECT_THAT(transfer->summary().complete, testing::Contains("a"));
        EXPECT_THAT(transfer->summary().partial, testing::Contains("b"));
    }
    emptyTarget();
    programs.cp = script("cp", onFullTarget("cp"));
    EXPECT_THAT(carry(names, sourceHere(), targetHere()), HasSubstr("No space left on device"));
    expectTruth(names);
}

TEST_F(TransferExtremesTest, aFullDiskOfAHostIsSaidByWhatCopiesAndMovesThere)
{
    auto const names = makeItems();
    for (std::string const program : {"cp", "mv"})
        script(program, onFullTarget("/bin/" + program));
    reach({.loginScript = "#!/bin/sh\nPATH=" + scripts.path() + ":$PATH exec /bin/sh -c \"$SSH_ORIGINAL_COMMAND\"\n"});
    auto const provider = connected();
    EXPECT_THAT(copy(names, sourceOn(provider), targetOn(provider)), HasSubstr("No space left on device"));
    expectTruth(names);
    EXPECT_THAT(transfer->summary().complete, testing::Contains("a"));
    EXPECT_THAT(transfer->summary().partial, testing::Contains("b"));
    emptyTarget();
    EXPECT_THAT(failureOf(loop.start(
                    provider->moveAll({{folder.path("b"), local.path("b")}}, FileSystemWriter::Existing::stays))),
                HasSubstr("No space left on device"));
    EXPECT_EQ(contentOf(folder.path("b")).size(), 100'000U);
}

TEST_F(TransferExtremesTest, whatAHostMayNotDoIsSaidByTheCopyThere)
{
    auto const names = makeItems();
    reach({.loginScript = loginWithoutPrivileges()});
    auto const provider = connected();
    ASSERT_EQ(::chmod(folder.path("a/file 3").c_str(), 0), 0);
    ASSERT_EQ(::chmod(folder.path("d").c_str(), 0500), 0);
    ASSERT_EQ(::chmod(local.folder("d").c_str(), 0500), 0);
    EXPECT_THAT(copy(names, sourceOn(provider), targetOn(provider)),
                AllOf(HasSubstr("a/file 3"), HasSubstr("d/file"), HasSubstr("Permission denied")));
    EXPECT_THAT(transfer->summary().complete, ElementsAre("b", "c"));
    EXPECT_THAT(transfer->summary().partial, ElementsAre("a", "d"));
    EXPECT_EQ(transfer->summary().files, 6);
    EXPECT_EQ(filesThatAreWhole(), 6);
}

TEST_F(TransferExtremesTest, aFileWithHolesKeepsThemWhereCpCopiesItAndArrivesWholeEverywhere)
{
    constexpr auto size = 8'000'000;
    std::filesystem::resize_file(folder.file("holes", "begins"), size);
    std::ofstream(folder.path("holes"), std::ios::app) << "ends";
    auto const usedBytes = [this] {
        struct stat status = {};
        EXPECT_EQ(::stat(local.path("holes").c_str(), &status), 0);
        return status.st_blocks * 512;
    };
    for (auto const &[from, to] : streams()) {
        emptyTarget();
        EXPECT_EQ(carry({"holes"}, from, to), "done");
        expectSame("holes");
    }
    EXPECT_EQ(carry({"holes"}, sourceHere(), targetHere()), "done");
    expectSame("holes");
    EXPECT_LT(usedBytes(), size / 10);
    reach();
    auto const provider = connected();
    emptyTarget();
    EXPECT_EQ(copy({"holes"}, sourceOn(provider), targetOn(provider)), "done");
    expectSame("holes");
    EXPECT_LT(usedBytes(), size / 10);
}

TEST_F(TransferExtremesTest, aQuotaThatIsUsedUpIsSaidByItsName)
{
    auto const names = makeItems();
    // A stand-in for a disk with quotas: it takes one name, and then no more.
    auto const unpacking = "tar -xpf - -C " + local.path() +
                           " a 2>/dev/null; cat >/dev/null; for n in b c d; do echo \"tar: $n: Cannot open: "
                           "Disk quota exceeded\" >&2; done; exit 2";
    programs.tar = tarOf(whenUnpacking(unpacking));
    programs.ssh = clientOf("case $1 in *-xpf*) " + unpacking + ";; esac; exec sh -c \"$1\"");
    for (auto const &[from, to] : streams()) {
        emptyTarget();
        EXPECT_THAT(carry(names, from, to),
                    AllOf(HasSubstr("write to "), HasSubstr("b: Cannot open: Disk quota exceeded")));
        EXPECT_THAT(transfer->summary().words, HasSubstr("d: Cannot open: Disk quota exceeded"));
        EXPECT_THAT(transfer->summary().complete, ElementsAre("a"));
        expectTruth(names);
    }
}

TEST_F(TransferExtremesTest, aTargetThatVanishesIsAFailureAndTheSourceStays)
{
    folder.file("large", std::string(2'000'000, 'x'));
    folder.file("small", "x");
    // More than pipes hold, so the other side is in the folder when it goes.
    auto const vanishing = "{ head -c 1000000; rm -rf " + local.path() + "; cat; } | ";
    programs.tar = tarOf(whenUnpacking(vanishing + "tar \"$@\"; exit"));
    programs.ssh = clientOf("case $1 in *-xpf*) " + vanishing + "sh -c \"$1\"; exit;; esac; exec sh -c \"$1\"");
    for (auto const &[from, to] : streams()) {
        EXPECT_THAT(carry({"large", "small"}, from, to), HasSubstr("small: Cannot open: No such file or directory"));
        EXPECT_THAT(transfer->summary().partial, testing::Contains("small"));
        EXPECT_THAT(carry({"small"}, sourceHere(), targetHere()), HasSubstr("No such file or directory"));
        EXPECT_EQ(namesIn(folder.path()), (std::set<std::string>{"large", "small"}));
        std::filesystem::create_directory(local.path());
    }
}

TEST_F(TransferExtremesTest, aTreeOfTwoHundredLevelsArrivesOnEachRoute)
{
    std::string path = "deep";
    for (int level = 0; level < 200; ++level)
        path += "/a level with a name";
    folder.folder(path);
    folder.file(path + "/file", "at the bottom");
    for (auto const &[from, to] : {std::pair(sourceHere(), targetHere()),
                                   {sourceHere(), targetThere()},
                                   {sourceThere(), targetHere()},
                                   {sourceThere(), targetThere()}}) {
        emptyTarget();
        EXPECT_EQ(carry({"deep"}, from, to), "done");
        expectSame("deep");
    }
    reach();
    auto const provider = connected();
    emptyTarget();
    EXPECT_EQ(copy({"deep"}, sourceOn(provider), targetOn(provider)), "done");
    expectSame("deep");
}

TEST_F(TransferExtremesTest, aSocketStopsNoCopyAndNoTarTakesIt)
{
    folder.folder("tree");
    folder.file("tree/file", "x");
    ASSERT_EQ(::mknod(folder.path("tree/socket").c_str(), S_IFSOCK | 0600, 0), 0);
    EXPECT_EQ(carry({"tree"}, sourceHere(), targetThere()), "done");
    EXPECT_THAT(namesIn(local.path("tree")), ElementsAre("file"));
    emptyTarget();
    EXPECT_EQ(carry({"tree"}, sourceHere(), targetHere()), "done");
    expectSame("tree");
    reach();
    auto const provider = connected();
    emptyTarget();
    EXPECT_EQ(copy({"tree"}, sourceOn(provider), targetOn(provider)), "done");
    expectSame("tree");
}

TEST_F(TransferExtremesTest, onThisMachineExtendedAttributesAreKept)
{
    auto const source = folder.file("a", "a");
    auto const isPossible = ::setxattr(source.c_str(), "user.tarnwick", "kept", 4, 0) == 0;
    EXPECT_EQ(carry({"a"}, sourceHere(), targetHere()), "done");
    char value[8];
    EXPECT_EQ(::getxattr(local.path("a").c_str(), "user.tarnwick", value, sizeof value), isPossible ? 4 : -1);
}

TEST_F(TransferExtremesTest, hostsWithBusyboxUnderstandEachOther)
{
    TemporaryFolder tools;
    for (std::string const name : {"sh", "tar"})
        tools.link(name, "/bin/busybox");
    programs.ssh = script("ssh", "for word; do :; done; PATH=" + tools.path() + " exec sh -c \"$word\"");
    auto names = makeItems();
    names.push_back("-n it's \"\xFF\xC3\xA4\" \n");
    folder.file(names.back(), "odd");
    for (auto const &[from, to] :
         {std::pair(sourceHere(), targetThere()), {sourceThere(), targetHere()}, {sourceThere(), targetThere()}}) {
        emptyTarget();
        EXPECT_EQ(carry(names, from, to), "done");
        EXPECT_EQ(transfer->summary().complete, names);
        EXPECT_EQ(filesThatAreWhole(), 13);
    }
    EXPECT_THAT(carry({"none", "c"}, sourceThere(), targetHere()), HasSubstr("none: No such file or directory"));
}

class HostMeasureTest : public HostShellTest {
protected:
    Measure measure()
    {
        std::vector<std::string> const paths{folder.path()};
        return Measure::parse(ShellDialect::posix,
                              run(TransferCommands::measureThere(ShellDialect::posix, paths)).output);
    }
};

TEST_F(HostMeasureTest, aHostWithoutAToolHasNoTotalAndItsFilesAreCounted)
{
    folder.file("a", std::string(5000, 'x'));
    folder.file("b");
    useBusybox();
    EXPECT_GE(measure().bytes, 5000);
    for (auto const *const tool : {"du", "awk"}) {
        useBusyboxWithout(tool);
        EXPECT_EQ(measure().bytes, 0) << tool;
        EXPECT_EQ(measure().files, 2) << tool;
    }
}

/// A host on which nothing can be measured.
class UnmeasuredHost : public FakeCommandHost {
public:
    UnmeasuredHost(std::optional<CommandResult> said, std::string markWhenAsked)
        : answer(std::move(said)), mark(std::move(markWhenAsked))
    {
    }

    Task<CommandResult> runCommand(HostCommand /*command*/) override
    {
        std::ofstream const touched(mark);
        if (!answer)
            throw std::runtime_error("the connection was lost");
        co_return *answer;
    }

private:
    std::optional<CommandResult> const answer; ///< nothing: the question fails
    std::string const mark;
};

TEST_F(TransferExtremesTest, withoutAMeasureThereIsNoTotalAndTheCopyGoesOn)
{
    auto const names = makeItems();
    auto const mark = scripts.path("asked");
    programs.ssh = clientOf("until [ -e " + mark + " ]; do sleep 0.01; done; exec sh -c \"$1\"");
    using Answer = std::optional<CommandResult>;
    for (auto const &answer :
         {Answer(), Answer({.output = "sh: du: not found\n", .status = 127}), Answer({.output = "", .status = 1})}) {
        emptyTarget();
        std::filesystem::remove(mark);
        auto const there = TransferEndpoint::remote(std::make_shared<UnmeasuredHost>(answer, mark), folder.path());
        EXPECT_EQ(carry(names, there, targetHere(),
                        [](TransferProgress const &progress) {
                            EXPECT_FALSE(progress.total);
                            EXPECT_FALSE(progress.totalFiles);
                        }),
                  "done");
        expectTruth(names);
    }
}

/// Copies on a host over a line that is lost: nobody can say then how far cp has come.
class HostCopyTest : public TransferTest {
protected:
    HostCopyTest()
    {
        reachWithSlowCopies();
        provider = connected();
        shellOf(provider, CommandSession::work);
        for (auto const *const name : {"a", "b", "huge"})
            folder.file(name, name);
        setTime("b", 1000); // cp gives a file its time last
    }

    void loseTheLineWhen(std::function<bool()> condition, Names const &names = {"a", "b"})
    {
        auto const copying = start(names, sourceOn(provider), targetOn(provider));
        waitUntil(std::move(condition));
        line->cut();
        line->resume();
        EXPECT_THAT(outcomeOf(copying), HasSubstr("connection"));
        EXPECT_THAT(transfer->summary().complete, testing::IsEmpty());
        EXPECT_THAT(transfer->summary().partial, UnorderedElementsAreArray(names));
    }

    Provider provider;
};

TEST_F(HostCopyTest, aCopyThatIsUnderWayIsNotCalledDone)
{
    loseTheLineWhen([&] { return stoppedCopy() > 0; }, {"huge", "a"});
}

TEST_F(HostCopyTest, aCopyWhoseCommandIsLostIsNotCalledDone)
{
    line->stall(Ways::towardsHost);
    auto const before = line->traffic().towardsHost.received;
    constexpr int lessThanACommand = 300; // but more than a sign of life of ssh
    loseTheLineWhen([&] { return line->traffic().towardsHost.received > before + lessThanACommand; });
    EXPECT_TRUE(std::filesystem::is_empty(local.path()));
}

TEST_F(HostCopyTest, aCopyWhoseAnswerIsLostIsNotCalledDone)
{
    line->stall(Ways::towardsClient);
    struct stat status;
    loseTheLineWhen([&] { return ::stat(local.path("b").c_str(), &status) == 0 && status.st_mtim.tv_sec == 1000; });
    expectSame("a");
    expectSame("b");
}

} // namespace
} // namespace tw::test
