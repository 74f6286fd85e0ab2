// Another process that writes into a SQLite database: takes the lock for it, says so, and keeps it until its input
// ends.

#include <cstdio>
#include <sqlite3.h>

#include <unistd.h>

int main(int count, char **arguments)
{
    sqlite3 *database = nullptr;
    if (count != 2 || sqlite3_open(arguments[1], &database) != SQLITE_OK ||
        sqlite3_exec(database, "BEGIN IMMEDIATE; DELETE FROM listings", nullptr, nullptr, nullptr) != SQLITE_OK)
        return 1;
    std::puts("locked");
    std::fflush(stdout);
    char byte = 0;
    while (::read(STDIN_FILENO, &byte, 1) > 0) {
    }
    sqlite3_exec(database, "ROLLBACK", nullptr, nullptr, nullptr);
    sqlite3_close(database);
    return 0;
}
