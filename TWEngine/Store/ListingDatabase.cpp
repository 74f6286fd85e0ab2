#include "TWEngine/Store/ListingDatabase.h"

#include "TWCore/Model/SnapshotCodec.h"

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

/// Deleted content is overwritten where that costs no writing of its own. Debian's SQLite zeroes every page that it
/// frees, and would write two hundred megabytes of zeros, twice, to throw as many away; the file is private with or
/// without.
constexpr char habits[] = "PRAGMA secure_delete = FAST";

/// Tables of others, and whether ours is there.
constexpr char contents[] = "SELECT COALESCE(SUM(tbl_name <> 'listings'), 0), COALESCE(SUM(name = 'listings'), 0)\n"
                            "FROM sqlite_master WHERE name NOT LIKE 'sqlite@_%' ESCAPE '@'";

constexpr char columns[] = "SELECT id, provider, path, fetched, bytes, blob FROM listings";

/// A look into the table and both of its indexes: some pages, whatever the size.
constexpr char probe[] = "SELECT bytes FROM listings ORDER BY fetched LIMIT 1;\n"
                         "SELECT bytes FROM listings ORDER BY id DESC LIMIT 1;\n"
                         "SELECT bytes FROM listings ORDER BY provider, path LIMIT 1;";

constexpr char upsert[] = "INSERT INTO listings (provider, path, fetched, bytes, blob)\n"
                          "VALUES (?, ?, ?, ?, ?)\n"
                          "ON CONFLICT(provider, path) DO UPDATE SET\n"
                          "  fetched = excluded.fetched,\n"
                          "  bytes   = excluded.bytes,\n"
                          "  blob    = excluded.blob";

/// What one call deletes when there is much to delete, so that others have their turn in between: some ten
/// milliseconds' worth of it.
constexpr std::int64_t rowsAtATime = 500;
constexpr std::int64_t bytesAtATime = 8 << 20;

std::int64_t wholeSeconds(std::chrono::system_clock::time_point time)
{
    return std::chrono::duration_cast<std::chrono::seconds>(time.time_since_epoch()).count();
}

} // namespace

std::unique_ptr<ListingDatabase> ListingDatabase::open(std::string const &directory)
{
    auto folder = StoreFolder::open(directory);
    if (!folder)
        return nullptr;
    std::unique_ptr<ListingDatabase> listings(new ListingDatabase(*std::move(folder)));
    if (listings->openReplacingDamage() != Opening::usable)
        return nullptr;
    listings->folder.share();
    return listings;
}

ListingDatabase::Opening ListingDatabase::openReplacingDamage()
{
    auto const opening = openFile();
    if (opening != Opening::damaged || !folder.isAlone())
        return opening;
    database.reset();
    folder.removeDatabase();
    return openFile();
}

ListingDatabase::Opening ListingDatabase::openFile()
{
    if (!folder.preparePrivateFile())
        return Opening::refused;
    database = SqliteDatabase::open(folder.databasePath());
    if (!database)
        return Opening::refused;
    damaged = false;
    auto const opening = examine();
    return damaged ? Opening::damaged : opening;
}

ListingDatabase::Opening ListingDatabase::examine()
{
    {
        // Looked at before anything is written: a database of another program's is not ours to change.
        auto statement = prepare(contents);
        if (!statement || step(*statement) != SqliteResult::row || statement->integer(0) > 0)
            return Opening::refused;
        if (statement->integer(1) > 0 && !prepare(columns))
            return Opening::refused;
    }
    if (run(habits) != SqliteResult::done || run(schema) != SqliteResult::done || run(probe) != SqliteResult::done)
        return Opening::refused;
    return Opening::usable;
}

void ListingDatabase::discard(std::unique_ptr<ListingDatabase> database)
{
    database->database.reset();
    if (database->folder.tryToBeAlone())
        database->folder.removeDatabase();
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
    // Decoded where SQLite has it: the names are copied out once, and the blob is not. An empty one does not decode.
    return {.isAnswered = true, .listing = SnapshotCodec::decode(statement->blob(0), path)};
}

void ListingDatabase::save(std::string_view provider, Listings const &listings)
{
    // Whoever does not get the lock here would wait for it again with every row.
    if (listings.empty() || run("BEGIN IMMEDIATE") != SqliteResult::done)
        return;
    if (!insert(provider, listings) || run("COMMIT") != SqliteResult::done)
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
        step(*statement); // one that cannot be kept does not keep the others from it
        // Unless SQLite has rolled back by itself: what follows would be a transaction for each row.
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
    // The rows of one scan have one time, and may be more than are deleted at a time.
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
