#include "tests/hosts/SeparationFolder.h"

#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <optional>

namespace tw::test {

namespace fs = std::filesystem;

namespace {

TEST(SeparationFolderTest, itIsThereWhileItIsNeeded)
{
    TemporaryFolder const folder;
    auto const path = folder.path("sshd");
    {
        SeparationFolder const needed(path);
        EXPECT_TRUE(fs::is_directory(path));
    }
    EXPECT_FALSE(fs::exists(path));
}

TEST(SeparationFolderTest, theLastOfAllRemovesIt)
{
    TemporaryFolder const folder;
    auto const path = folder.path("sshd");
    std::optional<SeparationFolder> first(path);
    std::optional<SeparationFolder> second(path);

    first.reset();
    EXPECT_TRUE(fs::is_directory(path));
    second.reset();
    EXPECT_FALSE(fs::exists(path));
}

TEST(SeparationFolderTest, theOneOfAServiceIsLeftAlone)
{
    TemporaryFolder const folder;
    auto const path = folder.folder("sshd");
    fs::permissions(path, static_cast<fs::perms>(0755));
    {
        SeparationFolder const needed(path);
    }
    EXPECT_TRUE(fs::is_directory(path));
}

} // namespace

} // namespace tw::test
