#include "TWEngine/Store/StoreFolder.h"

#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <thread>

namespace tw::test {
namespace {

class StoreFolderTest : public ::testing::Test {
protected:
    StoreFolder open()
    {
        auto opened = StoreFolder::open(path);
        if (!opened)
            throw std::runtime_error("the folder cannot be opened");
        return *std::move(opened);
    }

    TemporaryFolder folder;
    std::string const path = folder.path("store");
};

TEST_F(StoreFolderTest, whoeverComesFirstIsAlone)
{
    auto const first = open();
    EXPECT_TRUE(first.isAlone());
    EXPECT_EQ(std::filesystem::path(first.databasePath()).filename(), "listings.sqlite");
}

TEST_F(StoreFolderTest, nobodyElseGetsInBeforeItIsShared)
{
    auto first = open();
    EXPECT_FALSE(StoreFolder::open(path)) << "who waits gives up in the end";

    std::optional<StoreFolder> second;
    std::jthread waiter([&] {
        while (!second)
            second = StoreFolder::open(path);
    });
    first.share();
    waiter.join();
    ASSERT_TRUE(second);
    EXPECT_FALSE(second->isAlone());
}

TEST_F(StoreFolderTest, nobodyIsAloneWhileAnotherHasItOpen)
{
    auto first = open();
    first.share();
    {
        auto second = open();
        EXPECT_FALSE(first.tryToBeAlone());
        EXPECT_TRUE(second.tryToBeAlone()) << "the first has lost its lock by asking";
    }
    EXPECT_TRUE(first.tryToBeAlone());
}

TEST_F(StoreFolderTest, theDatabaseIsRemovedWithAllThatBelongsToIt)
{
    auto const alone = open();
    ASSERT_TRUE(alone.preparePrivateFile());
    for (auto const *const suffix : {"-journal", "-wal", "-shm"})
        folder.file(std::string("store/listings.sqlite") + suffix);
    folder.file("store/of somebody else");
    alone.removeDatabase();
    EXPECT_FALSE(std::filesystem::exists(alone.databasePath()));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(path), {}), 1);
}

TEST(StoreFolderDeathTest, aDatabaseThatAnotherMayHaveOpenIsNotRemoved)
{
    TemporaryFolder const folder;
    auto shared = StoreFolder::open(folder.path("store"));
    ASSERT_TRUE(shared);
    shared->share();
    EXPECT_DEATH(shared->removeDatabase(), "bug: .*another process");
}

} // namespace
} // namespace tw::test
