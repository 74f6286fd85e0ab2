#include "TWEngine/Browsing/LocalWrites.h"

#include "TWCore/Async/Cancelled.h"
#include "TWCore/Model/FileOperationError.h"
#include "TWEngine/Browsing/LocalProvider.h"
#include "TWEngine/Browsing/LocalSurvey.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "tests/support/PrivateMount.h"
#include "tests/support/SurveyTree.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestLoop.h"
#include "tests/support/WithoutPrivileges.h"

#include <gio/gio.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <tuple>

#include <sys/stat.h>
#include <unistd.h>

namespace tw::test {
namespace {

using Existing = FileSystemWriter::Existing;
namespace fs = std::filesystem;

/// Gives this process a Trash of its own, beside the tests' folders and on their file system.
///
/// GIO reads these variables once in a process, so it is made to read them before any test. The folder is made by the
/// first removal: a process that a death test starts comes here too, and does not come to its end.
class OwnTrash : public testing::Environment {
public:
    void SetUp() override
    {
        auto const home = fs::temp_directory_path().string();
        auto const *const before = std::getenv("HOME");
        std::optional<std::string> const usersHome = before ? std::optional<std::string>(before) : std::nullopt;
        ::setenv("HOME", home.c_str(), 1);
        ::setenv("XDG_DATA_HOME", data.c_str(), 1);
        ASSERT_EQ(home, g_get_home_dir()) << "something has asked GLib for the home before the tests";
        ASSERT_EQ(data, g_get_user_data_dir());
        ::unsetenv("XDG_DATA_HOME");
        usersHome ? ::setenv("HOME", usersHome->c_str(), 1) : ::unsetenv("HOME");
    }

    void TearDown() override { fs::remove_all(data); }

    std::string path(std::string const &name) const { return data + "/Trash/files/" + name; }

    std::string contentOf(std::string const &name) const { return test::contentOf(path(name)); }

private:
    std::string const data = (fs::temp_directory_path() / ("tarnwick-trash-" + std::to_string(::getpid()))).string();
};

auto *const trash = static_cast<OwnTrash *>(testing::AddGlobalTestEnvironment(new OwnTrash));

TEST(SecondMountTest, aRenamingIntoAnotherMountOfTheSameDeviceLeadsToAnotherFileSystem)
{
    TemporaryFolder const folder;
    auto const from = folder.file("from", "kept");
    auto const there = folder.folder("there");
    auto const expectation = [&] {
        return LocalWrites::rename(from, there + "/to", Existing::stays) == LocalWrites::Renamed::isOnAnotherFileSystem;
    };
    EXPECT_EXIT(exitWithMount(there, there, expectation), testing::ExitedWithCode(0), "");
    EXPECT_EQ(contentOf(from), "kept");
}

class LocalWritesTest : public testing::Test {
protected:
    std::string failureOf(Task<void> task)
    {
        try {
            loop.run(std::move(task));
        } catch (FileOperationError::Failed const &error) {
            return error.what();
        }
        return "no failure";
    }

