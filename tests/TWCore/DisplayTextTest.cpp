#include "TWCore/Model/DisplayText.h"

#include <unicode/uchar.h>
#include <unicode/utf8.h>

namespace tw::test {

TEST(DisplayTextTest, wellFormedTextStaysAsItIs)
{
    for (std::string const text :
         {"", "plain", "\xC3\xA9t\xC3\xA9", "\xED\x95\x9C\xEA\xB8\x80", "\xF0\x9F\x93\x81", "a\nb"})
        EXPECT_EQ(repaired(text), text);
    EXPECT_EQ(repaired(std::string_view("a\0b", 3)), std::string("a\0b", 3));
}

TEST(DisplayTextTest, aByteThatCannotStandThereIsReplaced)
{
    EXPECT_EQ(repaired("a\xFF"
                       "b"),
              "a\xEF\xBF\xBD"
              "b");
    EXPECT_EQ(repaired("\x80\x80"), "\xEF\xBF\xBD\xEF\xBF\xBD");
    EXPECT_EQ(repaired("\xC0\xAF"), "\xEF\xBF\xBD\xEF\xBF\xBD");                 // an overlong "/"
    EXPECT_EQ(repaired("\xED\xA0\x80"), "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"); // half of a surrogate pair
}

TEST(DisplayTextTest, aSequenceThatBreaksOffIsReplacedOnce)
{
    EXPECT_EQ(repaired("x\xE2\x82"), "x\xEF\xBF\xBD");
    EXPECT_EQ(repaired("\xF0\x9F\x93/"), "\xEF\xBF\xBD/");
    EXPECT_EQ(repaired("\xC3.txt"), "\xEF\xBF\xBD.txt");
}

TEST(DisplayTextTest, everyControlCharacterIsShownOnOneLine)
{
    for (int control = 0; control < 0x20; ++control) {
        // U+2400 and on: E2 90 80 and on.
        auto const symbol = std::string("\xE2\x90") + static_cast<char>(0x80 + control);
        EXPECT_EQ(onOneLine("a" + std::string(1, static_cast<char>(control)) + "b"), "a" + symbol + "b") << control;
    }
    EXPECT_EQ(onOneLine("\x7F"), "\xE2\x90\xA1");
    EXPECT_EQ(onOneLine("a\r\nb"), "a\xE2\x90\x8D\xE2\x90\x8A"
                                   "b");
}

TEST(DisplayTextTest, theOtherLineEndsAndControlsOfUnicodeAreShownToo)
{
    std::string const newLine = "\xE2\x90\xA4";
    EXPECT_EQ(onOneLine("\xC2\x85"), newLine);     // U+0085
    EXPECT_EQ(onOneLine("\xE2\x80\xA8"), newLine); // U+2028
    EXPECT_EQ(onOneLine("\xE2\x80\xA9"), newLine); // U+2029
    EXPECT_EQ(onOneLine("\xC2\x80\xC2\x9F"), "\xEF\xBF\xBD\xEF\xBF\xBD");
}

TEST(DisplayTextTest, anythingElseOnOneLineIsOnlyRepaired)
{
    EXPECT_EQ(onOneLine("plain \xC3\xA9\xC2\xA0\xED\x95\x9C"), "plain \xC3\xA9\xC2\xA0\xED\x95\x9C");
    EXPECT_EQ(onOneLine("x\xE2\x82"), "x\xEF\xBF\xBD");
    EXPECT_EQ(onOneLine(""), "");
}

TEST(DisplayTextTest, aNameCannotPassForAnotherOne)
{
    EXPECT_EQ(onOneLine("d_rtl\xE2\x80\xAEtxt.exe"), "d_rtl\xEF\xBF\xBDtxt.exe"); // U+202E
    for (auto const *mark : {"\xE2\x80\xAA", "\xE2\x80\xAB", "\xE2\x80\xAC", "\xE2\x80\xAD", "\xE2\x80\xAE",
                             "\xE2\x81\xA6", "\xE2\x81\xA7", "\xE2\x81\xA8", "\xE2\x81\xA9", "\xE2\x80\x8E",
                             "\xE2\x80\x8F", "\xD8\x9C", "\xE2\x80\x8B", "\xEF\xBB\xBF", "\xC2\xAD", "\xE3\x85\xA4"})
        EXPECT_EQ(onOneLine(mark), "\xEF\xBF\xBD");
}

TEST(DisplayTextTest, nothingThatIsHiddenIsMissed)
{
    for (char32_t character = 0xA0; character <= 0x10FFFF; ++character) {
        auto const point = static_cast<UChar32>(character);
        if (U_IS_SURROGATE(point))
            continue;
        char bytes[U8_MAX_LENGTH];
        std::size_t length = 0;
        U8_APPEND_UNSAFE(bytes, length, point);
        std::string const text(bytes, length);
        bool const isHidden = u_hasBinaryProperty(point, UCHAR_DEFAULT_IGNORABLE_CODE_POINT) != 0 ||
                              u_hasBinaryProperty(point, UCHAR_BIDI_CONTROL) != 0;
        bool const isLineEnd = point == 0x2028 || point == 0x2029;
        ASSERT_EQ(withNothingHidden(text) != text, isHidden || isLineEnd) << point;
    }
}

TEST(DisplayTextTest, whatShapesAWordOrAnEmojiStays)
{
    for (auto const *shaped : {"\xD9\x85\xDB\x8C\xE2\x80\x8C\xD8\xAE",              // Persian, with U+200C
                               "\xF0\x9F\x91\xA9\xE2\x80\x8D\xF0\x9F\x92\xBB",      // two emoji and U+200D
                               "\xE2\x9A\xA0\xEF\xB8\x8E",                          // U+26A0, U+FE0E
                               "\xF0\x9F\x8F\xB4\xF3\xA0\x81\xA7\xF3\xA0\x81\xBF"}) // the begin of a flag
        EXPECT_EQ(onOneLine(shaped), shaped);
}

TEST(DisplayTextTest, whatIsHiddenInANameIsSeen)
{
    std::string const sign = "\xEF\xBF\xBD";
    EXPECT_EQ(withNothingHidden("a\xE2\x80\xAE"
                                "b"),
              "a" + sign + "b"); // U+202E, which turns the text round
    for (auto const *hidden : {"\xE2\x80\x8B", "\xE2\x80\x8D", "\xE2\x80\x8E", "\xE2\x81\xA6", "\xE2\x81\xA9",
                               "\xD8\x9C", "\xEF\xBB\xBF", "\xC2\xAD", "\xEF\xB8\x8E"})
        EXPECT_EQ(withNothingHidden(hidden), sign);
    EXPECT_EQ(withNothingHidden("a\tb\xFF"), onOneLine("a\tb\xFF"));
    EXPECT_EQ(withNothingHidden("h\xC3\xB6st.example \xED\x95\x9C"), "h\xC3\xB6st.example \xED\x95\x9C");
}

} // namespace tw::test
