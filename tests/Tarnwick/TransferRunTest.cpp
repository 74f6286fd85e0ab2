// Moves of real files on which something goes wrong on the way: what has not arrived whole stays where it was.

#include "Tarnwick/Operations/TransferRun.h"

#include "TWEngine/Browsing/LocalProvider.h"
#include "Tarnwick/Operations/TransferWords.h"
#include "tests/hosts/ProcessTree.h"
#include "tests/support/HeldFile.h"
#include "tests/support/SmallDisk.h"
#include "tests/support/TransferTest.h"

#include <thread>

namespace tw::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class TransferRunTest : public TransferTest {
protected:
    /// A folder of a host, or without a name of this machine.
    Operands place(std::string const &name, std::string path)
    {
        std::shared_ptr<FileSystemProvider> provider = std::make_shared<LocalProvider>(engine);
        if (!name.empty()) {
            auto const there = makeProvider(name);
            loop.run(there->connect());
            provider = there;
        }
        auto browser = std::make_shared<Browser>(
            std::move(provider),
            Browser::Collaborators{.strand = Strand(loop.context()), .clock = engine.clock(), .store = nullptr},
            Browser::Config{});
        return {.browser = std::move(browser), .connection = {}, .path = std::move(path), .names = {}};
    }

    std::shared_ptr<TransferRun> makeRun(TransferJob job, Transfer::Reporter onProgress)
    {
        return run = std::make_shared<TransferRun>(std::move(job), makeTransfer(), std::move(onProgress));
    }

    static TransferJob moveOf(Names const &names, Operands source, Operands target)
    {
        TransferJob job{.kind = TransferKind::move, .source = std::move(source), .target = std::move(target)};
        job.source.names = names;
        job.plan.free = names;
        return job;
    }

    static std::string failureOf(TransferEnd const &end)
    {
        return end.failure ? TransferWords::failed(end).english() : "it succeeded";
    }

    std::shared_ptr<TransferRun> run; ///< the last one
};

/// The parameter is the way: "up" to a host, "down" from one, "between" two of them, "here" on this machine, "across"
/// from one file system of this machine to another, or "there", the same on a host.
class MoveOfRealFilesTest : public TransferRunTest, public testing::WithParamInterface<char const *> {
protected:
    MoveOfRealFilesTest()
    {
        folder.folder("tree");
        for (auto const &name : {"first", "last"})
            folder.file(name, name);
        for (auto const &name : large)
            std::filesystem::resize_file(folder.file(name), moreThanPipesHold);
    }

    static bool isThere() { return std::string_view(GetParam()) == "there"; }

    static bool isAcross() { return std::string_view(GetParam()) == "across" || isThere(); }

    static bool isByCp() { return std::string_view(GetParam()) == "here" || isAcross(); }

    TransferJob makeJob()
    {
        std::string_view const way = GetParam();
        client.add("other", host->address());
        auto source = place(way == "down" || way == "between" || isThere() ? "host" : "", folder.path());
        auto target = place(way == "up" || isThere() ? "host" : way == "between" ? "other" : "", local.path());
        auto job = moveOf({"first", "tree", "last"}, std::move(source), std::move(target));
        job.isMoveBetweenFileSystems = isAcross();
        return job;
    }

    /// Acts once when the first of the large files is on its way, with its name.
    TransferEnd moveAndMeanwhile(std::function<void(std::string const &)> act)
    {
        return performAndMeanwhile(makeJob(), std::move(act));
    }

