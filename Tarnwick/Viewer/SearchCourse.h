#pragma once

#include "TWCore/Shell/FileSearch.h"

#include <chrono>
#include <cstdint>
#include <optional>

namespace tw {

/// The parts of a file in which a search looks, one after the other: from a place to one end, then from the other end
/// back to the place.
class SearchCourse {
public:
    /// The first step: long enough that its time says more than a round trip. An expression takes longer where no
    /// `grep` runs it.
    static constexpr std::int64_t bytesOfStep = 256 << 20;
    static constexpr std::int64_t expressionBytesOfStep = 8 << 20;

    /// What a later step should take: a step costs a round trip, and between two of them a search can be cancelled.
    static constexpr std::chrono::seconds timeOfStep{4};

    /// However fast the steps before were.
    static constexpr std::int64_t mostBytesOfStep = std::int64_t(4) << 30;
    static constexpr std::int64_t mostGrowthOfStep = 32;

    /// What may be searched without steps, where the progress can be asked for. A host that loses its connection reads
    /// that far for nobody.
    static constexpr std::int64_t mostBytesAtOnce = std::int64_t(16) << 30;

    /// Matches that begin at `from` or behind it come first, or those before it. `size` is that of the file.
    SearchCourse(FileSearch::Sought const &sought, FileSearch::Which direction, std::int64_t from, std::int64_t size);

    /// The next part; nothing when the whole file was searched.
    std::optional<FileSearch::Part> next();

    /// Where the search of the last part may go on to, see FileSearch::Question.
    std::int64_t farthest() const;

    /// How long the last part took, and where it ended if that is farther; later parts are made longer or shorter after
    /// it.
    void took(std::chrono::nanoseconds time, std::int64_t to);

    FileSearch::Which direction() const noexcept { return which; }

    /// Whether the search has gone on at the other end.
    bool hasWrapped() const noexcept { return isSecondHalf; }

    /// Of the file, before the part that came last.
    std::int64_t bytesSearched() const noexcept { return searched; }

private:
    FileSearch::Which which;
    std::int64_t origin;
    std::int64_t total;
    std::int64_t firstStep;
    std::int64_t step;
    std::int64_t overlap; ///< a match that begins in one part may end in the next
    std::int64_t at;
    std::int64_t searched = 0;
    std::int64_t lastStep = 0;
    bool isSecondHalf = false;
    bool mayGoOn; ///< behind a part
};

} // namespace tw
