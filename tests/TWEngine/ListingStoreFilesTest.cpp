#include "tests/support/ListingStoreTest.h"

#include <gmock/gmock.h>

#include <fstream>
#include <thread>

#include <sys/fsuid.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tw::test {
namespace {

namespace fs = std::filesystem;

/// What may lie where the store wants its file, and who may read it.
class ListingStoreFilesTest : public ListingStoreTest {
protected:
    static mode_t modeOf(std::string const &path)
    {
        struct stat status;
        return ::lstat(path.c_str(), &status) == 0 ? status.st_mode & 07777U : 0;
    }

    /// A database with some listings in it, of several pages, that nobody has open.
    void makeStore()
    {
        ASSERT_TRUE(open());
        Listings scan;
        for (int i = 0; i < 200; ++i) {
            auto const path = "/srv/" + std::to_string(i);
            std::vector<ListedEntry> const rows(static_cast<std::size_t>(i), file("a file among others"));
            scan.emplace(path, listing(path, rows, clock->now()));
        }
        loop.run(store->save(host, scan));
        close();
    }

    void write(std::string const &content)
    {
        fs::create_directories(cacheFolder);
        std::ofstream(databasePath(), std::ios::binary).write(content.data(), std::ssize(content));
    }

    /// Everything that a program would do with a store whose file breaks while it runs.
    void useEverything()
    {
        for (int i = 0; i < 200; ++i)
            load("/srv/" + std::to_string(i));
        save("/srv/7", {file("again")});
        loop.run(store->remove(host, "/srv/8"));
        loop.run(store->trim());
        statistics();
        loop.run(store->removeAll(host));
    }
};

/// Lets everybody do everything with what is made meanwhile, unless that says otherwise.
class OpenUmask {
public:
    ~OpenUmask() { ::umask(before); }

    mode_t const before = ::umask(0);
};

TEST_F(ListingStoreFilesTest, nobodyElseMayReadTheFilesNorEnterTheFolder)
{
    OpenUmask const umask;
    ASSERT_TRUE(open());
    save("/srv", {file("a")});
    EXPECT_EQ(modeOf(cacheFolder), 0700U);
    EXPECT_EQ(modeOf(folder.path("caches")), 0700U) << "a folder on the way is private too, if it was not there";
    EXPECT_EQ(modeOf(databasePath()), 0600U);
    EXPECT_EQ(modeOf(databasePath() + "-wal"), 0600U);
    EXPECT_EQ(modeOf(databasePath() + "-shm"), 0600U);
}

TEST_F(ListingStoreFilesTest, whatWasOpenToOthersIsClosedToThem)
{
    makeStore();
    for (auto const *const suffix : {"", "-wal", "-shm"}) {
        std::ofstream const made(databasePath() + suffix, std::ios::app);
        ::chmod((databasePath() + suffix).c_str(), 0666);
    }
    ::chmod(cacheFolder.c_str(), 0777);
    ASSERT_TRUE(open());
    EXPECT_TRUE(has("/srv/7"));
    EXPECT_EQ(modeOf(cacheFolder), 0700U);
    for (auto const *const suffix : {"", "-wal", "-shm"})
        EXPECT_EQ(modeOf(databasePath() + suffix), 0600U) << suffix;
}

TEST_F(ListingStoreFilesTest, theFolderMayLieBehindALink)
{
    cacheFolder = folder.link("link", folder.folder("real")) + "/tarnwick";
    EXPECT_TRUE(worksAcrossRestart());
    EXPECT_TRUE(fs::exists(folder.path("real/tarnwick/listings.sqlite")));
}

TEST_F(ListingStoreFilesTest, aLinkInPlaceOfTheFileIsNotFollowed)
{
    auto const foreign = folder.file("foreign", "");
    fs::create_directories(cacheFolder);
    for (auto const &target : {foreign, folder.path("nowhere")}) {
        fs::remove(databasePath());
        fs::create_symlink(target, databasePath());
        EXPECT_FALSE(open());
        EXPECT_TRUE(fs::is_symlink(databasePath()));
    }
    EXPECT_EQ(contentOf(foreign), "");
    EXPECT_FALSE(fs::exists(folder.path("nowhere")));
}

TEST_F(ListingStoreFilesTest, aFolderInPlaceOfTheFileIsLeftAlone)
{
    fs::create_directories(databasePath() + "/with something in it");
    EXPECT_FALSE(open());
    EXPECT_TRUE(fs::exists(databasePath() + "/with something in it"));
}

TEST_F(ListingStoreFilesTest, thereIsNoStoreWhereAFileIsInTheWay)
{
    cacheFolder = folder.file("file") + "/tarnwick";
    EXPECT_FALSE(open());
}

/// What this thread asks of file systems, it asks as somebody who is not root, nor anybody that files belong to.
class AsNobody {
public:
    AsNobody() { ::setfsuid(65534); }

