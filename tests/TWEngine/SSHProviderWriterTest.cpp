#include "TWCore/Async/Cancelled.h"
#include "TWCore/Model/FileOperationError.h"
#include "TWEngine/Browsing/LocalSurvey.h"
#include "tests/support/DiskRows.h"
#include "tests/support/SSHProviderTest.h"
#include "tests/support/SurveyTree.h"

namespace tw::test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

/// Changes on a host, which is this machine.
class SSHProviderWriterTest : public SSHProviderTest {
protected:
    SSHProviderWriterTest()
    {
        reach();
        provider = connected();
    }

    Provider provider;
};

TEST_F(SSHProviderWriterTest, aFolderIsMadeOnce)
{
    auto const path = folder.path("-new it's \xFF\nfolder");
    loop.run(provider->makeDirectory(path));
    EXPECT_TRUE(std::filesystem::is_directory(path));
    EXPECT_THAT(failureOf(loop.start(provider->makeDirectory(path))), StartsWith("create folder failed on " + path));
}

TEST_F(SSHProviderWriterTest, theWordsOfTheHostTellWhyItFailed)
{
    EXPECT_THAT(failureOf(loop.start(provider->makeDirectory(folder.path("none/new")))),
                HasSubstr("No such file or directory"));
    EXPECT_THROW(loop.run(provider->rename(folder.path("none"), folder.path("other"))), FileOperationError::Failed);
}

TEST_F(SSHProviderWriterTest, onlyAFolderWithNothingInItIsDeletedAsEmpty)
{
    auto const empty = folder.folder("-it's empty\n");
    auto const full = folder.folder("full");
    auto const file = folder.file("full/file", "content");
    loop.run(provider->removeEmptyFolder(empty));
    EXPECT_FALSE(std::filesystem::exists(empty));
    EXPECT_THAT(failureOf(loop.start(provider->removeEmptyFolder(full))), HasSubstr("not empty"));
    EXPECT_TRUE(std::filesystem::exists(file));
}

TEST_F(SSHProviderWriterTest, pathsAreDeletedWithWhatIsBelowThem)
{
    folder.folder("a/b");
    folder.file("a/b/file", "content");
    auto const odd = folder.file("it's\n", "content");
    folder.link("link", "a");
    auto const kept = folder.file("kept", "content");
    EXPECT_FALSE(provider->deleteIsReversible());
    loop.run(provider->remove({folder.path("a"), odd, folder.path("link"), folder.path("none")}));
    EXPECT_EQ(run(provider, "ls -A '" + folder.path() + "'"), "kept\n");
    EXPECT_TRUE(std::filesystem::exists(kept));
}

TEST_F(SSHProviderWriterTest, aPathIsRenamed)
{
    auto const from = folder.file("from\n", "content");
    auto const to = folder.path("-to");
    loop.run(provider->rename(from, to));
    EXPECT_EQ(run(provider, "cat '" + to + "'"), "content");
    EXPECT_FALSE(std::filesystem::exists(from));
}

TEST_F(SSHProviderWriterTest, anExistingTargetIsRefusedAndBothStay)
{
    auto const from = folder.file("it's", "content");
    folder.folder("taken folder");
    auto const taken = folder.file("-taken", "other");
    folder.link("dangling", "nowhere");
    for (auto const &to : {taken, folder.path("taken folder"), folder.path("dangling")})
        EXPECT_EQ(failureOf(loop.start(provider->rename(from, to))), "rename failed on " + from + ": File exists");
    EXPECT_EQ(run(provider, "cat '" + taken + "'"), "other");
    EXPECT_EQ(run(provider, "ls -A '" + folder.path("taken folder") + "'"), "");
    EXPECT_TRUE(std::filesystem::exists(from));
}

TEST_F(SSHProviderWriterTest, theOtherCaseOfANameIsANameOfItsOwnHere)
{
    auto const from = folder.file("name", "content");
    auto const taken = folder.file("NAME", "other");
    folder.link("Name", "name");
    for (auto const &to : {taken, folder.path("Name")})
        EXPECT_EQ(failureOf(loop.start(provider->rename(from, to))), "rename failed on " + from + ": File exists");
    loop.run(provider->rename(from, folder.path("nAME")));
    EXPECT_EQ(run(provider, "cat '" + folder.path("nAME") + "'"), "content");
    EXPECT_EQ(run(provider, "cat '" + taken + "'"), "other");
}

TEST_F(SSHProviderWriterTest, thousandsOfNamesMoveInOneRoundTrip)
{
    folder.folder("from");
    folder.folder("to");
    std::vector<FileSystemWriter::Move> moves;
    for (int index = 0; index < 3000; ++index) {
        auto const name = "name " + std::to_string(index);
        moves.push_back({folder.file("from/" + name), folder.path("to/" + name)});
    }
    loop.run(provider->moveAll(moves, FileSystemWriter::Existing::stays));
    EXPECT_EQ(run(provider, "ls '" + folder.path("to") + "' | wc -l"), "3000\n");
    EXPECT_EQ(run(provider, "ls -A '" + folder.path("from") + "'"), "");
}

