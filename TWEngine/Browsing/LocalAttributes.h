#pragma once

#include "TWCore/Model/Entry.h"
#include "TWEngine/Runtime/HelperThreads.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <map>
#include <mutex>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace tw {

/// Takes kind, size, time and mode from the system. False: the system does not tell, and `entry` stays as it is.
///
/// `name` is relative to the descriptor `directory`. A link is not followed. Blocks.
bool setLocalAttributes(Entry &entry, int directory, std::string const &name);

/// Asks for the attributes of a directory's entries: of a large directory on several threads.
///
/// One fstatat(2) an entry, by name relative to the open directory. An entry that cannot be examined keeps the kind
/// that it came with.
///
/// Threads: of one thread, which works too; the helpers end before the object.
class LocalAttributes {
public:
    /// Some entries in the order of the directory. Each points into `names` of its part.
    struct Part {
        std::string names;
        std::vector<Entry> entries;
    };

    /// Rows by name that are taken as they are, without a question to the system. None: the entry counts as one that
    /// cannot be examined.
    using Known = std::map<std::string, std::optional<Entry>, std::less<>>;

    /// Below, threads cost more than they save on a local disk.
    static constexpr std::size_t largeDirectory = 2000;

    /// More gain nothing even where each question takes milliseconds, and burden a file server.
    static constexpr std::size_t mostThreads = 16;

    /// How many threads ask when one question takes that long.
    static std::size_t threadsFor(std::chrono::nanoseconds question);

    /// All of them outlive it. A requested stop makes `finish` throw Cancelled.
    LocalAttributes(int openDirectory, Known const &knownRows, HelperThreads::Budget &helperBudget,
                    std::stop_token const &stopToken)
        : directory(openDirectory), known(knownRows), stop(stopToken), helpers(helperBudget)
    {
    }

    /// Helpers end soon: what they have begun is finished, and the rest is left out.
    ~LocalAttributes();

    /// The next part. Throws Cancelled.
    void add(Part part);

    /// All parts with their attributes, in order. Nothing may be added later.
    std::deque<Part> finish();

private:
    std::chrono::nanoseconds examine(Part &part) const;
    bool examineNext(std::unique_lock<std::mutex> &lock);
    void help();

    // Constant after construction.
    int const directory;
    Known const &known;
    std::stop_token const &stop;

    std::mutex mutex;
    std::condition_variable changed;
    // Under the mutex.
    std::deque<Part> parts;
    std::size_t next = 0;  ///< the first part that no thread has taken
    std::size_t busy = 0;  ///< parts that a thread has taken and not finished
    std::size_t added = 0; ///< entries
    bool isComplete = false;
    HelperThreads helpers; ///< destroyed first: they use all above
};

} // namespace tw
