// Archives that take long to make.

#include "TWEngine/Archives/ArchiveProvider.h"
#include "tests/support/ArchiveTest.h"
#include "tests/support/TarArchive.h"

#include <fstream>

namespace tw::test {
namespace {

/// A step of it takes minutes with sanitizers.
class LargeArchivesTest : public ArchiveTest {
protected:
    LargeArchivesTest() { loop.setHangLimit(std::chrono::minutes(20)); }
};

TEST_F(LargeArchivesTest, aTarOfAMillionMembersWithoutItsFoldersIsOpenedAndUnpackedFrom)
{
    constexpr int count = 1'000'000;
    constexpr int ofAFolder = 1000;
    {
        std::ofstream tar(folder.path("a.tar"), std::ios::binary);
        for (int number = 0; number < count; ++number) {
            auto const name = "d/" + std::to_string(number / ofAFolder) + "/" + std::to_string(number);
            tar << TarArchive::member({.name = name, .data = std::to_string(number)});
        }
        tar << TarArchive::end();
    }
    reach();
    auto const provider = connected();
    for (auto const &file : {here(folder.path("a.tar")), TransferEndpoint::remote(provider, folder.path("a.tar"))}) {
        auto const inside =
            std::make_shared<ArchiveProvider>(engine, ArchiveProvider::Archive{file, "large"}, tools().ssh);
        auto const folders = loop.run(inside->fetch("/", 3, FetchPriority::interactive));
        EXPECT_EQ(folders.size(), 2U + count / ofAFolder);
        std::size_t files = 0;
        for (auto const &[path, listing] : folders) {
            if (path.starts_with("/d/"))
                files += listing.count();
        }
        EXPECT_EQ(files, std::size_t{count});
        EXPECT_EQ(extract({"d/999/999999"}, file, targetHere()), "done");
        EXPECT_EQ(contentOf(local.path("999999")), "999999");
        std::filesystem::remove(local.path("999999"));
    }
    EXPECT_EQ(remove({"d/0"}, folder.path("a.tar")), "done");
    auto const inside = std::make_shared<ArchiveProvider>(
        engine, ArchiveProvider::Archive{here(folder.path("a.tar")), "large"}, tools().ssh);
    EXPECT_EQ(loop.run(inside->fetch("/d", 1, FetchPriority::interactive)).at("/d").count(), count / ofAFolder - 1);
}

} // namespace
} // namespace tw::test
