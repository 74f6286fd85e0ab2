#pragma once

#include "TWCore/Provider/Survey.h"

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

namespace tw {

/// The script that has a POSIX host list everything below some names of a folder.
///
/// For a shell of its own, that reads it from its standard input: the list may be longer than a session keeps. `mark`
/// is a random text, of letters and digits, by which no name is taken for the beginning of a row.
std::string surveyScript(std::string_view mark, std::string_view folder, std::span<std::string const> names);

/// Reads what that script prints, as it comes, and keeps the sums only.
class SurveyReader {
public:
    /// A row has a path and a link's target, which no system lets grow beyond this.
    static constexpr std::size_t maxRowBytes = 64U << 10U;

    explicit SurveyReader(std::string mark, Survey::Detail kept = Survey::Detail::sums)
        : rowMark(std::move(mark) + ' '), detail(kept)
    {
    }

    void read(std::string_view bytes);

    /// True if the list has come to its end without an error: nothing is missing, and nothing was unreadable.
    bool isComplete() const noexcept { return state == State::complete; }

    /// The first words that are no row, for a message; at most maxRowBytes.
    std::string const &strayWords() const noexcept { return stray; }

    Survey const &survey() const noexcept { return result; }

private:
    enum class State { reading, complete, failed };

    void readRow(std::string_view row);
    void addNode(std::string_view row);

    std::string const rowMark;
    Survey::Detail const detail;
    std::string pending; ///< the beginning of a row
    std::string stray;
    State state = State::reading;
    Survey result;
};

} // namespace tw
