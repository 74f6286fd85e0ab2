#include "tests/hosts/SeparationFolder.h"

#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace tw::test {

namespace fs = std::filesystem;

namespace {

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
