#include "Tarnwick/Table/SearchText.h"

#include "TWCore/Check.h"

#include <unicode/ubrk.h>
#include <unicode/utext.h>

#include <memory>
#include <utility>

namespace tw {

namespace {

struct CloseText {
    void operator()(UText *text) const { utext_close(text); }
};

struct CloseIterator {
    void operator()(UBreakIterator *iterator) const { ubrk_close(iterator); }
};

/// The next border between two characters of a text, in bytes. A syllable, an accented letter and an emoji are one
/// character, however many code points they have.
std::size_t borderBeside(std::string_view text, std::size_t position, SearchText::Step step)
{
    auto status = U_ZERO_ERROR;
    std::unique_ptr<UText, CloseText> const bytes(
        utext_openUTF8(nullptr, text.data(), static_cast<std::int64_t>(text.size()), &status));
    std::unique_ptr<UBreakIterator, CloseIterator> const borders(ubrk_open(UBRK_CHARACTER, "", nullptr, 0, &status));
    ubrk_setUText(borders.get(), bytes.get(), &status);
    check(U_SUCCESS(status) != 0, "ICU came without its data for characters");
    auto const from = static_cast<std::int32_t>(position);
    auto const border =
        step == SearchText::Step::back ? ubrk_preceding(borders.get(), from) : ubrk_following(borders.get(), from);
    return border == UBRK_DONE ? position : static_cast<std::size_t>(border);
}

std::string withoutControls(std::string_view typed)
{
    std::string text(typed);
    std::erase_if(text, [](char each) { return static_cast<unsigned char>(each) < 0x20 || each == 0x7F; });
    return text;
}

} // namespace

void SearchText::insert(std::string_view typed)
{
    auto const added = withoutControls(typed);
    if (text.size() + added.size() > longestBytes)
        return;
    text.insert(caret, added);
    caret += added.size();
}

bool SearchText::deleteBeforeCaret()
{
    if (caret == 0)
        return false;
    auto const start = borderBeside(text, caret, Step::back);
    text.erase(start, caret - start);
    caret = start;
    return true;
}

void SearchText::moveCaret(Step step)
{
    caret = borderBeside(text, caret, step);
}

void SearchText::compose(std::string typed)
{
    uncommitted = withoutControls(typed);
    if (uncommitted.size() > longestBytes)
        uncommitted.clear();
}

void SearchText::commitComposing()
{
    insert(std::exchange(uncommitted, {}));
}

std::string SearchText::shown() const
{
    return text.substr(0, caret) + uncommitted + "|" + text.substr(caret);
}

} // namespace tw