    ~AsNobody() { ::setfsuid(::geteuid()); }

    AsNobody(AsNobody const &) = delete;
    AsNobody &operator=(AsNobody const &) = delete;
};

TEST_F(ListingStoreFilesTest, thereIsNoStoreBelowAFolderThatMayNotBeWritten)
{
    fs::permissions(folder.folder("caches"), fs::perms::owner_read | fs::perms::owner_exec);
    {
        AsNobody const nobody;
        EXPECT_FALSE(open());
    }
    EXPECT_TRUE(fs::is_empty(folder.path("caches")));
}

TEST_F(ListingStoreFilesTest, aTextFileIsReplaced)
{
    write("This is not a database, and longer than the header of one would be, which has a hundred bytes in it.");
    EXPECT_TRUE(worksAcrossRestart());
    write("short");
    EXPECT_TRUE(worksAcrossRestart());
}

TEST_F(ListingStoreFilesTest, anEmptyFileBecomesAStore)
{
    write("");
    EXPECT_TRUE(worksAcrossRestart());
}

TEST_F(ListingStoreFilesTest, aTruncatedFileIsReplacedAtTheLatestAtTheNextStart)
{
    makeStore();
    auto const whole = contentOf(databasePath());
    ASSERT_GT(whole.size(), 200'000U);
    for (auto const size : {std::size_t{1}, std::size_t{100}, std::size_t{4'096}, std::size_t{5'000}, whole.size() / 2,
                            whole.size() - 4'096, whole.size() - 1}) {
        write(whole.substr(0, size));
        if (open()) {
            useEverything();
            close();
        }
        EXPECT_TRUE(worksAcrossRestart()) << size;
    }
}

TEST_F(ListingStoreFilesTest, aFileThatIsDamagedAnywhereIsReplacedAtTheLatestAtTheNextStart)
{
    makeStore();
    auto const whole = contentOf(databasePath());
    constexpr std::size_t page = 4'096;
    for (auto const filler : {'\0', '\xFF', 'x'}) {
        for (std::size_t damagedPage = 0; damagedPage < 12; ++damagedPage) {
            auto content = whole;
            content.replace(damagedPage * page, page, page, filler);
            write(content);
            if (open()) {
                useEverything();
                close();
            }
            EXPECT_TRUE(worksAcrossRestart()) << "page " << damagedPage << " of " << int{filler};
        }
    }
}

TEST_F(ListingStoreFilesTest, aStoreThatProvesDamagedIsNotUsedAnyMore)
{
    makeStore();
    ASSERT_TRUE(open());
    ASSERT_TRUE(has("/srv/199"));
    auto const size = static_cast<std::int64_t>(fs::file_size(databasePath()));
    std::fstream stream(databasePath(), std::ios::binary | std::ios::in | std::ios::out);
    stream.seekp(4'096) << std::string(static_cast<std::size_t>(size) - 4'096, '\xFF');
    stream.close();
    // Not what is remembered in memory of the file, but the file.
    ASSERT_EQ(runSql("PRAGMA user_version = 1"), SqliteResult::done);
    useEverything();
    EXPECT_FALSE(fs::exists(databasePath()));
    EXPECT_FALSE(has("/srv/1"));
    EXPECT_EQ(statistics().rows, 0);
    save("/srv", {});
    EXPECT_FALSE(fs::exists(databasePath())) << "a store that is given up is not begun again before the next start";
    close();
    EXPECT_TRUE(worksAcrossRestart());
}

TEST_F(ListingStoreFilesTest, aDamagedFileThatAnotherHasOpenIsReplacedWhenThatIsGone)
{
    ASSERT_TRUE(open());
    save("/srv", {file("a")});
    auto const other = std::exchange(store, nullptr);
    loop.run(other->load(host, "/srv"));
    fs::resize_file(databasePath(), 0);
    std::ofstream(databasePath(), std::ios::binary) << std::string(8'192, 'x');
    fs::remove(databasePath() + "-wal");

    EXPECT_FALSE(open());
    EXPECT_TRUE(fs::exists(databasePath()));
    loop.run(other->close());
    EXPECT_TRUE(worksAcrossRestart());
}

TEST_F(ListingStoreFilesTest, theDatabaseOfAnotherProgramIsLeftAlone)
{
    fs::create_directories(cacheFolder);
    for (auto const *const schema :
         {"CREATE TABLE bookmarks (url TEXT); INSERT INTO bookmarks VALUES ('kept')",
          "CREATE TABLE listings (house TEXT, price INTEGER); INSERT INTO listings VALUES ('kept', 1)",
          "CREATE VIEW listings AS SELECT 'kept'"}) {
        fs::remove(databasePath());
        ASSERT_EQ(runSql(schema), SqliteResult::done);
        auto const before = contentOf(databasePath());
        EXPECT_FALSE(open()) << schema;
        EXPECT_EQ(contentOf(databasePath()), before) << schema;
        EXPECT_FALSE(fs::exists(databasePath() + "-wal")) << schema;
    }
}

TEST_F(ListingStoreFilesTest, aJournalWithoutItsDatabaseDoesNotHarmTheNextOne)
{
    fs::create_directories(cacheFolder);
    for (auto const *const suffix : {"-journal", "-wal", "-shm"})
        std::ofstream(databasePath() + suffix, std::ios::binary) << std::string(40'000, 'j');
    write("no database");
    EXPECT_TRUE(worksAcrossRestart());
}

TEST_F(ListingStoreFilesTest, manyWhoStartAtOnceOverADamagedFileShareOneNewStore)
{
    for (int round = 0; round < 10; ++round) {
        write("damaged " + std::to_string(round));
        constexpr int starters = 4;
        std::vector<std::shared_ptr<ListingStore>> stores(starters);
        {
            std::vector<std::jthread> threads;
            for (auto &started : stores)
                threads.emplace_back([this, &started] { started = create(); });
        }
        for (int i = 0; i < starters; ++i) {
            ASSERT_TRUE(stores[static_cast<std::size_t>(i)]) << "round " << round;
            auto const path = "/" + std::to_string(i);
            loop.run(stores[static_cast<std::size_t>(i)]->save(host, {{path, listing(path, {}, clock->now())}}));
        }
        for (auto const &started : stores)
            EXPECT_EQ(loop.run(started->statistics()).rows, starters) << "round " << round;
        for (auto const &started : stores)
            loop.run(started->close());
    }
}

TEST_F(ListingStoreFilesTest, twoStoresOverOneFileSeeWhatTheOtherSaves)
{
    ASSERT_TRUE(open());
    auto const other = create();
    ASSERT_TRUE(other);
    save("/srv", {file("a")});
    EXPECT_TRUE(loop.run(other->load(host, "/srv")));
    loop.run(other->remove(host, "/srv"));
    EXPECT_FALSE(has("/srv"));
    loop.run(other->close());
}

} // namespace
} // namespace tw::test
