#pragma once

#include "TWEngine/Store/SqliteResult.h"

#include <cstdint>
#include <memory>
#include <string_view>

struct sqlite3_stmt;

namespace tw {

/// A prepared statement, finalised with the object. Parameters are numbered from 1, columns from 0.
///
/// Lifetime: destroyed before the database that prepared it.
/// Errors: a parameter that cannot be bound makes the next step fail.
class SqliteStatement {
public:
    explicit SqliteStatement(sqlite3_stmt *prepared) noexcept : handle(prepared) {}

    /// Copies nothing: `value` must outlive the statement or its next reset.
    void bind(int parameter, std::string_view value);
    void bind(int parameter, std::int64_t value);
    void bindBlob(int parameter, std::string_view value);

    SqliteResult step();

    /// Makes the statement ready to run again, with nothing bound.
    void reset();

    std::int64_t integer(int column) const;

    /// A blob in SQLite's memory, valid until the next step or reset. Empty for null.
    std::string_view blob(int column) const;

private:
    struct Finalize {
        void operator()(sqlite3_stmt *statement) const noexcept;
    };

    void note(int code) noexcept { isBound = isBound && sqliteResult(code) == SqliteResult::done; }

    std::unique_ptr<sqlite3_stmt, Finalize> handle;
    bool isBound = true; ///< since the last reset
};

} // namespace tw
