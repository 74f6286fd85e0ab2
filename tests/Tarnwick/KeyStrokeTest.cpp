#include "Tarnwick/Commands/KeyStroke.h"

#include "Tarnwick/Commands/CommandTable.h"

#include <gtest/gtest.h>

namespace tw::test {
namespace {

/// Where keys are, named by what they type on a US keyboard.
namespace key {
constexpr std::uint32_t one = 10;
constexpr std::uint32_t zero = 19;
constexpr std::uint32_t minus = 20;
constexpr std::uint32_t equals = 21;
constexpr std::uint32_t q = 24;
constexpr std::uint32_t r = 27;
constexpr std::uint32_t bracketLeft = 34;
constexpr std::uint32_t bracketRight = 35;
constexpr std::uint32_t a = 38;
constexpr std::uint32_t k = 45;
constexpr std::uint32_t backslash = 51;
constexpr std::uint32_t m = 58;
constexpr std::uint32_t period = 60;
} // namespace key

KeyStroke withControl(std::string sign, std::uint32_t scanCode = 0)
{
    return {.sign = std::move(sign), .control = true, .scanCode = scanCode};
}

KeyStroke withControlAndShift(std::string sign, std::uint32_t scanCode = 0)
{
    return {.sign = std::move(sign), .control = true, .shift = true, .scanCode = scanCode};
}

using Found = std::optional<Command>;

TEST(KeyStrokeTest, everyShortcutOfTheTableIsSpelledAsAPressOfItIs)
{
    for (auto const &row : commandTable()) {
        if (row.keys.owner != KeyOwner::shortcut)
            continue;
        for (std::string_view const chord : {row.keys.main, row.keys.additional}) {
            if (chord.empty())
                continue;
            KeyStroke stroke;
            auto rest = chord;
            for (auto const &[name, held] : {std::pair(std::string_view("Ctrl+"), &KeyStroke::control),
                                             std::pair(std::string_view("Alt+"), &KeyStroke::alt),
                                             std::pair(std::string_view("Shift+"), &KeyStroke::shift)}) {
                if (rest.starts_with(name)) {
                    stroke.*held = true;
                    rest.remove_prefix(name.size());
                }
            }
            stroke.sign = rest;
            EXPECT_EQ(spelled(stroke), chord);
            EXPECT_EQ(commandOf(stroke), row.command) << chord;
        }
    }
}

TEST(KeyStrokeTest, onAUSKeyboardThePlusIsTheChordOfTheEqualsSign)
{
    EXPECT_EQ(commandOf(withControlAndShift("+", key::equals)), Command::targetIsSource);
    EXPECT_EQ(commandOf(withControl("=", key::equals)), Command::textBigger);
    EXPECT_EQ(commandOf(withControl("-", key::minus)), Command::textSmaller);
    EXPECT_EQ(commandOf(withControlAndShift(">", key::period)), Command::toggleHidden);
}

TEST(KeyStrokeTest, onAGermanKeyboardSignsThatItDoesNotHaveAreFoundByTheirPlace)
{
    EXPECT_EQ(commandOf(withControl("Ü", key::bracketLeft)), Command::back);
    EXPECT_EQ(commandOf(withControl("#", key::backslash)), Command::equalizePanes);
    EXPECT_EQ(commandOf(withControlAndShift(":", key::period)), Command::toggleHidden);
    EXPECT_EQ(commandOf(withControl("ß", key::minus)), Command::textSmaller);
}

TEST(KeyStrokeTest, onAGermanKeyboardSignsThatItHasAreFoundWhereItHasThem)
{
    EXPECT_EQ(commandOf(withControl("+", key::bracketRight)), Command::textBigger);
    EXPECT_EQ(commandOf({.sign = "Right", .alt = true}), Command::forward) << "since its place has the plus";
    EXPECT_EQ(commandOf(withControl("]")), Command::forward);
    EXPECT_EQ(commandOf(withControlAndShift("=", key::zero)), Command::targetIsSource);
}

TEST(KeyStrokeTest, aSignThatTheLayoutTypesWithShiftIsThatSign)
{
    EXPECT_EQ(commandOf(withControlAndShift("+", key::one)), Command::textBigger) << "on a Swiss keyboard";
    EXPECT_EQ(commandOf(withControlAndShift("0", key::zero)), Command::textActualSize) << "on a French one";
}

TEST(KeyStrokeTest, onARussianKeyboardALetterIsFoundByItsPlace)
{
    EXPECT_EQ(commandOf(withControl("К", key::r)), Command::refresh);
    EXPECT_EQ(commandOf(withControl("Л", key::k)), Command::connect);
    EXPECT_EQ(commandOf(withControl("Й", key::q)), Command::quit);
    EXPECT_EQ(commandOf(withControlAndShift("Ю", key::period)), Command::toggleHidden);
    EXPECT_EQ(commandOf(withControl("Х", key::bracketLeft)), Command::back);
    EXPECT_EQ(commandOf(withControl("Ъ", key::bracketRight)), Command::forward);
}

TEST(KeyStrokeTest, onAKoreanKeyboardALetterIsFoundByItsPlace)
{
    EXPECT_EQ(commandOf(withControl("ㄱ", key::r)), Command::refresh);
    EXPECT_EQ(commandOf(withControl("ㅏ", key::k)), Command::connect);
    EXPECT_EQ(commandOf(withControl("[", key::bracketLeft)), Command::back);
}

TEST(KeyStrokeTest, onAFrenchKeyboardALatinLetterIsNoOtherOne)
{
    EXPECT_EQ(commandOf(withControl("A", key::q)), Command::markAll);
    EXPECT_EQ(commandOf(withControl("Q", key::a)), Command::quit);
    EXPECT_EQ(commandOf(withControl(",", key::m)), Found());
    EXPECT_EQ(commandOf(withControl("À", key::zero)), Command::textActualSize);
}

TEST(KeyStrokeTest, aSignOfTheKeypadIsAKeyOfThePane)
{
    auto plus = withControl("+");
    plus.keypad = true;
    EXPECT_EQ(commandOf(plus), Found());
}

TEST(KeyStrokeTest, aLetterAloneIsNoCommand)
{
    EXPECT_EQ(commandOf({.sign = "К", .scanCode = key::r}), Found());
    EXPECT_EQ(commandOf({.sign = "R", .scanCode = key::r}), Found());
    EXPECT_EQ(commandOf({}), Found());
}

TEST(KeyStrokeTest, aKeyOutsideTheRowsOfSignsTypesNone)
{
    for (auto const scanCode : {0U, 9U, 22U, 36U, 50U, 62U, 94U, 4'000'000'000U})
        EXPECT_EQ(usSignOf(scanCode), 0) << scanCode;
    EXPECT_EQ(usSignOf(34), '[');
}

} // namespace
} // namespace tw::test
