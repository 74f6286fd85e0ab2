#include "TWEngine/Transfer/TransferEngine.h"

#include "TWEngine/Transfer/TransferLog.h"
#include "tests/hosts/ProcessTree.h"
#include "tests/support/HeldFile.h"
#include "tests/support/TransferTest.h"

namespace tw::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Route = TransferEngine::Route;

/// Copies between folders of this machine.
class LocalTransferTest : public TransferTest {};

/// Copies from and to a host, which is this machine.
class TransferEngineTest : public TransferTest {};

TEST_F(LocalTransferTest, noNamesAreNoWork)
{
    EXPECT_EQ(copy({}, sourceHere(), targetHere()), "done");
    EXPECT_THAT(reports(), IsEmpty());
}

TEST_F(LocalTransferTest, aTreeArrivesAsItIs)
{
    makeTree("tree");
    EXPECT_EQ(copy({"tree"}, sourceHere(), targetHere()), "done");
    expectSame("tree");
    auto const last = reports().back();
    EXPECT_EQ(last.item, "tree");
    EXPECT_EQ(last.bytes, last.total);
    EXPECT_EQ(last.files, 7);
    EXPECT_EQ(last.totalFiles, 7);
    EXPECT_EQ(reports().front().bytes, 0);
    EXPECT_THAT(transfer->summary().complete, ElementsAre("tree"));
    EXPECT_EQ(transfer->summary().files, 7);
}

TEST_F(LocalTransferTest, aFolderIsMergedWithTheOneThatIsThere)
{
    folder.folder("tree");
    folder.file("tree/new", "new");
    folder.file("tree/both", "new");
    local.folder("tree");
    local.file("tree/both", "old");
    local.file("tree/old", "old");
    EXPECT_EQ(copy({"tree"}, sourceHere(), targetHere()), "done");
    EXPECT_EQ(namesIn(local.path("tree")), (std::set<std::string>{"both", "new", "old"}));
    EXPECT_EQ(contentOf(local.path("tree/both")), "new");
}

TEST_F(LocalTransferTest, whatATargetLeadsToStaysAsItIs)
{
    local.file("elsewhere", "kept");
    folder.folder("tree");
    for (auto const *const name : {"tree/link", "link", "broken", "fifo"})
        folder.file(name, "new");
    local.folder("tree");
    local.link("tree/link", "../elsewhere");
    local.link("link", "elsewhere");
    local.link("broken", "none");
    ASSERT_EQ(::mkfifo(local.path("fifo").c_str(), 0600), 0);
    Names const names{"tree", "link", "broken", "fifo"};
    EXPECT_EQ(copy(names, sourceHere(), targetHere()), "done");
    for (auto const &name : names)
        expectSame(name);
    EXPECT_EQ(contentOf(local.path("elsewhere")), "kept");
}

TEST_F(LocalTransferTest, namesAreTakenAsTheyAre)
{
    Names const names{"-rf", "a b", "it's", "\xFF\n", "--target-directory=x", std::string(255, 'n'), "@a"};
    for (auto const &name : names)
        folder.file(name, name);
    EXPECT_EQ(copy(names, sourceHere(), targetHere()), "done");
    for (auto const &name : names)
        expectSame(name);
    EXPECT_EQ(transfer->summary().complete, names);
    EXPECT_EQ(reports().back().files, static_cast<std::int64_t>(names.size()));
}

TEST_F(LocalTransferTest, theFirstNameThatFailsEndsTheCopy)
{
    folder.file("a", "a");
    folder.file("b", "b");
    folder.folder("d");
    local.folder("b"); // a file cannot take the place of a folder
    EXPECT_THAT(copy({"a", "b", "d"}, sourceHere(), targetHere()), HasSubstr("copy failed on b: "));
    expectSame("a");
    auto const summary = transfer->summary();
    EXPECT_THAT(summary.complete, ElementsAre("a"));
    EXPECT_THAT(summary.partial, ElementsAre("b"));
    EXPECT_THAT(summary.untouched, ElementsAre("d"));
    EXPECT_EQ(summary.files, 1);
    EXPECT_THAT(summary.words, HasSubstr("cannot overwrite directory"));
}