    TransferEnd performAndMeanwhile(TransferJob job, std::function<void(std::string const &)> act)
    {
        std::map<std::string, HeldFile> held; // tar would not wait for them
        for (auto const &name : large)
            if (isByCp())
                held.try_emplace(name, folder.path(name));
        std::once_flag hasActed;
        auto const actOnce = [&](std::string const &item) {
            if (large.contains(item))
                std::call_once(hasActed, act, item);
        };
        auto const moving = loop.start(makeRun(std::move(job), [actOnce](TransferProgress const &progress) {
                                           actOnce(progress.item);
                                       })->perform());
        auto const isWanted = [](auto const &each) { return each.second.isWanted(); };
        waitUntil([&] { return held.empty() || std::ranges::any_of(held, isWanted); });
        if (isByCp())
            actOnce(std::ranges::find_if(held, isWanted)->first);
        if (isHeldToTheEnd)
            finish(moving);
        held.clear();
        finish(moving);
        return moving.value();
    }

    std::set<std::string> large{"tree/1", "tree/2", "tree/3"};
    bool isHeldToTheEnd = false; ///< what cp waits for is not released until the run has ended
};

TEST_P(MoveOfRealFilesTest, ifFilesOfAFolderVanishOnTheWayNothingIsDeletedAndTheFolderIsNamed)
{
    reach();
    auto const end = moveAndMeanwhile([&](std::string const &onItsWay) {
        for (auto const &name : large)
            if (name != onItsWay)
                std::filesystem::remove(folder.path(name));
    });
    EXPECT_THAT(end.gone, IsEmpty());
    EXPECT_EQ(namesIn(folder.path()), (std::set<std::string>{"first", "last", "tree"}));
    if (isAcross()) {
        EXPECT_THAT(failureOf(end), HasSubstr("No such file or directory"));
        EXPECT_THAT(failureOf(end), HasSubstr("Complete (1 item):\nfirst"));
        EXPECT_THAT(failureOf(end), HasSubstr("Untouched (2 items):\ntree\nlast"));
        EXPECT_THAT(namesIn(local.path()), ElementsAre("first"));
    } else {
        EXPECT_THAT(failureOf(end), HasSubstr("File removed before we read it"));
        EXPECT_THAT(failureOf(end), HasSubstr("Complete (2 items):\nfirst\nlast"));
        EXPECT_THAT(failureOf(end), HasSubstr("Perhaps there in part (1 item):\ntree"));
        expectSame("last");
    }
    expectSame("first");
}

INSTANTIATE_TEST_SUITE_P(Ways, MoveOfRealFilesTest, testing::Values("up", "down", "between", "across"));

class MoveWhoseCopyIsKilledTest : public MoveOfRealFilesTest {};

TEST_P(MoveWhoseCopyIsKilledTest, keepsItsSource)
{
    reach();
    auto const end = moveAndMeanwhile([&](std::string const & /*onItsWay*/) {
        for (auto const &process : descendantsOf(::getpid()))
            if (process.name == "cp")
                ::kill(process.id, SIGKILL);
    });
    EXPECT_NE(failureOf(end), "it succeeded");
    EXPECT_THAT(failureOf(end), HasSubstr("Complete (1 item):\nfirst"));
    EXPECT_THAT(failureOf(end), HasSubstr("Untouched (2 items):\ntree\nlast"));
    EXPECT_THAT(end.gone, IsEmpty());
    EXPECT_EQ(namesIn(folder.path()), (std::set<std::string>{"first", "last", "tree"}));
    EXPECT_EQ(namesIn(folder.path("tree")).size(), 3U);
    EXPECT_THAT(namesIn(local.path()), ElementsAre("first")) << "nothing of the staging folder";
}

INSTANTIATE_TEST_SUITE_P(Ways, MoveWhoseCopyIsKilledTest, testing::Values("across", "there"));

class MoveOfGrowingFilesTest : public MoveOfRealFilesTest {};

TEST_P(MoveOfGrowingFilesTest, aFileThatGrowsBehindItsCopyStaysAndIsNamed)
{
    reach();
    auto const end = moveAndMeanwhile(
        [&](std::string const & /*onItsWay*/) { std::ofstream(folder.path("first"), std::ios::app) << " and more"; });
    EXPECT_EQ(failureOf(end), "it succeeded");
    EXPECT_THAT(end.gone, UnorderedElementsAre("tree", "last"));
    EXPECT_THAT(TransferWords::kept(end).english(),
                HasSubstr("Changed there during the copy, so the target may have an older state (1 item):\nfirst"));
    EXPECT_THAT(namesIn(folder.path()), ElementsAre("first"));
    EXPECT_EQ(contentOf(folder.path("first")), "first and more");
    EXPECT_EQ(namesIn(local.path("tree")).size(), 3U);
}

