#pragma once

#include "TWEngine/Transfer/Blamed.h"
#include "TWEngine/Transfer/Transfer.h"

#include <deque>
#include <unordered_map>

namespace tw {

/// How far the stream of a tar pipe has got in the names that it carries.
///
/// Memory: an entry for each name, and one for each piece of what may still be on its way.
class TransferLog {
public:
    /// What may have left us without having been unpacked: two windows of ssh of 2 MiB, on both sides of the line, and
    /// the pipes at its ends.
    static constexpr std::int64_t mostInFlight = std::int64_t{8} << 20U;

    explicit TransferLog(std::vector<std::string> names);

    /// A member begins at this byte of the stream, and so many files are whole by then.
    void begin(std::string_view member, std::int64_t position, std::int64_t files);

    /// The stream has passed that byte, and so many files are whole by then.
    void passed(std::int64_t position, std::int64_t files);

    /// The stream ends with this byte, and has so many files.
    void end(std::int64_t position, std::int64_t files);

    /// These names are not complete, whatever has passed of them.
    void blame(Blamed const &blamed);

    enum class Arrival {
        everything,    ///< what has passed has been unpacked
        allButInFlight ///< the last of it may not have been
    };

    TransferSummary summary(Arrival arrival) const;

private:
    struct Name {
        std::string name;
        std::int64_t begun = -1; ///< in bytes of the stream; negative: not begun
        std::int64_t ended = -1;
        std::int64_t filesBefore = 0; ///< of the stream
        std::int64_t files = 0;       ///< of this name, once it has ended
        bool isBlamed = false;
    };

    struct Mark {
        std::int64_t position = 0;
        std::int64_t files = 0;
    };

    void endCurrent(std::int64_t position, std::int64_t files);

    std::vector<Name> names;
    bool isAnyBlamed = false;
    std::unordered_map<std::string, std::size_t> places;
    std::optional<std::size_t> current; ///< the name whose members pass
    std::deque<Mark> marks{{}};         ///< the oldest first; the first is arrived for certain
};

} // namespace tw
