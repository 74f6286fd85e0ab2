#pragma once

#include "TWCore/Provider/FileSystemProvider.h"
#include "TWEngine/Store/SqliteDatabase.h"

#include <chrono>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>

namespace tw {

/// The table of listings in its file: one row for each provider and path.
///
/// Threads: one at a time. All operations block.
/// Errors: not reported. What cannot be read is not found, what cannot be written is not remembered. Only damage makes
/// a difference, see `isDamaged`.
class ListingDatabase {
public:
    /// Opens the database in that folder, and makes the folder if it is missing. A file that is damaged, has another
    /// schema or cannot be opened is deleted and made anew: it is a cache. Null if that fails too, if another process
    /// holds a lock, or if the disk is full.
    static std::unique_ptr<ListingDatabase> open(std::string const &directory);

    /// True if an operation found the file broken.
    bool isDamaged() const noexcept { return damaged; }

    /// Deletes the file of a damaged database and makes a new one. Another process that has the old file open keeps
    /// working on it, and loses what it saves.
    static std::unique_ptr<ListingDatabase> replace(std::unique_ptr<ListingDatabase> damaged);

    struct Loaded {
        bool isAnswered = false; ///< the database could be asked
        std::optional<DirectorySnapshot> listing;
    };

    /// The listing of `path`, unless it is older than `maxAge` or does not decode.
    Loaded load(std::string_view provider, std::string path, std::chrono::system_clock::time_point now,
                std::chrono::duration<double> maxAge);

    /// Saves all listings in one transaction.
    void save(std::string_view provider, Listings const &listings);

    void remove(std::string_view provider, std::string_view path);
    void removeTree(std::string_view provider, std::string_view path);
    void removeAll(std::string_view provider);

    /// Deletes some of the rows that were fetched before that second. False if none is left.
    bool removeSomeBefore(std::int64_t fetched);

    /// Deletes some of the oldest rows while the blobs have more than `maxBytes`. False if nothing is left to do.
    /// The rows of one second are deleted together, and only if the rest does not fall below `maxBytes`: the rest may
    /// stay above it by part of one second's rows.
    bool removeSomeOver(std::int64_t maxBytes);

    struct Size {
        std::int64_t rows = 0;
        std::int64_t bytes = 0;
    };

    Size size();

private:
    explicit ListingDatabase(std::string path) : file(std::move(path)) {}

    static std::unique_ptr<ListingDatabase> openFile(std::string const &path);

    /// `damaged`: of no use, to be deleted. `failed`: it may work another time.
    SqliteResult prepareForUse();
    void removeFiles();

    /// A statement that is ready for its first step. Nothing if it cannot be prepared.
    std::optional<SqliteStatement> prepare(std::string_view statement);
    SqliteResult step(SqliteStatement &statement);
    SqliteResult run(char const *statements);
    void runWith(std::string_view statement, std::initializer_list<std::string_view> texts);

    /// Runs in a transaction. False if the transaction cannot be committed.
    bool insert(std::string_view provider, Listings const &listings);

    /// Deletes the oldest rows that have at most `bytes` together. Returns the number of rows.
    std::int64_t removeOldest(std::int64_t bytes);

    std::string const file;
    std::optional<SqliteDatabase> database;
    bool damaged = false;
};

} // namespace tw
