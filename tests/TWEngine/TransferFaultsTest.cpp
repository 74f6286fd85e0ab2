#include "tests/support/TransferFaultsTest.h"

#include "tests/hosts/TestMount.h"
#include "tests/support/TarArchive.h"

namespace tw::test {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

constexpr std::size_t cuts[] = {0, 1, 511, 512, 513, 5000, 10'240, 24'000, 60'000, 143'359, 140'000, 122'880};

TEST_F(TransferFaultsTest, theArchiveIsAsLongAsTheCutsAssume)
{
    auto const names = makeItems();
    std::int64_t bytes = 0;
    EXPECT_EQ(
        carry(names, sourceHere(), targetThere(), [&](TransferProgress const &progress) { bytes = progress.bytes; }),
        "done");
    EXPECT_EQ(bytes, static_cast<std::int64_t>(archiveBytes));
    EXPECT_EQ(transfer->summary().files, 12);
}

TEST_F(TransferFaultsTest, aDownloadThatIsCutSaysWhatHasArrived)
{
    auto const names = makeItems();
    for (auto const cut : cuts) {
        emptyTarget();
        cutAfter(cut);
        EXPECT_THAT(carry(names, sourceThere(), targetHere()), StartsWith("read from remote failed on 4 items: "));
        expectTruth(names);
    }
    // The local tar unpacked all that had come.
    EXPECT_THAT(transfer->summary().complete, ElementsAre("a", "b", "c"));
}

TEST_F(TransferFaultsTest, anUploadThatIsCutSaysWhatHasArrived)
{
    auto const names = makeItems();
    for (auto const cut : cuts) {
        emptyTarget();
        cutAfter(cut);
        EXPECT_THAT(carry(names, sourceHere(), targetThere()), StartsWith("write to remote failed on 4 items: "));
        expectTruth(names);
    }
    // What was on its way cannot be known here.
    EXPECT_THAT(transfer->summary().complete, IsEmpty());
}

TEST_F(TransferFaultsTest, aStreamBetweenTwoHostsThatIsCutSaysWhatHasArrived)
{
    auto const names = makeItems();
    for (auto const cut : cuts) {
        emptyTarget();
        cutAfter(cut);
        EXPECT_THAT(carry(names, sourceThere(), targetThere()), StartsWith("read from remote failed on 4 items: "));
        expectTruth(names);
    }
}

TEST_F(TransferFaultsTest, aStreamBetweenTwoHostsOfWhichOneIsLostSaysWhatHasArrived)
{
    auto const names = makeItems();
    for (auto const cut : cuts) {
        emptyTarget();
        cutAfter(cut, "exit 255", Lines::target);
        EXPECT_THAT(carry(names, sourceThere(), targetThere()), StartsWith("write to remote failed on 4 items: "));
        expectTruth(names);
        EXPECT_THAT(transfer->summary().complete, IsEmpty()) << "what was on its way cannot be known here";
        emptyTarget();
        cutAfter(cut, "exit 255", Lines::source);
        EXPECT_THAT(carry(names, sourceThere(), targetThere()), StartsWith("read from remote failed on 4 items: "));
        expectTruth(names);
    }
    // The host that is left has unpacked all that had come.
    EXPECT_THAT(transfer->summary().complete, ElementsAre("a", "b", "c"));
}

TEST_F(TransferFaultsTest, aKilledProgramIsNamedByItsEnd)
{
    auto const names = makeItems();
    cutAfter(50'000, "kill -9 $$");
    EXPECT_EQ(carry(names, sourceThere(), targetHere()), "read from remote failed on 4 items: ended by signal 9");
    expectTruth(names);
    emptyTarget();
    EXPECT_THAT(carry(names, sourceHere(), targetThere()), StartsWith("write to remote failed on 4 items: "));
    expectTruth(names);
}

TEST_F(TransferFaultsTest, aStreamWithoutItsEndIsAFailureWhateverTheProgramSays)
{
    auto const names = makeItems();
    programs.ssh = script("ssh", "for word; do :; done; sh -c \"$word\" | head -c 122880");
    programs.tar = tarOf("cat >/dev/null");
    EXPECT_EQ(carry(names, sourceThere(), targetHere()),
              "read from remote failed on 4 items: the archive ended too early");
}

TEST_F(TransferFaultsTest, aConsumerThatStopsReadingIsHeard)
{
    folder.file("large");
    std::filesystem::resize_file(folder.path("large"), 100'000'000);
    programs.ssh = script("ssh", "head -c 100000 >/dev/null; echo 'No space left on device' >&2; exit 1");
    EXPECT_EQ(carry({"large"}, sourceHere(), targetThere()),
              "write to remote failed on large: No space left on device");
    EXPECT_THAT(transfer->summary().partial, ElementsAre("large"));
}

TEST_F(TransferFaultsTest, aConsumerThatFailsWithoutAWordHasUnpackedNothingForCertain)
{
    auto const names = makeItems();
    programs.ssh = script("ssh", "cat >/dev/null; exit 1");
    EXPECT_EQ(carry(names, sourceHere(), targetThere()), "write to remote failed on 4 items: exit 1");
    expectTruth(names);
}

TEST_F(TransferFaultsTest, aTargetThatTakesNoMoreIsSaid)
{
    auto const names = makeItems();
    auto const little = std::string("trap '' XFSZ; ulimit -f 16"); // units of 512 bytes
    programs.tar = tarOf(whenUnpacking(little));
    EXPECT_THAT(carry(names, sourceThere(), targetHere()),
                StartsWith("write to this Mac failed on 4 items: tar: b: Wrote only "));
    expectTruth(names);
    EXPECT_THAT(transfer->summary().complete, ElementsAre("a", "c", "d"));
    EXPECT_THAT(transfer->summary().partial, ElementsAre("b"));
    EXPECT_EQ(transfer->summary().files, 11);

    emptyTarget();
    programs.cp = script("cp", little + "; exec cp \"$@\"");
    EXPECT_THAT(carry(names, sourceHere(), targetHere()),
                AllOf(StartsWith("copy failed on b: "), HasSubstr("File too large")));
    expectTruth(names);
}

TEST_F(TransferFaultsTest, afterAFailureNoFurtherNameIsBegun)
{
    Names const names{"a", "b", "c"};
    for (auto const &name : names)
        folder.file(name, name);
    // In place of cp: it copies the first name, complains, and would go on when it is not stopped.
    programs.cp = script("cp", "cp -a " + folder.path("a") + " " + local.path() +
                                   "; echo 'cp: no space' >&2; while :; do :; done");
    EXPECT_EQ(carry(names, sourceHere(), targetHere()), "copy failed on b: cp: no space");
    EXPECT_THAT(transfer->summary().complete, ElementsAre("a"));
    EXPECT_THAT(transfer->summary().untouched, ElementsAre("b", "c"));
}

TEST_F(TransferFaultsTest, aFileThatHasNotItsModeYetIsNotComplete)
{
    Names const names{"a", "b"};
    for (auto const &name : names)
        folder.file(name, name);
    // In place of cp, which gives a file its mode last.
    programs.cp = script("cp", "cp -a " + folder.path("a") + " " + local.path() + "; chmod 600 " + local.path("a") +
                                   "; echo 'cp: no space' >&2; while :; do :; done");
    EXPECT_EQ(carry(names, sourceHere(), targetHere()), "copy failed on a: cp: no space");
    EXPECT_THAT(transfer->summary().partial, ElementsAre("a"));
}

TEST_F(TransferFaultsTest, theFilesOfACopyThatIsUnderWayAreCountedWhereTheyArrive)
{
    for (auto const *const name : {"tree", "tree/in"})
        folder.folder(name);
    for (auto const *const name : {"tree/a", "tree/in/b", "tree/in/half", "tree/not yet"})
        folder.file(name, name);
    folder.link("tree/in/link", "b");
    local.folder("tree");
    local.file("tree/of the target", "x");
    // In place of cp: it stays in the middle of a file, before it gives the folders their times.
    programs.cp = script("cp", "cd " + folder.path("tree") + " && cp -a a " + local.path("tree") + " && mkdir " +
                                   local.path("tree/in") + " && cp -a in/b in/link " + local.path("tree/in") +
                                   " && printf half >" + local.path("tree/in/half") + "; exec sleep 1000");
    auto const cancelAtThree = [this](TransferProgress const &progress) {
        EXPECT_LE(progress.files, 3);
        if (progress.files == 3)
            transfer->cancel();
    };
    EXPECT_EQ(carry({"tree"}, sourceHere(), targetHere(), cancelAtThree), "cancelled");
    EXPECT_EQ(transfer->summary().files, 3);
    EXPECT_THAT(transfer->summary().partial, ElementsAre("tree"));
}

TEST_F(TransferFaultsTest, aCancelDoesNotWaitForADeadDisk)
{
    folder.file("first", "first");
    folder.folder("tree");
    auto const dead = local.path("tree/dead");
    local.folder("tree");
    local.folder("tree/dead");
    auto const mount = TestMount::silent(dead);
    // In place of cp: for the folder it asks the dead disk, and no signal ends it. The count of what has arrived comes
    // to that disk too.
    programs.cp = script("cp", "case \"$*\" in *tree*) : >'" + local.path("asks") + "'; exec cat '" + dead +
                                   "/file';; esac; exec cp \"$@\"");
    transfer = std::make_shared<TransferEngine>(engine, programs);
    auto const copying =
        loop.start(transfer->copy({"first", "tree"}, sourceHere(), targetHere(), [](TransferProgress const &) {}));
    waitUntil([this] { return std::filesystem::exists(local.path("asks")); });
    transfer->cancel();
    EXPECT_EQ(outcomeOf(copying), "cancelled");
    EXPECT_THAT(transfer->summary().complete, ElementsAre("first"));
    EXPECT_THAT(transfer->summary().partial, ElementsAre("tree"));
    EXPECT_FALSE(transfer->summary().areFilesKnown);
}

TEST_F(TransferFaultsTest, aFileOnADiskThatKeepsEvenSecondsOnlyIsComplete)
{
    Names const names{"a", "b"};
    for (auto const &name : names) {
        folder.file(name, name);
        setTime(name, 1001);
    }
    // In place of cp, for such a disk.
    programs.cp = script("cp", "cp -a " + folder.path("a") + " " + local.path() + "; touch -d @1000 " +
                                   local.path("a") + "; echo 'cp: no space' >&2; exec sleep 1000");
    EXPECT_EQ(carry(names, sourceHere(), targetHere()), "copy failed on b: cp: no space");
    EXPECT_THAT(transfer->summary().complete, ElementsAre("a"));
    EXPECT_EQ(transfer->summary().files, 1);
}

TEST_F(TransferFaultsTest, manyWarningsDoNotStopATransfer)
{
    auto const names = makeItems();
    auto const warnings = std::string("i=0; while [ $i -lt 4000 ]; do echo \"warning $i of a usual length\" >&2; "
                                      "i=$((i+1)); done");
    programs.tar = tarOf(warnings + "; exec tar \"$@\"");
    EXPECT_EQ(carry(names, sourceThere(), targetHere()), "done");
    expectTruth(names);
    emptyTarget();
    EXPECT_EQ(carry(names, sourceHere(), targetThere()), "done");

    programs.tar = tarOf(warnings + "; echo the last word >&2; exit 3");
    auto const failure = carry(names, sourceHere(), targetThere());
    EXPECT_THAT(failure, AllOf(StartsWith("read from this Mac failed on 4 items: warning 0 of"), HasSubstr("\n…\n"),
                               testing::EndsWith("the last word")));
    EXPECT_LT(failure.size(), 80'000U);
}

TEST_F(TransferFaultsTest, aNameThatIsGoneLeavesTheOthersWhole)
{
    auto names = makeItems();
    auto const all = names;
    names.insert(names.begin() + 1, "none");
    EXPECT_THAT(carry(names, sourceThere(), targetHere()), HasSubstr("tar: none: "));
    EXPECT_EQ(transfer->summary().complete, all);
    EXPECT_THAT(transfer->summary().untouched, ElementsAre("none"));
    EXPECT_EQ(transfer->summary().files, 12);
}

TEST_F(TransferFaultsTest, anOldFileStaysIfTheNewOneCannotBeRead)
{
    programs.cp = script("cp", "rights=-dac_override,-dac_read_search\n[ $(id -u) = 0 ] || exec /bin/cp \"$@\"\n"
                               "exec setpriv --bounding-set $rights --inh-caps $rights -- /bin/cp \"$@\"");
    folder.folder("tree");
    local.folder("tree");
    for (std::string const name : {"file", "tree/below"}) {
        ASSERT_EQ(::chmod(folder.file(name, "new").c_str(), 0), 0);
        local.file(name, "old");
    }
    folder.file("tree/other", "new");
    local.file("tree/other", "old");
    EXPECT_THAT(carry({"file"}, sourceHere(), targetHere()), HasSubstr("Permission denied"));
    EXPECT_THAT(carry({"tree"}, sourceHere(), targetHere()), HasSubstr("Permission denied"));
    EXPECT_EQ(contentOf(local.path("file")), "old");
    EXPECT_EQ(contentOf(local.path("tree/below")), "old");
    EXPECT_EQ(contentOf(local.path("tree/other")), "new");
}

TEST_F(TransferFaultsTest, aSourceThatShrinksMeanwhileIsNotComplete)
{
    folder.file("small", "x");
    auto const shrink = [path = folder.path("large")](TransferProgress const &progress) {
        if (progress.bytes > 0)
            std::filesystem::resize_file(path, 1000);
    };
    for (auto const &[from, to] : streams()) {
        std::filesystem::resize_file(folder.file("large"), moreThanPipesHold);
        EXPECT_THAT(carry({"large", "small"}, from, to, shrink), HasSubstr("shrank"));
        EXPECT_THAT(transfer->summary().partial, ElementsAre("large")) << transfer->summary().words;
        EXPECT_THAT(transfer->summary().complete, ElementsAre("small"));
    }
}

TEST_F(TransferFaultsTest, aSourceThatGrowsMeanwhileIsNotComplete)
{
    auto const grow = [path = folder.path("large")](TransferProgress const &progress) {
        if (progress.bytes > 0)
            std::ofstream(path, std::ios::app) << "more";
    };
    for (auto const &[from, to] : streams()) {
        std::filesystem::resize_file(folder.file("large"), moreThanPipesHold);
        EXPECT_THAT(carry({"large"}, from, to, grow), HasSubstr("changed"));
        EXPECT_THAT(transfer->summary().partial, ElementsAre("large"));
    }
}

TEST_F(TransferFaultsTest, filesThatVanishMeanwhileLeaveTheOthersWhole)
{
    folder.file("first", "x");
    folder.file("last", "x");
    folder.folder("tree");
    std::set<std::string> const all{"tree/1", "tree/2", "tree/3"};
    auto const removeOthers = [&](TransferProgress const &progress) {
        if (all.contains(progress.item))
            for (auto const &name : all)
                if (name != progress.item)
                    std::filesystem::remove(folder.path(name));
    };
    for (auto const &[from, to] : streams()) {
        emptyTarget();
        for (auto const &name : all)
            std::filesystem::resize_file(folder.file(name), moreThanPipesHold);
        EXPECT_THAT(carry({"first", "tree", "last"}, from, to, removeOthers), HasSubstr("File removed before we read"));
        EXPECT_THAT(transfer->summary().complete, ElementsAre("first", "last"));
        EXPECT_THAT(transfer->summary().partial, ElementsAre("tree"));
        EXPECT_EQ(transfer->summary().files, 2);
        EXPECT_THAT(namesIn(local.path("tree")), SizeIs(1)) << "the one that was on its way";
    }
}

TEST_F(TransferFaultsTest, aHostThatSendsWhatWasNotAskedForWritesNothingOfIt)
{
    auto const good =
        TarArchive::member({.name = "a/", .kind = '5'}) + TarArchive::member({.name = "a/good", .data = "good"});

    struct Attack {
        TarArchive::Member member;
        std::string answer;
    };

    Attack const attacks[] = {
        {{.name = ".bashrc", .data = "evil"}, "the host sent what was not asked for: .bashrc"},
        {{.name = "a/../evil", .data = "evil"}, "the host sent what was not asked for: a/../evil"},
        {{.name = local.path("evil"), .data = "evil"}, "the host sent what was not asked for: " + local.path("evil")},
        {{.name = "a/link", .kind = '1', .link = "/etc/passwd"},
         "the host sent a link to what was not asked for: /etc/passwd"},
    };
    for (auto const &attack : attacks) {
        emptyTarget();
        auto const archive = scripts.file("archive", good + TarArchive::member(attack.member) + TarArchive::end());
        programs.ssh = script("ssh", "cat " + archive);
        EXPECT_EQ(carry({"a"}, sourceThere(), targetHere()), "read from remote failed on a: " + attack.answer);
        EXPECT_FALSE(std::filesystem::exists(local.path("evil")));
        EXPECT_FALSE(std::filesystem::exists(local.path(".bashrc")));
        EXPECT_FALSE(std::filesystem::exists(local.path("a/link")));
        EXPECT_THAT(carry({"a"}, sourceThere(), targetThere()), HasSubstr(attack.answer));
    }
}

TEST_F(TransferFaultsTest, aLinkLeadsNoHostOutOfTheTarget)
{
    TemporaryFolder const outside;
    auto const top = TarArchive::member({.name = "a/", .kind = '5'});
    auto const evil = TarArchive::member({.name = "a/link/evil", .data = "evil"});
    auto const link = TarArchive::member({.name = "a/link", .kind = '2', .link = outside.path()});
    for (auto const &sent : {evil, top + evil, top + link + evil}) {
        emptyTarget();
        local.folder("a");
        local.link("a/link", outside.path()); // of an earlier download
        programs.ssh = script("ssh", "cat " + scripts.file("archive", sent + TarArchive::end()));
        EXPECT_EQ(carry({"a"}, sourceThere(), targetHere()),
                  "read from remote failed on a: the host sent what was not asked for: a/link/evil");
        EXPECT_THAT(namesIn(outside.path()), IsEmpty());
    }
}

TEST_F(TransferFaultsTest, treesOfAllTarsPass)
{
    Names const names{"@a", "b", "-c", "file"};
    folder.file("file", "x");
    for (std::string const name : {"@a", "b", "-c"}) {
        folder.folder(name);
        for (std::string const inner : {"/1", "/2", "/3", "/2/4", "/2/5", "/3/6", "/2/5/7"}) {
            folder.folder(name + inner);
            folder.file(name + inner + " file", inner);
            folder.file(name + inner + "/file", inner);
        }
        folder.folder(name + "/empty");
        std::filesystem::create_hard_link(folder.path(name + "/2/file"), folder.path(name + "/3/hard"));
        folder.link(name + "/0", "2");
    }
    for (std::string const tar : {"/usr/bin/tar", "bsdtar", "busybox tar"}) {
        SCOPED_TRACE(tar);
        emptyTarget();
        programs.ssh = script("ssh", "for word; do :; done; tar() { " + tar + " \"$@\"; }; eval \"$word\"");
        EXPECT_EQ(carry(names, sourceThere(), targetHere()), "done");
        EXPECT_EQ(filesThatAreWhole(), 46);
        for (std::string const name : {"@a", "b", "-c"})
            EXPECT_TRUE(std::filesystem::is_directory(local.path(name + "/empty")));
    }
}

TEST_F(TransferFaultsTest, aGreetingOfTheLoginShellIsNotUnpacked)
{
    makeItems();
    programs.ssh = script("ssh", "for word; do :; done; echo 'Welcome!'; exec sh -c \"$word\"");
    EXPECT_EQ(carry({"a"}, sourceThere(), targetHere()),
              "read from remote failed on a: the stream is not a tar archive");
    EXPECT_THAT(namesIn(local.path()), IsEmpty());
}

TEST_F(TransferFaultsTest, aProgramThatIsMissingIsAnErrorOfThePlatform)
{
    folder.file("a", "a");
    programs.tar = "/none/tar";
    programs.cp = "/none/cp";
    EXPECT_NE(carry({"a"}, sourceHere(), targetThere()), "done");
    EXPECT_NE(carry({"a"}, sourceHere(), targetHere()), "done");
    EXPECT_THAT(transfer->summary().untouched, ElementsAre("a"));
    EXPECT_THAT(namesIn(local.path()), IsEmpty());
}

} // namespace
} // namespace tw::test
