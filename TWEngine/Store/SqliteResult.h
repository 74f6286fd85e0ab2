#pragma once

namespace tw {

/// What became of a call of SQLite, as far as it makes a difference.
enum class SqliteResult {
    done,
    row,     ///< a statement has a row to read
    damaged, ///< the file is no database, or a broken one: it stays so whatever is tried
    failed   ///< anything else: locked, full, not permitted, an I/O error. It may work another time.
};

/// Of a result code of SQLite, extended or not.
SqliteResult sqliteResult(int code) noexcept;

} // namespace tw
