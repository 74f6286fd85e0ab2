#include "TWEngine/Browsing/LocalAttributes.h"

#include "TWCore/Async/Cancelled.h"
#include "TWEngine/Browsing/LocalListing.h"
#include "tests/hosts/TestMount.h"
#include "tests/support/Listings.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <dirent.h>
#include <fcntl.h>

namespace tw::test {
namespace {

using namespace std::chrono_literals;

class LocalAttributesTest : public testing::Test {
protected:
    static LocalAttributes::Part partOf(std::vector<std::string> const &names, EntryKind kind)
    {
        LocalAttributes::Part part;
        for (auto const &name : names) {
            Entry entry;
            entry.nameOffset = static_cast<std::uint32_t>(part.names.size());
            entry.nameLength = static_cast<std::uint32_t>(name.size());
            entry.kind = kind;
            part.names += name;
            part.entries.push_back(entry);
        }
        return part;
    }

    /// As readdir(3) gives them.
    static std::vector<std::string> namesInOrder(std::string const &path)
    {
        std::vector<std::string> found;
        auto *const directory = opendir(path.c_str());
        while (auto const *const record = readdir(directory)) {
            if (record->d_name[0] != '.')
                found.emplace_back(record->d_name);
        }
        closedir(directory);
        return found;
    }

    DirectorySnapshot read(std::string const &path) { return readLocalDirectory(path, {}, helpers, {}); }

    TemporaryFolder folder;
    HelperThreads::Budget helpers{64};
};

TEST_F(LocalAttributesTest, aSlowFileSystemIsAskedByMoreThreadsUpToABound)
{
    EXPECT_LE(LocalAttributes::threadsFor(0ns), 2U);
    EXPECT_EQ(LocalAttributes::threadsFor(2us), LocalAttributes::threadsFor(0ns)) << "a disk in memory";
    EXPECT_GT(LocalAttributes::threadsFor(200us), LocalAttributes::threadsFor(2us));
    EXPECT_EQ(LocalAttributes::threadsFor(1ms), LocalAttributes::mostThreads);
    EXPECT_EQ(LocalAttributes::threadsFor(1h), LocalAttributes::mostThreads);
}

TEST_F(LocalAttributesTest, aLargeFolderIsListedWholeAndInTheOrderOfTheSystem)
{
    constexpr int count = 5000;
    for (int number = 0; number < count; ++number)
        folder.file("file " + std::to_string(number), std::string(static_cast<std::size_t>(number % 7), 'x'));
    auto const shown = read(folder.path());
    EXPECT_EQ(names(shown), namesInOrder(folder.path()));
    for (auto const &entry : shown.entries()) {
        auto const number = std::stoi(std::string(shown.nameBytes(entry).substr(5)));
        ASSERT_EQ(entry.size, number % 7) << number;
        ASSERT_EQ(entry.kind, EntryKind::file);
    }
}

TEST_F(LocalAttributesTest, withoutAHelperTheListingIsWholeToo)
{
    HelperThreads::Budget none{0};
    for (int number = 0; number < 2100; ++number)
        folder.file(std::to_string(number), "x");
    auto const shown = readLocalDirectory(folder.path(), {}, none, {});
    EXPECT_EQ(shown.count(), 2100U);
    EXPECT_TRUE(std::ranges::all_of(shown.entries(), [](auto const &entry) { return entry.size == 1; }));
}

TEST_F(LocalAttributesTest, aFolderWhoseEntriesAreSlowToExamineIsListedWholeAndInOrder)
{
    TestMount const mount = TestMount::slow(folder.folder("mount"), 2500, 100us);
    auto const shown = read(mount.path());
    EXPECT_EQ(names(shown), namesInOrder(mount.path()));
    EXPECT_TRUE(std::ranges::all_of(shown.entries(), [](auto const &entry) { return entry.size > 0; }));
}

TEST_F(LocalAttributesTest, anEntryThatCannotBeExaminedKeepsTheKindItCameWith)
{
    auto const directory = ::open(folder.path().c_str(), O_RDONLY | O_DIRECTORY);
    std::stop_token const never;
    LocalAttributes::Known const nothing;
    LocalAttributes attributes(directory, nothing, helpers, never);
    attributes.add(partOf({"gone"}, EntryKind::directory));
    auto const parts = attributes.finish();
    ::close(directory);
    ASSERT_EQ(parts.size(), 1U);
    auto const &entry = parts.front().entries.front();
    EXPECT_EQ(entry.kind, EntryKind::directory);
    EXPECT_EQ(entry.size, 0);
    EXPECT_EQ(entry.mtime, 0);
    EXPECT_EQ(entry.mode, 0);
}

TEST_F(LocalAttributesTest, aKnownRowIsTakenWithoutAQuestionToTheSystem)
{
    folder.file("asked", "12345");
    folder.folder("known");
    folder.folder("not answered");
    Entry row;
    row.kind = EntryKind::directory;
    row.size = 77;
    row.mtime = 99;
    auto const shown = readLocalDirectory(folder.path(), {{"known", row}, {"not answered", std::nullopt}}, helpers, {});
    std::map<std::string, Entry> rows;
    for (auto const &entry : shown.entries())
        rows.emplace(shown.nameBytes(entry), entry);
    EXPECT_EQ(rows.at("asked").size, 5);
    EXPECT_EQ(rows.at("known").size, 77);
    EXPECT_EQ(rows.at("known").mtime, 99);
    EXPECT_EQ(rows.at("not answered").mtime, 0);
    EXPECT_EQ(rows.at("not answered").kind, EntryKind::directory) << "as readdir tells";
}

TEST_F(LocalAttributesTest, aStoppedReadEnds)
{
    for (int number = 0; number < 2100; ++number)
        folder.file(std::to_string(number));
    std::stop_source source;
    source.request_stop();
    EXPECT_THROW(readLocalDirectory(folder.path(), {}, helpers, source.get_token()), Cancelled);
}

} // namespace
} // namespace tw::test
