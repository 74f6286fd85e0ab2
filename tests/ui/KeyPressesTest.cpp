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
