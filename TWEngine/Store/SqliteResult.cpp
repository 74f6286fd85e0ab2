#include "TWEngine/Store/SqliteResult.h"

#include <sqlite3.h>

namespace tw {

SqliteResult sqliteResult(int code) noexcept
{
    constexpr int primaryCode = 0xFF; // an extended code has its primary one in the low byte
    switch (code & primaryCode) {
    case SQLITE_OK:
    case SQLITE_DONE:
        return SqliteResult::done;
    case SQLITE_ROW:
        return SqliteResult::row;
    case SQLITE_ERROR: // all statements are ours and correct, so the schema is not ours
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
        return SqliteResult::damaged;
    default:
        return SqliteResult::failed;
    }
}

} // namespace tw
