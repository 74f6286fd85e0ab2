#include "tests/support/ListingStoreTest.h"

#include <fstream>

#include <sys/stat.h>

namespace tw::test {
namespace {

namespace fs = std::filesystem;

/// What may be in the place of the store's file, and who may read the file.
class ListingStoreFilesTest : public ListingStoreTest {
protected:
    static mode_t modeOf(std::string const &path)
    {
        struct stat status;
        return ::lstat(path.c_str(), &status) == 0 ? status.st_mode & 07777U : 0;
    }

    /// Makes a database of several pages, and closes it.
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

    /// Everything that a program does with a store whose file breaks while it runs.
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

/// A generous user: new files are open to everybody unless their mode says otherwise.
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
    ::chmod(databasePath().c_str(), 0666);
    ::chmod(cacheFolder.c_str(), 0777);
    ASSERT_TRUE(open());
    EXPECT_TRUE(has("/srv/7"));
    EXPECT_EQ(modeOf(cacheFolder), 0700U);
    EXPECT_EQ(modeOf(databasePath()), 0600U);
}

TEST_F(ListingStoreFilesTest, theFolderMayLieBehindALink)
{
    cacheFolder = folder.link("link", folder.folder("real")) + "/tarnwick";
    EXPECT_TRUE(worksAcrossRestart());
    EXPECT_TRUE(fs::exists(folder.path("real/tarnwick/listings.sqlite")));
}

TEST_F(ListingStoreFilesTest, aLinkInPlaceOfTheFileIsReplacedAndNotFollowed)
{
    auto const foreign = folder.file("foreign", "");
    fs::create_directories(cacheFolder);
    for (auto const &target : {foreign, folder.path("nowhere")}) {
        fs::remove(databasePath());
        fs::create_symlink(target, databasePath());
        EXPECT_TRUE(worksAcrossRestart());
        EXPECT_FALSE(fs::is_symlink(databasePath()));
    }
    EXPECT_EQ(contentOf(foreign), "");
    EXPECT_FALSE(fs::exists(folder.path("nowhere")));
}

TEST_F(ListingStoreFilesTest, thereIsNoStoreWhereSomethingElseIsInTheWay)
{
    fs::create_directories(databasePath() + "/with something in it");
    EXPECT_FALSE(open());
    EXPECT_TRUE(fs::exists(databasePath() + "/with something in it"));
    cacheFolder = folder.file("file") + "/tarnwick";
    EXPECT_FALSE(open());
}

TEST_F(ListingStoreFilesTest, whatIsNoDatabaseIsReplaced)
{
    for (auto const *const content : {"", "short",
                                      "Not a database, and longer than the header of one would be, which "
                                      "has a hundred bytes in it."}) {
        write(content);
        EXPECT_TRUE(worksAcrossRestart()) << content;
    }
}

TEST_F(ListingStoreFilesTest, aDatabaseOfAnotherSchemaIsReplaced)
{
    fs::create_directories(cacheFolder);
    for (auto const *const schema :
         {"CREATE TABLE listings (house TEXT, price INTEGER)", "CREATE VIEW listings AS SELECT 1"}) {
        fs::remove(databasePath());
        ASSERT_EQ(runSql(schema), SqliteResult::done);
        EXPECT_TRUE(worksAcrossRestart()) << schema;
    }
}

TEST_F(ListingStoreFilesTest, aFileThatIsDamagedAnywhereIsReplacedAtTheLatestWhenItIsUsed)
{
    makeStore();
    auto const whole = contentOf(databasePath());
    constexpr std::size_t page = 4'096;
    ASSERT_GT(whole.size(), 12 * page);
    std::vector<std::string> damaged{whole.substr(0, 1), whole.substr(0, 100), whole.substr(0, whole.size() / 2)};
    for (std::size_t number = 0; number < 12; ++number)
        damaged.push_back(std::string(whole).replace(number * page, page, page, number % 2 == 0 ? 'x' : '\0'));
    for (std::size_t which = 0; which < damaged.size(); ++which) {
        write(damaged[which]);
        ASSERT_TRUE(open());
        useEverything();
        save("/after", {file("a")});
        close();
        ASSERT_TRUE(open());
        EXPECT_TRUE(has("/after")) << "damage " << which;
        close();
    }
}

TEST_F(ListingStoreFilesTest, aStoreThatProvesDamagedIsMadeAnewAtOnce)
{
    makeStore();
    ASSERT_TRUE(open());
    ASSERT_TRUE(has("/srv/199"));
    auto const size = static_cast<std::int64_t>(fs::file_size(databasePath()));
    std::fstream stream(databasePath(), std::ios::binary | std::ios::in | std::ios::out);
    stream.seekp(4'096) << std::string(static_cast<std::size_t>(size) - 4'096, '\xFF');
    stream.close();
    // So that SQLite reads the file again, and does not answer from memory.
    ASSERT_EQ(runSql("PRAGMA user_version = 1"), SqliteResult::done);
    EXPECT_FALSE(has("/srv/1"));
    EXPECT_EQ(statistics().rows, 0);
    save("/srv", {file("a")});
    EXPECT_TRUE(has("/srv"));
    close();
    EXPECT_TRUE(worksAcrossRestart());
}

TEST_F(ListingStoreFilesTest, aJournalWithoutItsDatabaseDoesNotHarmTheNextOne)
{
    fs::create_directories(cacheFolder);
    for (auto const *const suffix : {"-journal", "-wal", "-shm"})
        std::ofstream(databasePath() + suffix, std::ios::binary) << std::string(40'000, 'j');
    write("no database");
    EXPECT_TRUE(worksAcrossRestart());
}

TEST_F(ListingStoreFilesTest, aStoreWhoseFileAnotherProcessReplacesStaysUsable)
{
    ASSERT_TRUE(open());
    save("/srv", {file("a")});
    auto const first = std::exchange(store, nullptr);
    for (auto const *const suffix : {"-wal", "-shm", ""})
        fs::remove(databasePath() + suffix); // as the other process does
    ASSERT_TRUE(open());
    save("/other", {file("b")});

    EXPECT_TRUE(loop.run(first->load(host, "/srv")));
    loop.run(first->save(host, {{"/more", listing("/more", {}, clock->now())}}));
    loop.run(first->close());
    close();
    EXPECT_TRUE(worksAcrossRestart());
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
