#pragma once

#include "TWEngine/Store/SqliteStatement.h"

#include <memory>
#include <optional>
#include <string>

struct sqlite3;

namespace tw {

/// An open SQLite database, closed with the object.
///
/// Threads: one at a time; SQLite's own mutex is off. All operations block.
class SqliteDatabase {
public:
    /// Absent if the file cannot be opened. SQLite finds out whether the file is a database when it first reads it.
    ///
    /// No component of `path` may be a symbolic link.
    static std::optional<SqliteDatabase> open(std::string const &path);

    /// Runs one or several statements and ignores their rows.
    SqliteResult run(char const *statements);

    /// Absent if the statement cannot be prepared; `lastResult` has the reason.
    std::optional<SqliteStatement> prepare(std::string_view statement);

    /// The result of the last call.
    SqliteResult lastResult() const;

    /// The number of rows that the last statement changed.
    std::int64_t changes() const;

    /// False after SQLite has rolled back by itself, as it does on a full disk or an I/O error.
    bool isInTransaction() const;

private:
    struct Close {
        void operator()(sqlite3 *database) const noexcept;
    };

    explicit SqliteDatabase(sqlite3 *database) noexcept : handle(database) {}

    std::unique_ptr<sqlite3, Close> handle;
};

} // namespace tw
