#include "TWEngine/Store/SqliteDatabase.h"

#include <sqlite3.h>

namespace tw {

namespace {

/// How long a call waits for a lock of another process. A second instance of this program writes for some milliseconds
/// at a time; a longer wait would hold up every operation that is queued behind the call.
constexpr std::chrono::milliseconds lockWait{200};

} // namespace

void SqliteDatabase::Close::operator()(sqlite3 *database) const noexcept
{
    sqlite3_close_v2(database);
}

std::optional<SqliteDatabase> SqliteDatabase::open(std::string const &path)
{
    constexpr int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_NOFOLLOW;
    sqlite3 *opened = nullptr;
    auto const code = sqlite3_open_v2(path.c_str(), &opened, flags, nullptr);
    SqliteDatabase database(opened); // SQLite returns a handle to be closed even if it fails
    if (code != SQLITE_OK)
        return std::nullopt;
    sqlite3_busy_timeout(opened, static_cast<int>(lockWait.count()));
    return database;
}

SqliteResult SqliteDatabase::run(char const *statements)
{
    return sqliteResult(sqlite3_exec(handle.get(), statements, nullptr, nullptr, nullptr));
}

std::optional<SqliteStatement> SqliteDatabase::prepare(std::string_view statement)
{
    sqlite3_stmt *prepared = nullptr;
    auto const length = static_cast<int>(statement.size());
    if (sqlite3_prepare_v2(handle.get(), statement.data(), length, &prepared, nullptr) != SQLITE_OK)
        return std::nullopt;
    return SqliteStatement(prepared);
}

SqliteResult SqliteDatabase::lastResult() const
{
    return sqliteResult(sqlite3_errcode(handle.get()));
}

std::int64_t SqliteDatabase::changes() const
{
    return sqlite3_changes64(handle.get());
}

bool SqliteDatabase::isInTransaction() const
{
    return sqlite3_get_autocommit(handle.get()) == 0;
}

} // namespace tw