    TemporaryFolder folder;
    EngineRuntime runtime;
    TestLoop loop;
    LocalProvider provider{runtime};
};

TEST_F(LocalWritesTest, onlyAFolderWithNothingInItIsDeletedAsEmpty)
{
    auto const empty = folder.folder("empty");
    auto const full = folder.folder("full");
    auto const file = folder.file("full/file", "content");
    loop.run(provider.removeEmptyFolder(empty));
    EXPECT_FALSE(std::filesystem::exists(empty));
    EXPECT_EQ(failureOf(provider.removeEmptyFolder(full)), "delete failed on " + full + ": Directory not empty");
    EXPECT_EQ(failureOf(provider.removeEmptyFolder(file)), "delete failed on " + file + ": Not a directory");
    EXPECT_TRUE(std::filesystem::exists(file));
}

TEST_F(LocalWritesTest, aFolderIsMadeWithThoseAboveIt)
{
    loop.run(provider.makeDirectory(folder.path("a/b/-c '\n")));
    EXPECT_TRUE(fs::is_directory(folder.path("a/b/-c '\n")));
}

TEST_F(LocalWritesTest, aFolderThatExistsIsASuccessAndKeepsItsContent)
{
    auto const there = folder.folder("there");
    folder.file("there/file", "kept");
    loop.run(provider.makeDirectory(there));
    EXPECT_EQ(contentOf(folder.path("there/file")), "kept");
}

TEST_F(LocalWritesTest, aFolderThatCannotBeMadeSaysWhy)
{
    auto const file = folder.file("file", "kept");
    EXPECT_EQ(failureOf(provider.makeDirectory(file + "/below")),
              "create folder failed on " + file + "/below: Not a directory");
    EXPECT_EQ(failureOf(provider.makeDirectory(file)), "create folder failed on " + file + ": File exists");
    EXPECT_EQ(failureOf(provider.makeDirectory("/proc/new")),
              "create folder failed on /proc/new: No such file or directory");
    EXPECT_EQ(contentOf(file), "kept");
}

TEST_F(LocalWritesTest, whatIsRemovedLiesInTheTrash)
{
    auto const file = folder.file("removed file", "content");
    auto const full = folder.folder("removed folder");
    folder.file("removed folder/inner", "deep");
    auto const link = folder.link("removed link", "/nowhere at all");
    loop.run(provider.remove({file, full, link}));
    EXPECT_TRUE(fs::is_empty(folder.path()));
    EXPECT_EQ(trash->contentOf("removed file"), "content");
    EXPECT_EQ(trash->contentOf("removed folder/inner"), "deep");
}

TEST_F(LocalWritesTest, removingStopsAtTheFirstFailure)
{
    auto const first = folder.file("first removed", "1");
    auto const missing = folder.path("missing");
    auto const last = folder.file("last", "3");
    auto const failure = failureOf(provider.remove({first, missing, last}));
    EXPECT_TRUE(failure.starts_with("move to Trash failed on " + missing + ": ")) << failure;
    EXPECT_TRUE(failure.ends_with("No such file or directory")) << failure;
    EXPECT_EQ(trash->contentOf("first removed"), "1") << "what was moved stays in the Trash";
    EXPECT_EQ(contentOf(last), "3");
}

TEST_F(LocalWritesTest, removingNothingSucceeds)
{
    EXPECT_EQ(failureOf(provider.remove({})), "no failure");
}

TEST_F(LocalWritesTest, removingThatIsCancelledLeavesTheRest)
{
    auto const file = folder.file("file", "kept");
    auto const removing = loop.start(provider.remove({file}));
    removing.stop();
    loop.runUntil([&] { return removing.isDone(); });
    EXPECT_THROW(removing.value(), Cancelled);
    runtime.files().waitUntilIdle();
    EXPECT_EQ(contentOf(file), "kept");
}

TEST_F(LocalWritesTest, renamingMovesWithinTheFileSystem)
{
    auto const file = folder.file("from", "content");
    auto const to = folder.folder("sub") + "/-to '\n";
    loop.run(provider.rename(file, to));
    EXPECT_EQ(contentOf(to), "content");
    EXPECT_FALSE(fs::exists(file));
}

TEST_F(LocalWritesTest, renamingOntoAnExistingNameIsAnError)
{
    auto const from = folder.file("from", "new");
    auto const text = "rename failed on " + from + ": File exists";
    auto const to = folder.file("to", "kept");
    EXPECT_EQ(failureOf(provider.rename(from, to)), text);
    EXPECT_EQ(failureOf(provider.rename(from, folder.folder("folder"))), text);
    EXPECT_EQ(failureOf(provider.rename(from, folder.link("broken", "nowhere at all"))), text);
    EXPECT_EQ(contentOf(to), "kept");
    EXPECT_EQ(contentOf(from), "new");
}

TEST_F(LocalWritesTest, aFileSystemThatCannotRefuseATargetIsLookedAtFirst)
{
    auto const from = folder.file("from", "new");
    auto const to = folder.file("to", "kept");
    EXPECT_THROW(std::ignore = LocalWrites::renameAfterLooking(from, to), FileOperationError::Failed);
    EXPECT_THROW(std::ignore = LocalWrites::renameAfterLooking(from, folder.link("broken", "nowhere at all")),
                 FileOperationError::Failed);
    EXPECT_EQ(contentOf(to), "kept");
    EXPECT_EQ(LocalWrites::renameAfterLooking(from, folder.path("free")), LocalWrites::Renamed::done);
    EXPECT_EQ(contentOf(folder.path("free")), "new");
}

TEST_F(LocalWritesTest, aFolderThatItsOwnerCannotWriteToMovesAndKeepsItsRights)
{
    WithoutPrivileges const user;
    auto const rights = [](std::string const &path) { return fs::status(path).permissions(); };
    auto const isLocked = fs::perms(0555);
    auto const from = folder.folder("from");
    auto const lockedToo = folder.folder("locked too");
    for (auto const &path : {from, lockedToo})
        fs::permissions(path, isLocked);
    EXPECT_THROW(std::ignore = LocalWrites::rename(from, lockedToo + "/to", Existing::stays),
                 FileOperationError::Failed);
    EXPECT_EQ(rights(from), isLocked);
    EXPECT_EQ(LocalWrites::rename(from, folder.folder("sub") + "/to", Existing::stays), LocalWrites::Renamed::done);
    EXPECT_EQ(rights(folder.path("sub/to")), isLocked);
    EXPECT_EQ(LocalWrites::renameAfterLooking(folder.path("sub/to"), folder.path("again")), LocalWrites::Renamed::done);
    LocalWrites::moveToTrash(folder.path("again"));
    EXPECT_EQ(rights(trash->path("again")), isLocked);
}

TEST_F(LocalWritesTest, renamingThatFailsSaysWhy)
{
    auto const missing = folder.path("missing");
    EXPECT_EQ(failureOf(provider.rename(missing, folder.path("to"))),
              "rename failed on " + missing + ": No such file or directory");
    auto const parent = folder.folder("parent");
    EXPECT_EQ(failureOf(provider.rename(parent, parent + "/child")),
              "rename failed on " + parent + ": Invalid argument");
}

TEST_F(LocalWritesTest, thousandsOfNamesMoveUntilOneIsTaken)
{
    folder.folder("from");
    folder.folder("to");
    std::vector<FileSystemWriter::Move> moves;
    for (int index = 0; index < 2000; ++index) {
        auto const name = std::to_string(index);
        moves.push_back({folder.file("from/" + name), folder.path("to/" + name)});
    }
    auto const taken = folder.file("to/1500", "kept");
    EXPECT_EQ(failureOf(provider.moveAll(moves, Existing::stays)),
              "rename failed on " + folder.path("from/1500") + ": File exists");
    EXPECT_TRUE(fs::exists(folder.path("to/1499")));
    EXPECT_TRUE(fs::exists(folder.path("from/1501")));
    EXPECT_EQ(contentOf(taken), "kept");
}

TEST_F(LocalWritesTest, oldFilesAreReplacedAndFoldersAreNot)
{
    folder.folder("from");
    folder.folder("to/taken");
    std::vector<FileSystemWriter::Move> moves;
    for (std::string const name : {"file", "link", "taken"})
        moves.push_back({folder.file("from/" + name, "new"), folder.path("to/" + name)});
    folder.file("to/file", "old");
    auto const kept = folder.file("kept", "kept");
    folder.link("to/link", kept);
    EXPECT_EQ(failureOf(provider.moveAll(moves, Existing::isReplaced)),
              "rename failed on " + folder.path("from/taken") + ": Is a directory");
    EXPECT_EQ(contentOf(folder.path("to/file")), "new");
    EXPECT_EQ(contentOf(folder.path("to/link")), "new");
    EXPECT_EQ(contentOf(kept), "kept");
    EXPECT_EQ(contentOf(folder.path("from/taken")), "new");
}

TEST_F(LocalWritesTest, aMoveToAnotherFileSystemIsACopyAndTheOriginalGoes)
{
    TemporaryFolder const other(anotherFileSystem(folder.path()));
    fillTree(folder);
    ASSERT_EQ(::mkfifo(folder.path("tree/pipe").c_str(), 0600), 0);
    auto const before = localSurvey(folder.path(), {"tree", "-"}, {});
    loop.run(provider.rename(folder.path("tree"), other.path("tree")));
    loop.run(provider.rename(folder.path("-"), other.path("renamed\n")));
    EXPECT_EQ(localSurvey(other.path(), {"tree"}, {}).parts.at("tree").shape, before.parts.at("tree").shape);
    EXPECT_EQ(contentOf(other.path("renamed\n")), "12345");
    EXPECT_FALSE(fs::exists(folder.path("tree")));
    EXPECT_FALSE(fs::exists(folder.path("-")));
    EXPECT_EQ(namesOnDisk(other.path()), (std::vector<std::string>{"renamed\n", "tree"})) << "nothing else is left";
}

TEST_F(LocalWritesTest, aMoveOfManyNamesStopsAtAnotherFileSystem)
{
    TemporaryFolder const other(anotherFileSystem(folder.path()));
    auto const near = folder.file("near", "moves");
    auto const far = folder.file("far", "kept");
    try {
        loop.run(provider.moveAll({{near, folder.path("moved")}, {far, other.path("far")}}, Existing::stays));
        FAIL() << "a file was renamed into another file system";
    } catch (FileOperationError::OtherFileSystem const &failure) {
        EXPECT_EQ(failure.path, far);
    }
    EXPECT_EQ(contentOf(folder.path("moved")), "moves");
    EXPECT_EQ(contentOf(far), "kept");
}

TEST_F(LocalWritesTest, aMoveToAnotherFileSystemKeepsWhatIsThere)
{
    TemporaryFolder const other(anotherFileSystem(folder.path()));
    auto const from = folder.file("file", "new");
    auto const to = other.file("file", "kept");
    EXPECT_EQ(failureOf(provider.rename(from, to)), "rename failed on " + from + ": File exists");
    EXPECT_EQ(contentOf(from), "new");
    EXPECT_EQ(contentOf(to), "kept");
    EXPECT_EQ(namesOnDisk(other.path()), std::vector<std::string>{"file"});
}

TEST_F(LocalWritesTest, aCopyThatFailsLeavesTheOriginalAndNothingElse)
{
    auto const from = folder.file("file", "kept");
    auto const failure = failureOf(provider.rename(from, "/dev/shm/none at all/file"));
    EXPECT_EQ(contentOf(from), "kept");
    EXPECT_NE(failure, "no failure");
}

TEST_F(LocalWritesTest, aMoveToAnotherFileSystemThatIsStoppedLeavesTheOriginal)
{
    TemporaryFolder const other(anotherFileSystem(folder.path()));
    auto const from = folder.file("file", "kept");
    auto const moving = loop.start(provider.rename(from, other.path("file")));
    moving.stop();
    loop.runUntil([&] { return moving.isDone(); });
    EXPECT_THROW(moving.value(), Cancelled);
    EXPECT_EQ(contentOf(from), "kept");
    EXPECT_TRUE(fs::is_empty(other.path()));
}

TEST_F(LocalWritesTest, aPlaceWithoutATrashSaysSoAndKeepsTheFile)
{
    // The kernel's own files belong to nobody's Trash.
    try {
        loop.run(provider.remove({"/proc/self/status"}));
        FAIL() << "a file of the kernel went to the Trash";
    } catch (FileOperationError::NoTrash const &failure) {
        EXPECT_EQ(failure.path, "/proc/self/status");
        EXPECT_EQ(std::string(failure.what()), "move to Trash failed on /proc/self/status: " + failure.detail);
    }
}

TEST_F(LocalWritesTest, whatIsDeletedForGoodIsNotInTheTrash)
{
    auto const file = folder.file("deleted for good", "content");
    auto const full = folder.folder("full");
    folder.file("full/inner", "deep");
    loop.run(provider.removePermanently({file, full}, LockedFolders::stay));
    EXPECT_TRUE(fs::is_empty(folder.path()));
    EXPECT_EQ(trash->contentOf("deleted for good"), "");
}

TEST_F(LocalWritesTest, aPathWithANulChangesNoOtherFile)
{
    auto const file = folder.file("file", "kept");
    auto const path = file + '\0' + "x";
    EXPECT_THROW(loop.run(provider.remove({path})), FileOperationError::Failed);
    EXPECT_THROW(loop.run(provider.rename(path, folder.path("to"))), FileOperationError::Failed);
    EXPECT_THROW(loop.run(provider.rename(file, folder.path("to") + '\0' + "x")), FileOperationError::Failed);
    EXPECT_THROW(loop.run(provider.makeDirectory(folder.path("new") + '\0' + "x")), FileOperationError::Failed);
    EXPECT_EQ(contentOf(file), "kept");
    EXPECT_FALSE(fs::exists(folder.path("new")));
}

} // namespace
} // namespace tw::test
