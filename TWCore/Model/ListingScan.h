#pragma once

#include "TWCore/Model/ListingParser.h"

#include <unordered_map>
#include <vector>

namespace tw {

/// The reading of one stream of ListingParser, also while the stream is still coming.
///
/// What was read is not read again: a stream that is read in parts costs one pass.
///
/// Threads: used by one at a time.
class ListingScan {
public:
    using Time = std::chrono::system_clock::time_point;
    using Completeness = ListingParser::Completeness;

    /// `maxDepth` is the depth that the scan was asked for.
    ListingScan(std::string_view rootPath, int maxDepth);

    ListingScan(ListingScan const &) = delete;
    ListingScan &operator=(ListingScan const &) = delete;

    /// Reads on. `stream` is all that has come: what was passed before, and more. If that is not much more, it is left
    /// for the next time. A stream that is shorter than what was read is another one, and is read from its start.
    void advance(std::string_view stream);

    /// The entries of the root in `stream`, which is as for `advance`; marked as truncated.
    DirectorySnapshot part(std::string_view stream, Time fetchedAt);

    /// All listings; see ListingParser::parse. `stream` begins with what was passed before. Called once, and last.
    std::map<std::string, DirectorySnapshot> finish(NameStorage stream, Time fetchedAt, Completeness completeness);

private:
    enum class LastRecord { waitsForItsEnd, isDroppedWithoutEnd, needsNoEnd };

    void read(std::string_view stream, LastRecord lastRecord);
    void take(std::string_view path, std::size_t offset, Entry entry);
    void enterRun(std::string_view directory);
    bool isReached() const;
    std::vector<Entry> &discover(std::string const &path);
    void startAgain();

    using Folders = std::unordered_map<std::string, std::vector<Entry>>;

    // Constant after construction.
    std::string const root;
    int const maxDepth;

    std::size_t position = 0; ///< before it all records were read
    Folders folders;
    std::vector<Folders::value_type *> order; ///< the folders as they were found

    // A run is a stretch of records of one folder: within it no path is made and nothing is looked up.
    bool isInRun = false;
    bool isRunDropped = false;
    std::string runDirectory;                 ///< relative to the root
    std::string runPath;                      ///< absolute
    std::vector<Entry> *runEntries = nullptr; ///< null until the run has an entry
};

} // namespace tw
