#pragma once

namespace tw {

/// The result of a call of SQLite, as far as callers distinguish it.
enum class SqliteResult {
    done,
    row,     ///< a statement has a row to read
    damaged, ///< the file is broken, is no database, or has another schema: no retry helps
    failed   ///< anything else, such as locked, full, not permitted, an I/O error: a retry may help
};

/// Converts a result code of SQLite, extended or not.
SqliteResult sqliteResult(int code) noexcept;

} // namespace tw
