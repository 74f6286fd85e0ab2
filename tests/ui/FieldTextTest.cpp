#include "Tarnwick/Toolkit/Appearance/FieldText.h"

#include <gtest/gtest.h>

namespace tw::test {
namespace {

std::string backAndForth(std::string const &bytes)
{
    return FieldText::bytesOf(FieldText::ofBytes(bytes));
}

TEST(FieldTextTest, validTextIsItself)
{
    for (auto const *const text : {"", "a.txt", "é 한 😀", "\xEF\xBF\xBD", "a\nb\x7F"}) {
        EXPECT_EQ(FieldText::ofBytes(text), QString::fromUtf8(text));
        EXPECT_EQ(backAndForth(text), text);
    }
}

TEST(FieldTextTest, anyTwoBytesComeBackWhateverIsAroundThem)
{
    for (auto first = 0; first < 256; ++first) {
        for (auto second = 0; second < 256; ++second) {
            std::string const pair{static_cast<char>(first), static_cast<char>(second)};
            for (auto const &bytes : {pair, "a" + pair + "z", "\xF0\x9F" + pair, "\xF0\x9F\x98\x80" + pair + "\x80"})
                ASSERT_EQ(backAndForth(bytes), bytes) << first << " " << second;
        }
    }
}

TEST(FieldTextTest, whatQtWouldDropOrReplaceComesBack)
{
    for (auto const *const bytes : {"\xEF\xBB\xBFmark", "\xED\xB2\x80", "\xC0\xAF", "\xF4\x90\x80\x80", "\xE2\x82"})
        EXPECT_EQ(backAndForth(bytes), bytes);
}

TEST(FieldTextTest, eachInvalidByteIsOneCharacter)
{
    EXPECT_EQ(FieldText::ofBytes("bad\xFF\xFEname").size(), 9);
}

TEST(FieldTextTest, halfACharacterOfAnotherProgramIsReplaced)
{
    EXPECT_EQ(FieldText::bytesOf(QString(QChar(0xD83D))), "\xEF\xBF\xBD");
    EXPECT_EQ(FieldText::bytesOf(QString(QChar(0xDC7F))), "\xEF\xBF\xBD");
}

} // namespace
} // namespace tw::test
