#include "TWCore/Shell/FileCommands.h"
#include "tests/support/DiskRows.h"
#include "tests/support/HostShell.h"

#include <gmock/gmock.h>

namespace tw::test {
namespace {

namespace fs = std::filesystem;

using testing::ElementsAre;
using testing::IsEmpty;

/// Deletions on a host, by a user to whom permissions apply.
class RemoveCommandTest : public HostShellTest {
protected:
    RemoveCommandTest()
    {
        dropPrivileges();
        for (std::string const name : {"tree", "tree/-a b", "tree/-a b/c\n", "tree/open", "linked"}) {
            folder.folder(name);
            folder.file(name + "/file", "kept");
        }
        folder.link("tree/link", folder.path("linked"));
        for (std::string const name : {"tree/-a b/c\n", "tree/-a b", "tree", "linked"})
            fs::permissions(folder.path(name), locked);
    }

    int remove(LockedFolders how)
    {
        return run(FileCommands::remove(ShellDialect::posix, std::vector{folder.path("tree")}, how)).status;
    }

    fs::perms rightsOf(std::string const &name) const { return fs::status(folder.path(name)).permissions(); }

    void expectLockedFoldersToGo()
    {
        EXPECT_NE(remove(LockedFolders::stay), 0);
        EXPECT_EQ(contentOf(folder.path("tree/-a b/c\n/file")), "kept");
        EXPECT_EQ(remove(LockedFolders::go), 0);
        EXPECT_THAT(namesOnDisk(folder.path()), ElementsAre("linked"));
        EXPECT_EQ(rightsOf("linked"), locked);
    }

    static constexpr auto locked = fs::perms(0555);
};

TEST_F(RemoveCommandTest, lockedFoldersStayUnlessTheyAreToGo)
{
    expectLockedFoldersToGo();
}

TEST_F(RemoveCommandTest, lockedFoldersGoWithBusybox)
{
    useBusybox();
    expectLockedFoldersToGo();
}

TEST_F(RemoveCommandTest, lockedFoldersThatAreLeftAreLockedAgain)
{
    fs::permissions(folder.path(), locked);
    EXPECT_NE(remove(LockedFolders::go), 0);
    fs::permissions(folder.path(), fs::perms::owner_all);
    EXPECT_THAT(namesOnDisk(folder.path("tree")), IsEmpty());
    EXPECT_EQ(rightsOf("tree"), locked);
}

} // namespace
} // namespace tw::test