// Not "up": what is moved up goes to the Trash, and a test must not put anything into the user's Trash.
INSTANTIATE_TEST_SUITE_P(Ways, MoveOfGrowingFilesTest, testing::Values("down", "between", "across", "there"));

class MoveOfLinksTest : public MoveOfRealFilesTest {
protected:
    void linkFirstToTree()
    {
        std::filesystem::remove(folder.path("first"));
        folder.link("first", "tree");
    }

    /// Its path, also in a staging folder; empty if it has not been unpacked yet.
    std::string copyOfFirst() const
    {
        for (auto const &entry : std::filesystem::recursive_directory_iterator(local.path()))
            if (entry.path().filename() == "first")
                return entry.path().string();
        return {};
    }
};

TEST_P(MoveOfLinksTest, aLinkToAFolderThatLeadsElsewhereBehindItsCopyStaysAndIsNamed)
{
    reach();
    linkFirstToTree();
    auto const end = moveAndMeanwhile([&](std::string const & /*onItsWay*/) {
        std::filesystem::remove(folder.path("first"));
        folder.link("first", "last");
    });
    EXPECT_EQ(failureOf(end), "it succeeded");
    EXPECT_THAT(end.gone, UnorderedElementsAre("tree", "last"));
    EXPECT_THAT(end.kept.changed, ElementsAre("first"));
    EXPECT_EQ(std::filesystem::read_symlink(folder.path("first")), "last");
    EXPECT_EQ(std::filesystem::read_symlink(local.path("first")), "tree");
}

TEST_P(MoveOfLinksTest, aLinkToAFolderWhoseCopyLeadsElsewhereStaysAndIsNamed)
{
    reach();
    linkFirstToTree();
    auto const end = moveAndMeanwhile([&](std::string const & /*onItsWay*/) {
        auto copy = copyOfFirst();
        for (; copy.empty(); copy = copyOfFirst())
            std::this_thread::yield();
        std::filesystem::remove(copy);
        std::filesystem::create_symlink("last", copy);
    });
    EXPECT_EQ(failureOf(end), "it succeeded");
    EXPECT_THAT(end.gone, UnorderedElementsAre("tree", "last"));
    EXPECT_THAT(end.kept.unequal, ElementsAre("first"));
    EXPECT_EQ(std::filesystem::read_symlink(folder.path("first")), "tree");
}

INSTANTIATE_TEST_SUITE_P(Ways, MoveOfLinksTest, testing::Values("down", "across"));

class MoveToAFullDiskTest : public MoveOfRealFilesTest {};

TEST_P(MoveToAFullDiskTest, keepsItsSource)
{
    TemporaryFolder const scratch;
    reach({.loginScript = "#!/bin/sh\nset -- \"$SSH_ORIGINAL_COMMAND\"\ncase $1 in *-xpf*) " +
                          onSmallDisk("sh -c", local.path(), scratch.path()) + ";; esac\nexec sh -c \"$1\"\n"});
    auto const end = moveAndMeanwhile([](std::string const & /*onItsWay*/) {});
    EXPECT_THAT(failureOf(end), HasSubstr("No space left on device"));
    EXPECT_THAT(failureOf(end), HasSubstr("Complete (1 item):\nfirst"));
    EXPECT_THAT(end.gone, IsEmpty());
    EXPECT_EQ(namesIn(folder.path()), (std::set<std::string>{"first", "last", "tree"}));
    EXPECT_EQ(namesIn(folder.path("tree")).size(), 3U);
}

INSTANTIATE_TEST_SUITE_P(Ways, MoveToAFullDiskTest, testing::Values("up", "between"));