TEST_F(LocalTransferTest, manyFoldersGoTogetherAndTheOneThatFailsIsKnown)
{
    Names names;
    for (int index = 0; index < 100; ++index) {
        names.push_back("folder " + std::to_string(index));
        folder.folder(names.back());
        folder.file(names.back() + "/file", names.back());
    }
    EXPECT_EQ(copy(names, sourceHere(), targetHere()), "done");
    for (auto const &name : names)
        expectSame(name);
    EXPECT_EQ(transfer->summary().complete, names);
    EXPECT_EQ(transfer->summary().files, 100);

    // What is there by now looks like the copy, but is that of another time.
    std::filesystem::remove(local.path("folder 50/file"));
    local.folder("folder 50/file");
    EXPECT_THAT(copy(names, sourceHere(), targetHere()), HasSubstr("copy failed on folder 50: "));
    auto const summary = transfer->summary();
    EXPECT_THAT(summary.complete, testing::IsSupersetOf(Names(names.begin(), names.begin() + 50)));
    EXPECT_THAT(summary.partial, testing::Contains("folder 50"));
    EXPECT_THAT(summary.words, HasSubstr("cannot overwrite directory"));
}

TEST_F(LocalTransferTest, aNameThatIsGoneIsSaid)
{
    EXPECT_THAT(copy({"none"}, sourceHere(), targetHere()), HasSubstr("No such file or directory"));
    EXPECT_THAT(transfer->summary().untouched, ElementsAre("none"));
}

TEST_F(LocalTransferTest, aFolderThatIsGoneIsSaid)
{
    auto const gone = TransferEndpoint::local(folder.path("gone"));
    EXPECT_EQ(copy({"a"}, gone, targetHere()), "copy failed on " + gone.path() + ": No such file or directory");
    EXPECT_THAT(transfer->summary().untouched, ElementsAre("a"));
}

/// Three files of a folder, at the first of which cp stands still.
class StoppedCopyTest : public LocalTransferTest {
protected:
    StoppedCopyTest()
    {
        folder.file("a", "a");
        folder.folder("tree");
        for (auto const *const name : {"tree/1", "tree/2", "tree/3"})
            held.try_emplace(name, folder.file(name, name));
        folder.file("z", "z");
        copying.emplace(start({"a", "tree", "z"}, sourceHere(), targetHere()));
        waitUntil([this] { return std::ranges::any_of(held, isWanted); });
    }

    void expectThatTheTreeHasFailed()
    {
        auto const summary = transfer->summary();
        EXPECT_THAT(summary.complete, ElementsAre("a"));
        EXPECT_THAT(summary.partial, ElementsAre("tree"));
        EXPECT_THAT(summary.untouched, ElementsAre("z"));
    }

    static bool isWanted(std::pair<std::string const, HeldFile> const &each) { return each.second.isWanted(); }

    std::map<std::string, HeldFile> held;
    std::optional<Started<void>> copying;
};

TEST_F(StoppedCopyTest, aProgramThatIsKilledIsNamedByItsEnd)
{
    for (auto const &process : descendantsOf(::getpid()))
        if (process.name == "cp")
            ::kill(process.id, SIGKILL);
    EXPECT_EQ(outcomeOf(*copying), "copy failed on tree: ended by signal 9");
    expectThatTheTreeHasFailed();
    EXPECT_EQ(transfer->summary().files, 1);
}

TEST_F(StoppedCopyTest, filesThatVanishMeanwhileLeaveTheOthersWhole)
{
    for (auto const &each : held)
        if (!isWanted(each))
            std::filesystem::remove(folder.path(each.first));
    held.clear();
    EXPECT_THAT(outcomeOf(*copying), HasSubstr("No such file or directory"));
    expectThatTheTreeHasFailed();
    EXPECT_EQ(transfer->summary().files, 2);
    EXPECT_EQ(namesIn(local.path("tree")), namesIn(folder.path("tree")));
}

TEST_F(LocalTransferTest, aCancelEndsIt)
{
    for (auto const *const name : {"a", "stuck", "c"})
        folder.file(name, name);
    // In place of cp: it stays at the second one.
    auto programs = tools();
    programs.cp =
        local.file("cp", "#!/bin/sh\ncp -a a " + local.path() + " && : >" + local.path("stuck") + "; exec sleep 1000");
    ASSERT_EQ(::chmod(programs.cp.c_str(), 0755), 0);
    transfer = std::make_shared<TransferEngine>(engine, programs);
    auto const copying =
        loop.start(transfer->copy({"a", "stuck", "c"}, sourceHere(), targetHere(), [](TransferProgress const &) {}));
    waitUntil([this] { return std::filesystem::exists(local.path("stuck")); });
    transfer->cancel();
    EXPECT_EQ(outcomeOf(copying), "cancelled");
    auto const summary = transfer->summary();
    EXPECT_THAT(summary.complete, ElementsAre("a"));
    EXPECT_THAT(summary.partial, ElementsAre("stuck"));
    EXPECT_THAT(summary.untouched, ElementsAre("c"));
    EXPECT_EQ(summary.files, 1);
}

