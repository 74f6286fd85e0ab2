#include "Tarnwick/Commands/KeyStroke.h"

#include "Tarnwick/Commands/CommandTable.h"

#include <algorithm>
#include <string_view>

namespace tw {

namespace {

/// The rows of keys on a keyboard, by the number of their first key.
struct KeyRow {
    std::uint32_t firstScanCode;
    std::string_view signs;
};

constexpr KeyRow keyRows[] = {
    {10, "1234567890-="},
    {24, "QWERTYUIOP[]"},
    {38, "ASDFGHJKL;'`"},
    {51, "\\ZXCVBNM,./"},
};

constexpr bool isLetter(char sign)
{
    return sign >= 'A' && sign <= 'Z';
}

constexpr bool isDigit(char sign)
{
    return sign >= '0' && sign <= '9';
}

bool isOneByte(std::string_view sign)
{
    return sign.size() == 1 && static_cast<unsigned char>(sign.front()) < 0x80;
}

/// True for a sign of Greek, Cyrillic, Korean and whatever comes behind them in Unicode. Latin ends at U+024F, whose
/// first byte is 0xC9.
bool isBeyondLatin(std::string_view sign)
{
    return !sign.empty() && static_cast<unsigned char>(sign.front()) > 0xC9;
}

/// True if a key may count as the one that is in its place on a US keyboard.
bool countsAs(char usSign, std::string_view sign)
{
    if (isLetter(usSign))
        return isBeyondLatin(sign);
    return !isOneByte(sign) || (!isLetter(sign.front()) && !isDigit(sign.front()));
}

std::optional<Command> commandWith(std::string_view chord)
{
    auto const has = [chord](CommandRow const &row) {
        return row.keys.owner == KeyOwner::shortcut && (row.keys.main == chord || row.keys.additional == chord);
    };
    auto const rows = commandTable();
    auto const found = std::ranges::find_if(rows, has);
    return found != rows.end() ? std::optional(found->command) : std::nullopt;
}

} // namespace

std::string spelled(KeyStroke const &stroke)
{
    std::string chord;
    for (auto const &[isHeld, name] : {std::pair(stroke.meta, "Meta+"), std::pair(stroke.control, "Ctrl+"),
                                       std::pair(stroke.alt, "Alt+"), std::pair(stroke.shift, "Shift+")}) {
        if (isHeld)
            chord += name;
    }
    return chord + stroke.sign;
}

char usSignOf(std::uint32_t scanCode)
{
    for (auto const &[first, signs] : keyRows) {
        if (scanCode >= first && scanCode < first + signs.size())
            return signs[scanCode - first];
    }
    return 0;
}

std::optional<Command> commandOf(KeyStroke const &stroke)
{
    // The keypad's signs are keys of a pane, whatever is held with them.
    if (stroke.sign.empty() || (stroke.keypad && isOneByte(stroke.sign) && !isDigit(stroke.sign.front())))
        return std::nullopt;
    if (auto const command = commandWith(spelled(stroke)))
        return command;
    if (auto const usSign = usSignOf(stroke.scanCode); usSign != 0 && countsAs(usSign, stroke.sign)) {
        auto inPlace = stroke;
        inPlace.sign = usSign;
        if (auto const command = commandWith(spelled(inPlace)))
            return command;
    }
    // A sign that the layout types with Shift.
    if (!stroke.shift || !isOneByte(stroke.sign) || isLetter(stroke.sign.front()))
        return std::nullopt;
    auto withoutShift = stroke;
    withoutShift.shift = false;
    return commandWith(spelled(withoutShift));
}

} // namespace tw
