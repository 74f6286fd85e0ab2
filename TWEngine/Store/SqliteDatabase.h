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
    /// Absent if it cannot be opened. That the file is a database shows only when it is read.
    ///
    /// No component of `path` may be a symbolic link.
    static std::optional<SqliteDatabase> open(std::string const &path);

    /// Runs one or several statements and looks at no rows.
    SqliteResult run(char const *statements);

    /// Absent if it cannot be prepared; why, `lastResult` tells.
    std::optional<SqliteStatement> prepare(std::string_view statement);

    /// How the last call ended.
    SqliteResult lastResult() const;

    /// How many rows the last statement changed.
    std::int64_t changes() const;

    /// SQLite itself rolls back what meets a full disk or an I/O error.
    bool isInTransaction() const;

private:
    struct Close {
        void operator()(sqlite3 *database) const noexcept;
    };

    explicit SqliteDatabase(sqlite3 *database) noexcept : handle(database) {}

    std::unique_ptr<sqlite3, Close> handle;
};

} // namespace tw
