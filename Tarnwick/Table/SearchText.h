#pragma once

#include <string>
#include <string_view>

namespace tw {

/// What a person types to find a name: the committed text with its caret, and what an input method has not committed
/// yet. All texts are UTF-8; the caret stands between two characters as a reader counts them.
class SearchText {
public:
    /// The longest name of any host has no more: 255 characters of up to four bytes. A held key stops here.
    static constexpr std::size_t longestBytes = 1024;

    std::string const &committed() const noexcept { return text; }

    std::string const &composing() const noexcept { return uncommitted; }

    bool isEmpty() const noexcept { return text.empty() && uncommitted.empty(); }

    /// Inserts at the caret. Control characters are left out; a text for which there is no room is left out whole.
    void insert(std::string_view typed);

    /// Deletes the character before the caret. False: there is none.
    bool deleteBeforeCaret();

    enum class Step { back, forward };

    /// Moves the caret by one character, within the text.
    void moveCaret(Step step);

    /// Replaces the uncommitted text.
    void compose(std::string typed);

    /// Inserts the uncommitted text as it stands.
    void commitComposing();

    void clear() { *this = {}; }

    /// Both texts, with "|" for the caret behind the uncommitted one.
    std::string shown() const;

private:
    std::string text;
    std::size_t caret = 0; ///< bytes
    std::string uncommitted;
};

} // namespace tw
