#include "TWEngine/Store/SqliteStatement.h"

#include <sqlite3.h>

namespace tw {

void SqliteStatement::Finalize::operator()(sqlite3_stmt *statement) const noexcept
{
    sqlite3_finalize(statement);
}

void SqliteStatement::bind(int parameter, std::string_view value)
{
    // A null pointer would bind NULL, and an empty text is none.
    auto const *const text = value.empty() ? "" : value.data();
    note(sqlite3_bind_text64(handle.get(), parameter, text, value.size(), SQLITE_STATIC, SQLITE_UTF8));
}

void SqliteStatement::bind(int parameter, std::int64_t value)
{
    note(sqlite3_bind_int64(handle.get(), parameter, value));
}

void SqliteStatement::bindBlob(int parameter, std::string_view value)
{
    auto const *const bytes = value.empty() ? "" : value.data();
    note(sqlite3_bind_blob64(handle.get(), parameter, bytes, value.size(), SQLITE_STATIC));
}

SqliteResult SqliteStatement::step()
{
    return isBound ? sqliteResult(sqlite3_step(handle.get())) : SqliteResult::failed;
}

void SqliteStatement::reset()
{
    sqlite3_reset(handle.get()); // tells once more how the last step ended
    sqlite3_clear_bindings(handle.get());
    isBound = true;
}

std::int64_t SqliteStatement::integer(int column) const
{
    return sqlite3_column_int64(handle.get(), column);
}

std::string_view SqliteStatement::blob(int column) const
{
    auto const *const bytes = static_cast<char const *>(sqlite3_column_blob(handle.get(), column));
    return bytes ? std::string_view(bytes, static_cast<std::size_t>(sqlite3_column_bytes(handle.get(), column)))
                 : std::string_view();
}

} // namespace tw
