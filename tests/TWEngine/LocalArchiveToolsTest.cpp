#include "TWEngine/Archives/LocalArchiveTools.h"

#include "TWEngine/Runtime/EngineRuntime.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestLoop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>

namespace tw::test {
namespace {

class LocalArchiveToolsTest : public testing::Test {
protected:
    std::string program(std::string_view name, std::string_view says = {})
    {
        auto path = folder.file(name, "#!/bin/sh\necho '" + std::string(says) + "'\n");
        ::chmod(path.c_str(), 0755);
        return path;
    }

    ArchiveTools find(std::string const &searchPath) { return loop.run(LocalArchiveTools::find(engine, searchPath)); }

    EngineRuntime engine;
    TestLoop loop;
    TemporaryFolder folder;
};

TEST_F(LocalArchiveToolsTest, whatIsInNoFolderIsMissing)
{
    EXPECT_EQ(find(folder.path()), ArchiveTools());
    EXPECT_EQ(find(""), ArchiveTools());
    EXPECT_EQ(find(folder.path()).capability(), ArchiveCapability());
}

TEST_F(LocalArchiveToolsTest, aTarIsAskedWhatItIs)
{
    using enum ArchiveTools::TarKind;
    for (auto const &[says, kind] : {std::pair("tar (GNU tar) 1.34", gnu), std::pair("bsdtar 3.6.2 - libarchive", bsd),
                                     std::pair("tar (busybox) 1.35.0", other)}) {
        auto const tar = program("tar", says);
        auto const found = find(folder.path());
        EXPECT_EQ(found.tarKind, kind) << says;
        EXPECT_EQ(found.bsdtar, kind == bsd ? tar : "") << says;
        EXPECT_EQ(found.capability().usesBSDTar, kind == bsd) << says;
    }
}

TEST_F(LocalArchiveToolsTest, sevenZipHasThreeNamesOfWhichTheNewestCounts)
{
    for (auto const *const name : {"7za", "7z", "7zz"}) {
        auto const path = program(name);
        EXPECT_EQ(find(folder.path()).capability().sevenZip, path);
    }
}

TEST_F(LocalArchiveToolsTest, whatCannotBeExecutedIsNoProgram)
{
    folder.file("7zz", "#!/bin/sh\n");
    folder.folder("bsdtar");
    program("unzip");
    auto const found = find(":relative:/no/such/folder:" + folder.path());
    EXPECT_EQ(found.sevenZip, "");
    EXPECT_EQ(found.bsdtar, "");
    EXPECT_EQ(found.unzip, folder.path("unzip"));
    EXPECT_FALSE(found.capability().hasZipTools);
}

TEST_F(LocalArchiveToolsTest, theToolsOfThisMachineStayWhatTheyWere)
{
    auto const first = loop.run(LocalArchiveTools::ofThisMachine(engine));
    EXPECT_EQ(first.tarKind, ArchiveTools::TarKind::gnu);
    EXPECT_FALSE(first.bsdtar.empty());
    EXPECT_FALSE(first.sevenZip.empty());
    EXPECT_EQ(loop.run(LocalArchiveTools::ofThisMachine(engine)), first);
}

} // namespace
} // namespace tw::test
