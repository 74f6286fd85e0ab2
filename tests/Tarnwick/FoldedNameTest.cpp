#include "Tarnwick/Table/FoldedName.h"

#include "TWCore/Model/DisplayText.h"

#include <gtest/gtest.h>
#include <unicode/normalizer2.h>
#include <unicode/unistr.h>

namespace tw::test {
namespace {

/// By ICU alone.
std::string expected(std::string const &name)
{
    auto status = U_ZERO_ERROR;
    auto text = icu::UnicodeString::fromUTF8(repaired(name)).foldCase();
    text = icu::Normalizer2::getNFCInstance(status)->normalize(text, status);
    std::string bytes;
    text.toUTF8String(bytes);
    return bytes;
}

std::string utf8(char32_t letter)
{
    std::string bytes;
    icu::UnicodeString(static_cast<UChar32>(letter)).toUTF8String(bytes);
    return bytes;
}

TEST(FoldedNameTest, everyLetterIsFoldedAndComposedAsUnicodeHasIt)
{
    constexpr char32_t afterLast = 0x20000; // what follows has no case and composes with nothing
    for (char32_t letter = 1; letter < afterLast; ++letter) {
        if (letter >= 0xD800 && letter < 0xE000)
            continue;
        // What stands before may merge with it: a letter, and a syllable without its end.
        for (auto const *const before : {"E", "\xEA\xB0\x80"}) {
            auto const name = before + utf8(letter) + "X";
            ASSERT_EQ(FoldedName::of(name), expected(name)) << std::hex << static_cast<unsigned>(letter);
        }
    }
}

TEST(FoldedNameTest, bytesThatAreNoTextAreRepaired)
{
    for (auto const *const name : {"a\xFF"
                                   "B",
                                   "\xC3", "\xC3\xC3\xA9", "\xC0\x80", "\xED\xA0\x80", "\xE4\xB8", "\xC3\xA9\xE4"})
        EXPECT_EQ(FoldedName::of(name), expected(name)) << name;
}

TEST(FoldedNameTest, aZeroByteIsReplaced)
{
    EXPECT_EQ(FoldedName::of(std::string_view("A\0\xC3\x89", 4)), "a\1\xC3\xA9");
    EXPECT_EQ(FoldedName::of(std::string_view("A\0e\xCC\x81", 5)), "a\1\xC3\xA9");
}

TEST(FoldedNameTest, usualLettersAreFoldedWhereTheyAreCopied)
{
    std::string text(16, '-');
    EXPECT_TRUE(FoldedName::copyUsual("\xC3\x89 and ABCDEF", text.data()));
    EXPECT_EQ(text, "\xC3\xA9 and ABCDEF---");
    FoldedName::foldAscii(text);
    EXPECT_EQ(text, "\xC3\xA9 and abcdef---");
    for (auto const name : {std::string_view("e\xCC\x81"), std::string_view("A\0B", 3), std::string_view("\xFF")})
        EXPECT_FALSE(FoldedName::copyUsual(name, text.data())) << name;
}

} // namespace
} // namespace tw::test
