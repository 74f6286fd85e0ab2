#include "TWEngine/Store/SqliteDatabase.h"

#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <limits>
#include <sqlite3.h>

namespace tw::test {
namespace {

TEST(SqliteResultTest, onlyAFileOfNoUseIsDamage)
{
    for (auto const code : {SQLITE_ERROR, SQLITE_CORRUPT, SQLITE_CORRUPT_INDEX, SQLITE_CORRUPT_VTAB, SQLITE_NOTADB})
        EXPECT_EQ(sqliteResult(code), SqliteResult::damaged) << code;
    for (auto const code :
         {SQLITE_BUSY, SQLITE_BUSY_RECOVERY, SQLITE_LOCKED, SQLITE_CANTOPEN, SQLITE_READONLY, SQLITE_READONLY_DIRECTORY,
          SQLITE_FULL, SQLITE_IOERR, SQLITE_IOERR_READ, SQLITE_IOERR_SHORT_READ, SQLITE_NOMEM, SQLITE_PERM, SQLITE_AUTH,
          SQLITE_SCHEMA, SQLITE_CONSTRAINT, SQLITE_TOOBIG, SQLITE_PROTOCOL})
        EXPECT_EQ(sqliteResult(code), SqliteResult::failed) << code;
    EXPECT_EQ(sqliteResult(SQLITE_OK), SqliteResult::done);
    EXPECT_EQ(sqliteResult(SQLITE_DONE), SqliteResult::done);
    EXPECT_EQ(sqliteResult(SQLITE_ROW), SqliteResult::row);
}

class SqliteDatabaseTest : public ::testing::Test {
protected:
    TemporaryFolder folder;
    std::optional<SqliteDatabase> database = SqliteDatabase::open(folder.path("test.sqlite"));
};

TEST_F(SqliteDatabaseTest, whatIsBoundIsWhatIsRead)
{
    auto statement = database->prepare("SELECT ?, ?, LENGTH(?), TYPEOF(?)");
    ASSERT_TRUE(statement);
    std::string const bytes("\0\xFF", 2);
    statement->bind(1, std::numeric_limits<std::int64_t>::min());
    statement->bindBlob(2, bytes);
    statement->bind(3, std::string_view("four"));
    statement->bind(4, std::string_view());
    ASSERT_EQ(statement->step(), SqliteResult::row);
    EXPECT_EQ(statement->integer(0), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(statement->blob(1), bytes);
    EXPECT_EQ(statement->integer(2), 4);
    EXPECT_EQ(statement->blob(3), "text") << "an empty text is not null";
    EXPECT_EQ(statement->step(), SqliteResult::done);
}

TEST_F(SqliteDatabaseTest, aResetStatementIsBoundAnew)
{
    auto statement = database->prepare("SELECT COALESCE(?, 7)");
    statement->bind(1, std::int64_t{1});
    ASSERT_EQ(statement->step(), SqliteResult::row);
    statement->reset();
    ASSERT_EQ(statement->step(), SqliteResult::row);
    EXPECT_EQ(statement->integer(0), 7);
}

TEST_F(SqliteDatabaseTest, aStatementWithAParameterThatCannotBeBoundDoesNotRun)
{
    auto statement = database->prepare("SELECT ?");
    statement->bind(2, std::int64_t{1});
    EXPECT_EQ(statement->step(), SqliteResult::failed);
    statement->reset();
    statement->bind(1, std::int64_t{1});
    EXPECT_EQ(statement->step(), SqliteResult::row);
}

TEST_F(SqliteDatabaseTest, aStatementThatIsNoneIsAbsentAndSaysWhy)
{
    EXPECT_FALSE(database->prepare("SELEKT"));
    EXPECT_EQ(database->lastResult(), SqliteResult::damaged);
}

TEST_F(SqliteDatabaseTest, itTellsOfTransactionsAndChanges)
{
    ASSERT_EQ(database->run("CREATE TABLE t (n); BEGIN; INSERT INTO t VALUES (1), (2)"), SqliteResult::done);
    EXPECT_TRUE(database->isInTransaction());
    EXPECT_EQ(database->changes(), 2);
    ASSERT_EQ(database->run("COMMIT"), SqliteResult::done);
    EXPECT_FALSE(database->isInTransaction());
}

TEST_F(SqliteDatabaseTest, aLinkIsNotOpened)
{
    ASSERT_EQ(database->run("CREATE TABLE t (n)"), SqliteResult::done);
    EXPECT_FALSE(SqliteDatabase::open(folder.link("link", folder.path("test.sqlite"))));
}

TEST_F(SqliteDatabaseTest, aFileThatIsNoDatabaseIsDamagedWhenItIsRead)
{
    auto text = SqliteDatabase::open(folder.file("text", std::string(1'000, 't')));
    ASSERT_TRUE(text);
    EXPECT_EQ(text->run("SELECT * FROM sqlite_master"), SqliteResult::damaged);
}

} // namespace
} // namespace tw::test