class CopyOverFilesTest : public MoveOfRealFilesTest {
protected:
    CopyOverFilesTest()
    {
        large = {"huge"};
        std::filesystem::resize_file(folder.file("huge"), moreThanPipesHold);
        for (auto const &name : names)
            local.file(name, "old");
    }

    TransferJob makeCopy()
    {
        auto job = makeJob();
        job.kind = TransferKind::copy;
        job.isMoveBetweenFileSystems = false;
        job.source.names = names;
        job.plan = {};
        for (auto const &name : names) {
            auto const size = static_cast<std::int64_t>(std::filesystem::file_size(folder.path(name)));
            job.plan.replace.push_back({.source = {.name = name, .kind = EntryKind::file, .size = size},
                                        .target = {.name = name, .kind = EntryKind::file, .size = 3}});
        }
        return job;
    }

    Names const names{"first", "huge", "last"};
};

TEST_P(CopyOverFilesTest, aCancelInTheMiddleOfOneKeepsTheOldOneAndLeavesNothingElse)
{
    reach();
    isHeldToTheEnd = true;
    auto const end = performAndMeanwhile(makeCopy(), [this](std::string const & /*onItsWay*/) { run->cancel(); });
    EXPECT_EQ(failureOf(end).substr(0, 9), "cancelled");
    EXPECT_EQ(contentOf(local.path("huge")), "old");
    EXPECT_EQ(contentOf(local.path("last")), "old");
    EXPECT_THAT(contentOf(local.path("first")), testing::AnyOf("first", "old"));
    EXPECT_EQ(end.summary.complete == Names{"first"}, contentOf(local.path("first")) == "first");
    EXPECT_THAT(namesIn(local.path()), ElementsAre("first", "huge", "last")) << "nothing of the staging folder";
}

TEST_P(CopyOverFilesTest, allAreReplacedInTheEnd)
{
    reach();
    auto const end = loop.run(makeRun(makeCopy(), [](TransferProgress const &) {})->perform());
    EXPECT_EQ(failureOf(end), "it succeeded");
    EXPECT_EQ(end.summary.complete, names);
    for (auto const &name : names)
        expectSame(name);
    EXPECT_THAT(namesIn(local.path()), ElementsAre("first", "huge", "last"));
}

INSTANTIATE_TEST_SUITE_P(Ways, CopyOverFilesTest, testing::Values("up", "down", "between", "here", "there"));

TEST_F(TransferRunTest, whatAHostHasMovedInPartIsNotCalledUntouched)
{
    TemporaryFolder const tools;
    TemporaryFolder const scratch;
    auto const mv = tools.file("mv", "#!/bin/sh\n" + onSmallDisk("/bin/mv", local.path(), scratch.path()) + "\n");
    ASSERT_EQ(::chmod(mv.c_str(), 0755), 0);
    reach({.loginScript = "#!/bin/sh\nPATH=" + tools.path() + ":$PATH exec /bin/sh -c \"$SSH_ORIGINAL_COMMAND\"\n"});
    auto const content = std::string(100'000, 'x');
    folder.file("large", content);
    auto const source = place("host", folder.path());
    auto target = source;
    target.path = local.path();
    auto const job = moveOf({"large"}, source, target);
    auto over = job;
    over.plan = {.replace = {{.source = {.name = "large"}, .target = {.name = "large", .size = 3, .mtime = 1000}}}};
    for (auto const &each : {job, over}) {
        auto const end = loop.run(makeRun(each, [](TransferProgress const &) {})->perform());
        EXPECT_THAT(failureOf(end), HasSubstr("No space left on device"));
        EXPECT_THAT(failureOf(end), HasSubstr("Perhaps there in part (1 item):\nlarge"));
        EXPECT_TRUE(std::filesystem::exists(local.path("large")));
        EXPECT_EQ(contentOf(folder.path("large")), content);
    }
}

} // namespace
} // namespace tw::test
