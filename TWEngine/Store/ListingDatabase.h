#pragma once

#include "TWCore/Provider/FileSystemProvider.h"
#include "TWEngine/Store/SqliteDatabase.h"
#include "TWEngine/Store/StoreFolder.h"

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
/// Errors: none is reported. What cannot be read is not there, what cannot be written is not remembered. The one thing
/// that makes a difference is damage, see `isDamaged`.
class ListingDatabase {
public:
    /// Null if there is none to be had. A damaged file is replaced by an empty one, if no other process has it open;
    /// one that cannot be opened for any other reason, or that is the database of another program, is left as it is.
    static std::unique_ptr<ListingDatabase> open(std::string const &directory);

    /// Whether an operation found that the file is broken. It is of no more use then: see `discard`.
    bool isDamaged() const noexcept { return damaged; }

    /// Closes a damaged database and removes its file, unless another process has it open. Whoever opens next makes a
    /// new one.
    static void discard(std::unique_ptr<ListingDatabase> database);

    struct Loaded {
        bool isAnswered = false; ///< there was a database to look into
        std::optional<DirectorySnapshot> listing;
    };

    /// The listing of `path`, unless it is older than `maxAge`, or damaged.
    Loaded load(std::string_view provider, std::string path, std::chrono::system_clock::time_point now,
                std::chrono::duration<double> maxAge);

    /// All in one transaction.
    void save(std::string_view provider, Listings const &listings);

    void remove(std::string_view provider, std::string_view path);
    void removeTree(std::string_view provider, std::string_view path);
    void removeAll(std::string_view provider);

    /// Deletes some of the rows that were fetched before that second. False: there are none left.
    bool removeSomeBefore(std::int64_t fetched);

    /// Deletes some of the oldest rows, as long as there are more than `maxBytes`. False: there is nothing left to do.
    /// Rows of one second go together, and only if that does not delete more than there is too much: what remains may
    /// be over by part of the next ones.
    bool removeSomeOver(std::int64_t maxBytes);

    struct Size {
        std::int64_t rows = 0;
        std::int64_t bytes = 0;
    };

    Size size();

private:
    enum class Opening { usable, damaged, refused };

    explicit ListingDatabase(StoreFolder place) : folder(std::move(place)) {}

    Opening openFile();
    Opening openReplacingDamage();
    Opening examine();

    /// A statement that is ready for its first step, or nothing.
    std::optional<SqliteStatement> prepare(std::string_view statement);
    SqliteResult step(SqliteStatement &statement);
    SqliteResult run(char const *statements);
    void runWith(std::string_view statement, std::initializer_list<std::string_view> texts);

    /// In a transaction. False if it cannot be committed.
    bool insert(std::string_view provider, Listings const &listings);

    /// The rows that come first by age and have that many bytes together, or fewer. How many rows that were.
    std::int64_t removeOldest(std::int64_t bytes);

    StoreFolder folder; ///< goes after the database, whose use it guards
    std::optional<SqliteDatabase> database;
    bool damaged = false;
};

} // namespace tw
