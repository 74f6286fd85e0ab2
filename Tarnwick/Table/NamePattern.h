#pragma once

#include <array>
#include <bitset>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tw {

/// One wildcard pattern. It matches what fnmatch matches with no flags, in the locale of its making.
///
/// fnmatch decodes every name anew and knows all signs, and so takes ten times as long. It is asked about each letter
/// of a bracket once, and about names and patterns for which the parts here are no match: names that are not text,
/// and brackets with a bracket or a backslash in them.
///
/// Threads: one at a time.
class NamePattern {
public:
    explicit NamePattern(std::string pattern);

    /// Whether it matches the whole name. The name holds no zero byte.
    bool matches(std::string_view name) const;

private:
    /// What fnmatch has answered for letters of more than one byte: the last answer for each remainder.
    struct Answers {
        static constexpr std::size_t count = 256;
        std::array<std::uint32_t, count> letters{}; ///< the bytes of each
        std::bitset<count> isIn;
    };

    struct Part {
        enum class Kind { text, anyLetter, letterOf, anyText };

        Kind kind;
        std::string text = {};                        ///< of a `letterOf` the pattern for one letter
        std::bitset<256> bytes = {};                  ///< the members of a `letterOf` of one byte
        mutable std::unique_ptr<Answers> others = {}; ///< and the others, as far as they are known
    };

    /// What a "?" stands for.
    enum class Unit { byte, letter };

    static std::optional<std::vector<Part>> partsOf(std::string_view pattern);
    static bool isIn(Part const &set, std::string_view letter);
    /// How many bytes of the beginning of `rest` the part stands for.
    static std::optional<std::size_t> lengthOf(Part const &part, std::string_view rest, Unit unit);
    /// The place, from `at` on, of the next beginning of what the part stands for; the end if there is none.
    static std::size_t placeOf(Part const &part, std::string_view name, std::size_t at, Unit unit);
    bool partsMatch(std::string_view name, Unit unit) const;
    static bool headMatches(std::span<Part const> all, std::string_view name, Unit unit);

    // Constant after construction.
    std::string text;
    std::optional<std::vector<Part>> parts; ///< nothing: only fnmatch knows
    std::optional<std::size_t> lastStar;    ///< the place of the last `anyText`
    std::size_t tailBytes = 0;              ///< what follows it stands for, with letters of one byte
    bool hasLetters = false;                ///< there is a part that stands for one letter, so that letters matter
    bool isUtf8 = false;                    ///< the locale has letters of several bytes, encoded like this
};

} // namespace tw
