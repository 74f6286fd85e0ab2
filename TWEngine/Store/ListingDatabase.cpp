#include "TWEngine/Store/ListingDatabase.h"

#include "TWCore/Model/SnapshotCodec.h"
#include "TWEngine/Platform/PrivateFile.h"

#include <array>
#include <filesystem>

#include <sys/stat.h>
#include <unistd.h>

namespace tw {

namespace {

// A reader does not wait for a writer in WAL mode, and with normal synchronisation a commit does not wait for the disk:
// the last seconds may be lost with the power, and nothing else. Where the file system has no shared memory for it,
// SQLite stays with its rollback journal, and everything works at the pace of that.
constexpr char schema[] = "PRAGMA journal_mode = WAL;\n"
                          "PRAGMA synchronous = NORMAL;\n"
                          "CREATE TABLE IF NOT EXISTS listings (\n"
                          "  id       INTEGER PRIMARY KEY,\n"
                          "  provider TEXT    NOT NULL,\n"
                          "  path     TEXT    NOT NULL,\n"
                          "  fetched  INTEGER NOT NULL,\n"
                          "  bytes    INTEGER NOT NULL,\n"
                          "  blob     BLOB    NOT NULL\n"
                          ");\n"
                          "CREATE UNIQUE INDEX IF NOT EXISTS listings_key\n"
                          "  ON listings(provider, path);\n"
                          "CREATE INDEX IF NOT EXISTS listings_age ON listings(fetched);";

/// Debian's SQLite overwrites every page that it frees: it would write two hundred megabytes of zeros, twice, to delete
/// as many. FAST overwrites only where that costs no extra write; the file is private in either case.
constexpr char habits[] = "PRAGMA secure_delete = FAST";

/// Fails on a table of another schema. Reads the first entry of the table and of both indexes, so that most damage
/// shows at once, at the cost of a few pages.
constexpr char probe[] = "SELECT id, blob FROM listings LIMIT 1;\n"
                         "SELECT bytes FROM listings ORDER BY fetched LIMIT 1;\n"
                         "SELECT bytes FROM listings ORDER BY provider, path LIMIT 1;";

/// The database and what SQLite puts beside it. The database is removed last: a journal without its database would be
/// played back into the next one.
constexpr std::array suffixes{"-journal", "-wal", "-shm", ""};

constexpr char upsert[] = "INSERT INTO listings (provider, path, fetched, bytes, blob)\n"
                          "VALUES (?, ?, ?, ?, ?)\n"
                          "ON CONFLICT(provider, path) DO UPDATE SET\n"
                          "  fetched = excluded.fetched,\n"
                          "  bytes   = excluded.bytes,\n"
                          "  blob    = excluded.blob";

/// How much one call deletes, so that other operations get their turn: about ten milliseconds of work.
constexpr std::int64_t rowsAtATime = 500;
constexpr std::int64_t bytesAtATime = 8 << 20;

std::int64_t wholeSeconds(std::chrono::system_clock::time_point time)
{
    return std::chrono::duration_cast<std::chrono::seconds>(time.time_since_epoch()).count();
}

} // namespace

std::unique_ptr<ListingDatabase> ListingDatabase::open(std::string const &directory)
{
    constexpr mode_t forItsUser = 0700;
    auto const hasFolder = PrivateFile::makeFolderOf(directory + "/listings.sqlite");
    std::error_code failure;
    auto const folder =
        std::filesystem::canonical(directory, failure); // SQLite is not to follow links, see SqliteDatabase
    if (!hasFolder || failure)
        return nullptr;
    ::chmod(folder.c_str(), forItsUser); // best effort, for a folder that was there before
    return openFile(folder / "listings.sqlite");
}

std::unique_ptr<ListingDatabase> ListingDatabase::openFile(std::string const &path)
{
    for (auto const isFirst : {true, false}) {
        std::unique_ptr<ListingDatabase> listings(new ListingDatabase(path));
        if (auto const result = listings->prepareForUse(); result == SqliteResult::done)
            return listings;
        else if (result == SqliteResult::failed || !isFirst)
            break;
        listings->removeFiles();
    }
    return nullptr;
}

std::unique_ptr<ListingDatabase> ListingDatabase::replace(std::unique_ptr<ListingDatabase> damaged)
{
    damaged->removeFiles();
    return openFile(damaged->file);
}

SqliteResult ListingDatabase::prepareForUse()
{
    if (PrivateFile::make(file))
        database = SqliteDatabase::open(file);
    if (!database)
        return SqliteResult::damaged; // a link, a folder, or a file of another user
    for (auto const *const statements : {habits, schema, probe}) {
        if (auto const result = database->run(statements); result != SqliteResult::done)
            return result;
    }
    return SqliteResult::done;
}

void ListingDatabase::removeFiles()
{
    database.reset();
    for (auto const *const suffix : suffixes)
        ::unlink((file + suffix).c_str());
}

ListingDatabase::Loaded ListingDatabase::load(std::string_view provider, std::string path,
                                              std::chrono::system_clock::time_point now,
                                              std::chrono::duration<double> maxAge)
{
    auto statement = prepare("SELECT blob, fetched FROM listings WHERE provider = ? AND path = ?");
    if (!statement)
        return {};
    statement->bind(1, provider);
    statement->bind(2, path);
    if (step(*statement) != SqliteResult::row)
        return {.isAnswered = true, .listing = std::nullopt};
    auto const seconds = std::chrono::duration<double>(now.time_since_epoch());
    if (seconds.count() - static_cast<double>(statement->integer(1)) > maxAge.count())
        return {.isAnswered = true, .listing = std::nullopt};
    // Decoded in SQLite's memory: the names are copied once, the blob is not. An empty blob does not decode.
    return {.isAnswered = true, .listing = SnapshotCodec::decode(statement->blob(0), path)};
}

void ListingDatabase::save(std::string_view provider, Listings const &listings)
{
    // Without the lock, every row would wait for it again.
    if (listings.empty() || run("BEGIN IMMEDIATE") != SqliteResult::done)
        return;
    if ((!insert(provider, listings) || run("COMMIT") != SqliteResult::done) && database->isInTransaction())
        run("ROLLBACK");
}

bool ListingDatabase::insert(std::string_view provider, Listings const &listings)
{
    auto statement = prepare(upsert);
    if (!statement)
        return false;
    for (auto const &[path, snapshot] : listings) {
        auto const blob = SnapshotCodec::encode(snapshot);
        statement->reset();
        statement->bind(1, provider);
        statement->bind(2, path);
        statement->bind(3, wholeSeconds(snapshot.fetchedAt()));
        statement->bind(4, static_cast<std::int64_t>(blob.size()));
        statement->bindBlob(5, blob);
        step(*statement); // a row that fails does not stop the others
        // SQLite may have rolled back by itself; every further row would then be a transaction of its own.
        if (damaged || !database->isInTransaction())
            return false;
    }
    return true;
}

void ListingDatabase::remove(std::string_view provider, std::string_view path)
{
    runWith("DELETE FROM listings WHERE provider = ? AND path = ?", {provider, path});
}

void ListingDatabase::removeTree(std::string_view provider, std::string_view path)
{
    remove(provider, path);
    // Paths are compared byte by byte, so those below are the range from "path/" to the next byte behind the slash.
    auto const prefix = std::string(path == "/" ? "" : path);
    runWith("DELETE FROM listings WHERE provider = ? AND path >= ? AND path < ?",
            {provider, prefix + '/', prefix + char('/' + 1)});
}

void ListingDatabase::removeAll(std::string_view provider)
{
    runWith("DELETE FROM listings WHERE provider = ?", {provider});
}

bool ListingDatabase::removeSomeBefore(std::int64_t fetched)
{
    auto statement = prepare("DELETE FROM listings WHERE id IN (\n"
                             "  SELECT id FROM listings WHERE fetched < ? ORDER BY fetched LIMIT ?\n"
                             ")");
    if (!statement)
        return false;
    statement->bind(1, fetched);
    statement->bind(2, rowsAtATime);
    return step(*statement) == SqliteResult::done && database->changes() == rowsAtATime;
}

bool ListingDatabase::removeSomeOver(std::int64_t maxBytes)
{
    auto const over = size().bytes - maxBytes;
    if (over <= 0)
        return false;
    // The rows of one scan have the same time, and may be more than one call deletes.
    if (over > bytesAtATime && removeOldest(bytesAtATime) > 0)
        return true;
    removeOldest(over);
    return false;
}

std::int64_t ListingDatabase::removeOldest(std::int64_t bytes)
{
    auto statement = prepare("DELETE FROM listings WHERE id IN (\n"
                             "  SELECT id FROM (\n"
                             "    SELECT id, SUM(bytes) OVER (ORDER BY fetched) AS running\n"
                             "    FROM listings\n"
                             "  ) WHERE running <= ?\n"
                             ")");
    if (!statement)
        return 0;
    statement->bind(1, bytes);
    return step(*statement) == SqliteResult::done ? database->changes() : 0;
}

ListingDatabase::Size ListingDatabase::size()
{
    auto statement = prepare("SELECT COUNT(*), COALESCE(SUM(bytes),0) FROM listings");
    if (!statement || step(*statement) != SqliteResult::row)
        return {};
    return {.rows = statement->integer(0), .bytes = statement->integer(1)};
}

std::optional<SqliteStatement> ListingDatabase::prepare(std::string_view statement)
{
    auto prepared = database->prepare(statement);
    if (!prepared && database->lastResult() == SqliteResult::damaged)
        damaged = true;
    return prepared;
}

SqliteResult ListingDatabase::step(SqliteStatement &statement)
{
    auto const result = statement.step();
    if (result == SqliteResult::damaged)
        damaged = true;
    return result;
}

SqliteResult ListingDatabase::run(char const *statements)
{
    auto const result = database->run(statements);
    if (result == SqliteResult::damaged)
        damaged = true;
    return result;
}

void ListingDatabase::runWith(std::string_view statement, std::initializer_list<std::string_view> texts)
{
    auto prepared = prepare(statement);
    if (!prepared)
        return;
    int parameter = 0;
    for (auto const text : texts)
        prepared->bind(++parameter, text);
    step(*prepared);
}

} // namespace tw
