#include "Tarnwick/Toolkit/Table/KeyPresses.h"

#include <gtest/gtest.h>

namespace tw::test {
namespace {

KeyPress pressed(int key, Qt::KeyboardModifiers held = Qt::NoModifier, QString const &text = {})
{
    return keyPressOf(QKeyEvent(QEvent::KeyPress, key, held, text));
}

TEST(KeyPressesTest, keysAreToldByTheirPosition)
{
    std::pair<int, Key> const expected[] = {
        {Qt::Key_Home, Key::home},
        {Qt::Key_End, Key::end},
        {Qt::Key_PageUp, Key::pageUp},
        {Qt::Key_PageDown, Key::pageDown},
        {Qt::Key_Up, Key::up},
        {Qt::Key_Down, Key::down},
        {Qt::Key_Left, Key::left},
        {Qt::Key_Right, Key::right},
        {Qt::Key_Return, Key::enter},
        {Qt::Key_Tab, Key::tab},
        {Qt::Key_Backtab, Key::tab},
        {Qt::Key_Space, Key::space},
        {Qt::Key_Backspace, Key::backspace},
        {Qt::Key_Delete, Key::forwardDelete},
        {Qt::Key_Insert, Key::insert},
        {Qt::Key_Help, Key::insert},
        {Qt::Key_Escape, Key::escape},
        {Qt::Key_A, Key::character},
        {Qt::Key_F5, Key::character},
    };
    for (auto const &[key, meaning] : expected)
        EXPECT_EQ(pressed(key).key, meaning) << key;
}

TEST(KeyPressesTest, theSignsOfTheNumericPadAreKeysOfTheirOwn)
{
    EXPECT_EQ(pressed(Qt::Key_Plus, Qt::KeypadModifier).key, Key::keypadPlus);
    EXPECT_EQ(pressed(Qt::Key_Minus, Qt::KeypadModifier).key, Key::keypadMinus);
    EXPECT_EQ(pressed(Qt::Key_Asterisk, Qt::KeypadModifier).key, Key::keypadTimes);
    EXPECT_EQ(pressed(Qt::Key_Plus).key, Key::character);
    EXPECT_EQ(pressed(Qt::Key_5, Qt::KeypadModifier).key, Key::character);
    EXPECT_EQ(pressed(Qt::Key_Enter, Qt::KeypadModifier).key, Key::enter);
    EXPECT_TRUE(pressed(Qt::Key_Enter, Qt::KeypadModifier).isPlain());
}

TEST(KeyPressesTest, bracketsWithControlAreKnownByTheirPlaceOnAnyLayout)
{
    constexpr quint32 leftPlace = 34; // of the kernel's key 26, as X11 and Wayland count
    constexpr quint32 rightPlace = 35;
    auto const pressedAt = [](quint32 place, int key, Qt::KeyboardModifiers held) {
        return keyPressOf(QKeyEvent(QEvent::KeyPress, key, held, place, 0, 0)).key;
    };
    EXPECT_EQ(pressedAt(leftPlace, Qt::Key_BracketLeft, Qt::ControlModifier), Key::leftBracket);
    EXPECT_EQ(pressedAt(rightPlace, Qt::Key_BracketRight, Qt::ControlModifier), Key::rightBracket);
    EXPECT_EQ(pressedAt(leftPlace, Qt::Key_Udiaeresis, Qt::ControlModifier), Key::leftBracket) << "German";
    EXPECT_EQ(pressedAt(rightPlace, 0x042A, Qt::ControlModifier), Key::rightBracket) << "Cyrillic";
    EXPECT_EQ(pressedAt(leftPlace, Qt::Key_BracketLeft, Qt::NoModifier), Key::character);
    EXPECT_EQ(pressedAt(30, Qt::Key_A, Qt::ControlModifier), Key::character);
}

TEST(KeyPressesTest, whatWasHeldIsTold)
{
    EXPECT_TRUE(pressed(Qt::Key_Up).isPlain());
    EXPECT_TRUE(pressed(Qt::Key_Up, Qt::ShiftModifier).isShiftAlone());
    EXPECT_TRUE(pressed(Qt::Key_Up, Qt::ControlModifier).control);
    EXPECT_TRUE(pressed(Qt::Key_Up, Qt::AltModifier).alt);
    EXPECT_TRUE(pressed(Qt::Key_Up, Qt::MetaModifier).meta);
    EXPECT_FALSE(pressed(Qt::Key_Up, Qt::ShiftModifier | Qt::AltModifier).isShiftAlone());
}

TEST(KeyPressesTest, whatIsTypedIsTold)
{
    EXPECT_EQ(pressed(Qt::Key_A, Qt::NoModifier, QStringLiteral("ä")).text, "ä");
    EXPECT_EQ(pressed(Qt::Key_F5).text, "");
}

} // namespace
} // namespace tw::test