TEST_F(SSHProviderWriterTest, theHostItselfSaysWhichNamesAreTaken)
{
    auto const odd = folder.folder("\xFF it's\n");
    folder.file("\xFF it's\n/there\n", "12345");
    auto const facts = loop.run(provider->factsAbout(folder.link("link", odd), {"there", "there\n"}));
    EXPECT_EQ(facts.realPath, std::filesystem::canonical(odd));
    ASSERT_EQ(facts.taken.size(), 1U);
    EXPECT_EQ(facts.taken[0].name, "there\n");
    EXPECT_EQ(facts.taken[0].size, 5);
}

TEST_F(SSHProviderWriterTest, aTreeOnTheHostIsTheSameAsItsCopyHere)
{
    fillTree(folder);
    TemporaryFolder copy;
    std::filesystem::copy(folder.path(), copy.path(),
                          std::filesystem::copy_options::recursive | std::filesystem::copy_options::copy_symlinks);
    auto names = namesOnDisk(folder.path());
    names.push_back("none");
    auto const there = loop.run(provider->survey(folder.path(), names, Survey::Detail::nodes));
    auto const here = localSurvey(copy.path(), names, {}, Survey::Detail::nodes);
    EXPECT_EQ(shapes(there), shapes(here));
    for (auto const &[name, part] : here.parts)
        EXPECT_TRUE(part.holds(there.parts.at(name)) && there.parts.at(name).holds(part)) << name;
    EXPECT_EQ(there.parts.size(), names.size() - 1);
}

TEST_F(SSHProviderWriterTest, aFolderThatIsNotThereIsNoSurvey)
{
    EXPECT_THAT(failureOf(loop.start(provider->survey(folder.path("none"), {"a"}, Survey::Detail::sums))),
                HasSubstr("No such file or directory"));
}

TEST_F(SSHProviderWriterTest, whatWasWrittenIsPutOnTheDisk)
{
    EXPECT_NO_THROW(loop.run(provider->sync(folder.path())));
}

TEST_F(SSHProviderWriterTest, pathsAreCopiedOnTheHost)
{
    folder.folder("from");
    folder.file("from/file", "content");
    auto const to = folder.folder("to it's");
    loop.run(provider->copyOnRemote({folder.path("from")}, to));
    EXPECT_TRUE(std::filesystem::exists(to + "/from/file"));
    EXPECT_TRUE(std::filesystem::exists(folder.path("from/file")));
}

TEST_F(SSHProviderWriterTest, aTotalIsThatOfAllThatIsThere)
{
    auto const file = folder.file("file", std::string(100'000, 'x'));
    EXPECT_GE(loop.run(provider->totalSize({file, folder.path("none")})), 100'000);
    EXPECT_EQ(loop.run(provider->totalSize({folder.path("none")})), 0);
}

TEST_F(SSHProviderTest, aDeletionThatIsStoppedEndsOnTheHostAndItsSessionGoesOn)
{
    // In place of rm: it says that it has begun, and does not come to its end.
    TemporaryFolder tools;
    auto const tool = tools.file("rm", "#!/bin/sh\ncase $* in *victim*) echo $$ >" + tools.path("began") +
                                           "; exec sleep 1000;; esac\nexec /bin/rm \"$@\"\n");
    ASSERT_EQ(::chmod(tool.c_str(), 0755), 0);
    reach({.loginScript = "#!/bin/sh\nPATH=" + tools.path() + ":$PATH exec /bin/sh -c \"$SSH_ORIGINAL_COMMAND\"\n"});
    auto const provider = connected();
    auto const shell = shellOf(provider, CommandSession::work);
    auto const removing = loop.start(provider->remove({folder.file("victim")}));
    auto const waitFor = [&](std::string const &command, std::string const &answer) {
        while (run(provider, command) != answer)
            loop.run(engine.clock()->sleep(std::chrono::milliseconds(1)));
    };
    waitFor("test -s " + tools.path("began") + "; echo $?", "0\n");
    removing.stop();
    loop.runUntil([&] { return removing.isDone(); });
    EXPECT_THROW(removing.value(), Cancelled);
    waitFor("kill -0 $(cat " + tools.path("began") + ") 2>/dev/null; echo $?", "1\n");
    EXPECT_EQ(shellOf(provider, CommandSession::work), shell);
    while (!std::filesystem::is_empty(host->temporary()))
        loop.run(engine.clock()->sleep(std::chrono::milliseconds(1)));
    EXPECT_TRUE(std::filesystem::exists(folder.path("victim")));
}

} // namespace
} // namespace tw::test