TEST_F(LocalTransferTest, aLargeFileIsSeenToGrow)
{
    folder.folder("tree");
    auto const path = folder.file("tree/large", std::string(1'000'000, 'x'));
    // In place of cp: it stays at the middle of the file until that was reported.
    auto programs = tools();
    programs.cp = local.file("cp", "#!/bin/sh\n"
                                   "exec 3<'" +
                                       path + "' 4>'" + local.path("tree-large") +
                                       "'\n"
                                       "head -c 500000 <&3 >&4\n"
                                       "while ! [ -e '" +
                                       local.path("seen") + "' ]; do sleep 0.01; done\n");
    ASSERT_EQ(::chmod(programs.cp.c_str(), 0755), 0);
    transfer = std::make_shared<TransferEngine>(engine, programs);
    auto const copying =
        loop.start(transfer->copy({"tree"}, sourceHere(), targetHere(), [this](TransferProgress const &progress) {
            if (progress.item == "tree/large" && progress.bytes >= 500'000 && progress.bytes < 1'000'000)
                local.file("seen");
        }));
    EXPECT_EQ(outcomeOf(copying), "done");
}

TEST_F(LocalTransferTest, aCancelBeforeTheBeginningIsForgotten)
{
    folder.file("a", "a");
    transfer = makeTransfer();
    transfer->cancel();
    loop.run(transfer->copy({"a"}, sourceHere(), targetHere(), [](TransferProgress const &) {}));
    expectSame("a");
}

TEST_F(LocalTransferTest, aCancelRightBehindTheBeginningCounts)
{
    folder.file("a", "a");
    auto const copying = start({"a"}, sourceHere(), targetHere());
    transfer->cancel();
    EXPECT_EQ(outcomeOf(copying), "cancelled");
}

TEST_F(TransferEngineTest, theRouteFollowsFromTheEndpoints)
{
    auto const one = makeProvider("one");
    auto const sameOne = makeProvider("one");
    auto const other = makeProvider("other");
    EXPECT_EQ(TransferEngine::routeOf(sourceHere(), targetHere()), Route::onThisMachine);
    EXPECT_EQ(TransferEngine::routeOf(sourceOn(one), targetOn(sameOne)), Route::withinOneHost);
    EXPECT_EQ(TransferEngine::routeOf(sourceOn(one), targetOn(other)), Route::tarPipe);
    EXPECT_EQ(TransferEngine::routeOf(sourceHere(), targetOn(one)), Route::tarPipe);
    EXPECT_EQ(TransferEngine::routeOf(sourceOn(one), targetHere()), Route::tarPipe);
}

TEST_F(TransferEngineTest, aTreeGoesUpAndDown)
{
    reach();
    auto const provider = connected();
    makeTree("tree");
    EXPECT_EQ(copy({"tree"}, sourceHere(), targetOn(provider)), "done");
    expectSame("tree");
    EXPECT_EQ(reports().front().item, "tree");
    EXPECT_EQ(reports().back().files, 7);
    EXPECT_THAT(transfer->summary().complete, ElementsAre("tree"));
    std::filesystem::remove_all(local.path("tree"));
    EXPECT_EQ(copy({"tree"}, sourceOn(provider), targetHere()), "done");
    expectSame("tree");
    EXPECT_EQ(transfer->summary().files, 7);
}

TEST_F(TransferEngineTest, aTreeGoesFromHostToHost)
{
    reach();
    client.add("other", host->address());
    auto const provider = connected();
    auto const other = makeProvider("other");
    loop.run(other->connect());
    makeTree("tree");
    EXPECT_EQ(copy({"tree"}, sourceOn(provider), targetOn(other)), "done");
    expectSame("tree");
}

TEST_F(TransferEngineTest, aTreeIsCopiedOnItsHost)
{
    reach();
    auto const provider = connected();
    makeTree("tree");
    folder.file("-n\n", "odd");
    EXPECT_EQ(copy({"tree", "-n\n"}, sourceOn(provider), targetOn(provider)), "done");
    expectSame("tree");
    expectSame("-n\n");
    ASSERT_EQ(reports().size(), 1U);
    EXPECT_EQ(reports().front().item, "2 item(s) — server-side copy");
    EXPECT_FALSE(reports().front().total);
    waitUntil([&] { return std::filesystem::is_empty(host->temporary()); });
}

TEST_F(TransferEngineTest, aCopyOnAHostFailsInTheWordsOfTheHost)
{
    reach();
    auto const provider = connected();
    folder.folder("tree");
    for (std::string const name : {"a", "tree/b", "tree/c"})
        folder.file(name, name);
    EXPECT_THAT(copy({"none", "a", "tree"}, sourceOn(provider), targetOn(provider)),
                HasSubstr("copy failed on " + folder.path("none") + ": cp: "));
    auto const summary = transfer->summary();
    EXPECT_THAT(summary.complete, ElementsAre("a", "tree"));
    EXPECT_THAT(summary.untouched, ElementsAre("none"));
    EXPECT_TRUE(summary.areFilesKnown);
    EXPECT_EQ(summary.files, 3);
    EXPECT_EQ(summary.totalFiles, 3);
}

TEST_F(TransferEngineTest, aCancelledCopyOnAHostEndsThere)
{
    reachWithSlowCopies();
    auto const provider = connected();
    auto const shell = shellOf(provider, CommandSession::work);
    for (std::string const name : {"a", "huge", "z"})
        folder.file(name, name);
    auto const copying = start({"a", "huge", "z"}, sourceOn(provider), targetOn(provider));
    waitUntil([&] { return stoppedCopy() > 0; });
    transfer->cancel();
    EXPECT_EQ(outcomeOf(copying), "cancelled");
    EXPECT_NE(::kill(stoppedCopy(), 0), 0) << "it has ended, so what remains can be deleted";
    EXPECT_EQ(shellOf(provider, CommandSession::work), shell);
    waitUntil([&] { return std::filesystem::is_empty(host->temporary()); });
    auto const summary = transfer->summary();
    EXPECT_THAT(summary.complete, ElementsAre("a"));
    EXPECT_THAT(summary.partial, ElementsAre("huge"));
    EXPECT_THAT(summary.untouched, ElementsAre("z"));
    EXPECT_TRUE(summary.areFilesKnown);
    EXPECT_EQ(summary.files, 1);
    EXPECT_EQ(summary.totalFiles, 3);
}

TEST_F(TransferEngineTest, ifAHostCannotSayWhatHasArrivedThatIsNotKnown)
{
    reachWithSlowCopies();
    auto const provider = connected();
    folder.folder("in");
    folder.file("in/huge", "x");
    auto const copying = start({"huge"}, TransferEndpoint::remote(provider, folder.path("in")), targetOn(provider));
    waitUntil([&] { return stoppedCopy() > 0; });
    std::filesystem::remove_all(folder.path("in"));
    transfer->cancel();
    EXPECT_EQ(outcomeOf(copying), "cancelled");
    EXPECT_FALSE(transfer->summary().areFilesKnown);
    EXPECT_THAT(transfer->summary().partial, ElementsAre("huge"));
}

TEST_F(TransferEngineTest, namesCrossAsTheyAre)
{
    reach();
    client.add("other", host->address());
    auto const provider = connected();
    auto const other = makeProvider("other");
    loop.run(other->connect());
    std::string everyByte = "-";
    for (int byte = 1; byte < 256; ++byte)
        if (byte != '/')
            everyByte += static_cast<char>(byte);
    Names const names{"-rf",     "a b",
                      "it's",    "\xC3\xA4",
                      "ends\n",  "\xFF\n\n",
                      "$(true)", "*",
                      "@a",      everyByte,
                      "...",     "\\x41",
                      "a\\nb",   "\\101",
                      "-\n",     std::string(254, 'n') + "\n",
                      "\n-rf",   "--\xF0\x9F\x98\x80"};
    for (auto const &name : names)
        folder.file(name, name);
    for (auto const &[from, to] : {std::pair(sourceHere(), targetOn(provider)),
                                   {sourceOn(provider), targetHere()},
                                   {sourceOn(provider), targetOn(other)},
                                   {sourceOn(provider), targetOn(provider)}}) {
        std::filesystem::remove_all(local.path());
        std::filesystem::create_directory(local.path());
        EXPECT_EQ(copy(names, from, to), "done");
        for (auto const &name : names)
            expectSame(name);
        EXPECT_EQ(namesIn(local.path()).size(), names.size());
        EXPECT_EQ(transfer->summary().complete, names);
    }
    std::vector<FileSystemWriter::Move> moves;
    for (auto const &name : names)
        moves.push_back({local.path(name), local.path("moved/" + name)});
    local.folder("moved");
    loop.run(provider->moveAll(moves, FileSystemWriter::Existing::stays));
    EXPECT_EQ(namesIn(local.path()), std::set<std::string>{"moved"});
    for (auto const &name : names)
        expectSameTree(folder.path(name), local.path("moved/" + name));
}

TEST_F(TransferEngineTest, aTargetWithAnOddNameIsReached)
{
    reach();
    auto const provider = connected();
    folder.file("a", "a");
    for (auto const *const name : {"odd\n", "o\\nd"}) {
        auto const target = local.folder(name);
        EXPECT_EQ(copy({"a"}, sourceHere(), TransferEndpoint::remote(provider, target)), "done");
        EXPECT_EQ(contentOf(target + "/a"), "a");
    }
}

TEST_F(TransferEngineTest, moreNamesThanACommandHoldsGoInSeveralStreams)
{
    reach();
    auto const provider = connected();
    Names names;
    for (int index = 0; index < 1200; ++index) {
        names.push_back(std::string(150, 'n') + std::to_string(index));
        folder.file(names.back());
    }
    EXPECT_EQ(copy(names, sourceOn(provider), targetHere()), "done");
    EXPECT_EQ(namesIn(local.path()).size(), names.size());
    EXPECT_EQ(transfer->summary().complete, names);
    EXPECT_EQ(transfer->summary().files, 1200);
    EXPECT_EQ(reports().back().files, 1200);
}

TEST_F(TransferEngineTest, aMissingNameIsSaidByTheSideThatReads)
{
    reach();
    auto const provider = connected();
    EXPECT_THAT(copy({"none"}, sourceOn(provider), targetHere()),
                testing::AllOf(HasSubstr("read from remote failed on none: "), HasSubstr("No such file")));
    EXPECT_THAT(copy({"none", "two"}, sourceHere(), targetOn(provider)),
                HasSubstr("read from this Mac failed on 2 items: "));
}

TEST_F(TransferEngineTest, aMissingTargetIsSaidByTheSideThatWrites)
{
    reach();
    auto const provider = connected();
    folder.file("a", std::string(5'000'000, 'x'));
    EXPECT_THAT(copy({"a"}, sourceHere(), TransferEndpoint::remote(provider, local.path("none"))),
                testing::AllOf(HasSubstr("write to remote failed on a: "), HasSubstr("No such file")));
    EXPECT_THAT(copy({"a"}, sourceOn(provider), TransferEndpoint::local(local.path("none"))),
                testing::AllOf(HasSubstr("write to this Mac failed on a: "), HasSubstr("No such file")));
}

TEST_F(TransferEngineTest, aCancelEndsBothSides)
{
    reach();
    auto const provider = connected();
    folder.file("large", std::string(1, 'x'));
    std::filesystem::resize_file(folder.path("large"), std::int64_t{20} << 30U);
    for (bool const isUp : {true, false}) {
        auto const before = reports().size();
        auto const copying = isUp ? start({"large"}, sourceHere(), targetOn(provider))
                                  : start({"large"}, sourceOn(provider), targetHere());
        waitUntil([&] { return reports().size() > before + 20; });
        transfer->cancel();
        EXPECT_EQ(outcomeOf(copying), "cancelled");
        EXPECT_THAT(transfer->summary().partial, ElementsAre("large"));
        waitUntil([&] { return run(provider, "pgrep -f '^tar -.*" + folder.path() + "'").empty(); });
        waitUntil([&] { return run(provider, "pgrep -f '^tar -.*" + local.path() + "'").empty(); });
        std::filesystem::remove(local.path("large"));
    }
}

TEST_F(TransferEngineTest, aLostLineOfOneOfTwoHostsEndsBothSides)
{
    reach();
    DelayProxy otherLine(host->address().port, {});
    client.add("other", host->address().through(otherLine.port()));
    auto const provider = connected();
    auto const other = makeProvider("other");
    loop.run(other->connect());
    folder.file("large");
    std::filesystem::resize_file(folder.path("large"), std::int64_t{20} << 30U);
    for (auto *const each : {line.get(), &otherLine}) {
        auto const before = reports().size();
        auto const copying = start({"large"}, sourceOn(provider), targetOn(other));
        waitUntil([&] { return reports().size() > before + 20; });
        each->cut();
        EXPECT_THAT(outcomeOf(copying), testing::StartsWith(each == line.get() ? "read from remote failed on large: "
                                                                               : "write to remote failed on large: "));
        EXPECT_THAT(transfer->summary().partial, ElementsAre("large"));
        for (auto const &path : {folder.path(), local.path()})
            waitUntil([&] { return run(provider, "pgrep -f '^tar -.*" + path + "'").empty(); });
        std::filesystem::remove(local.path("large"));
    }
}

/// Behind so many bytes it is known that the first one has been unpacked.
constexpr std::int64_t moreThanIsInFlight = 2 * TransferLog::mostInFlight;

TEST_F(TransferEngineTest, aCancelWaitsForNoSilentLine)
{
    reach();
    auto const provider = connected();
    shellOf(provider, CommandSession::work); // which measures
    folder.file("first", "x");
    std::filesystem::resize_file(folder.file("large"), std::int64_t{20} << 30U);
    for (bool const isUp : {true, false}) {
        auto const clients = childrenOfOurs();
        auto const before = reports().size();
        auto const copying = isUp ? start({"first", "large"}, sourceHere(), targetOn(provider))
                                  : start({"first", "large"}, sourceOn(provider), targetHere());
        waitUntil([&] { return reports().size() > before && reports().back().bytes > moreThanIsInFlight; });
        line->stall();
        transfer->cancel();
        EXPECT_EQ(outcomeOf(copying), "cancelled");
        EXPECT_TRUE(std::ranges::includes(clients, childrenOfOurs())) << "its programs have ended";
        EXPECT_THAT(transfer->summary().complete, ElementsAre("first"));
        EXPECT_THAT(transfer->summary().partial, ElementsAre("large"));
        line->resume();
        for (auto const &path : {folder.path(), local.path()})
            waitUntil([&] { return run(provider, "pgrep -f '^tar -.*" + path + "'").empty(); });
        std::filesystem::remove(local.path("large"));
    }
}

TEST_F(TransferEngineTest, aLineThatStaysSilentEndsItsCopies)
{
    reach();
    auto const provider = connected({.keepAliveInterval = std::chrono::seconds(1)});
    folder.file("first", "x");
    std::filesystem::resize_file(folder.file("large"), std::int64_t{20} << 30U);
    auto const up = start({"first", "large"}, sourceHere(), TransferEndpoint::remote(provider, local.folder("up")));
    auto const upwards = transfer;
    waitUntil([&] { return !reports().empty() && reports().back().bytes > moreThanIsInFlight; });
    auto const down = start({"first", "large"}, sourceOn(provider), targetHere());
    waitUntil([&] { return std::filesystem::exists(local.path("large")); });
    line->stall();
    EXPECT_THAT(outcomeOf(up), testing::StartsWith("write to remote failed on 2 items: "));
    EXPECT_THAT(outcomeOf(down), testing::StartsWith("read from remote failed on 2 items: "));
    for (auto const &each : {upwards, transfer}) {
        EXPECT_THAT(each->summary().complete, ElementsAre("first"));
        EXPECT_THAT(each->summary().partial, ElementsAre("large"));
    }
    line->resume();
    for (auto const &path : {folder.path(), local.path()})
        waitUntil([&] { return run(provider, "pgrep -f '^tar -.*" + path + "'").empty(); });
}

TEST_F(TransferEngineTest, aTargetThatVanishesDuringACopyOnItsHostIsAFailure)
{
    reach();
    auto const provider = connected();
    for (std::string const name : {"a", "b"})
        folder.file(name, name);
    std::optional<HeldFile> held(folder.path("b"));
    auto const copying = start({"a", "b"}, sourceOn(provider), targetOn(provider));
    waitUntil([&] { return held->isWanted(); });
    std::filesystem::remove_all(local.path());
    held.reset();
    EXPECT_THAT(outcomeOf(copying), HasSubstr("No such file or directory"));
    EXPECT_THAT(transfer->summary().complete, IsEmpty());
    EXPECT_EQ(namesIn(folder.path()), (std::set<std::string>{"a", "b"}));
    std::filesystem::create_directory(local.path());
}

TEST_F(TransferEngineTest, aStoppedCallerIsNoCancelOfTheUser)
{
    reach();
    auto const provider = connected();
    folder.file("large");
    std::filesystem::resize_file(folder.path("large"), std::int64_t{20} << 30U);
    auto const copying = start({"large"}, sourceHere(), targetOn(provider));
    waitUntil([&] { return reports().size() > 20; });
    copying.stop();
    finish(copying);
    EXPECT_THROW(copying.value(), Cancelled);
}

} // namespace
} // namespace tw::test
