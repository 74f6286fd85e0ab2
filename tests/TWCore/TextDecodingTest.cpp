#include "TWCore/Model/TextDecoding.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unicode/ucnv.h>
#include <unicode/unistr.h>

#include <memory>

namespace tw::test {
namespace {

using namespace std::string_view_literals;

using ::testing::HasSubstr;
using TextDecoding::Encoding;

constexpr auto replacementSign = "\xef\xbf\xbd"sv;

constexpr auto koreanInUtf8 = "한글로 쓴 긴 문장\n"sv;
constexpr auto koreanInCp949 = "\xc7\xd1\xb1\xdb\xb7\xce \xbe\xb4 \xb1\xe4 \xb9\xae\xc0\xe5\n"sv;
constexpr auto japaneseInSjis = "\x82\xb1\x82\xea\x82\xcd\x83\x65\x83\x4c\x83\x58\x83\x67\x82\xc5\x82\xb7\n"sv;

/// The text of pieces of one length, each behind what the one before has held back.
std::string decodedInPieces(std::string_view bytes, Encoding encoding, std::size_t length)
{
    std::string text;
    std::string held;
    for (std::size_t begin = 0; begin < bytes.size(); begin += length) {
        auto decoded = TextDecoding::decodeStreaming(held + std::string(bytes.substr(begin, length)), encoding);
        text += decoded.text;
        held = decoded.held;
    }
    return text + TextDecoding::decode(held, encoding);
}

TEST(TextDecodingTest, controlCharactersMakeItBinary)
{
    EXPECT_FALSE(TextDecoding::looksBinary(""));
    EXPECT_FALSE(TextDecoding::looksBinary("\t\n\v\f\r text \x7f\x80\xff"));
    EXPECT_TRUE(TextDecoding::looksBinary("text\0text"sv));
    EXPECT_TRUE(TextDecoding::looksBinary(std::string(91, 'x') + std::string(9, '\1')));
    EXPECT_FALSE(TextDecoding::looksBinary(std::string(95, 'x') + std::string(5, '\x1f')));
    EXPECT_FALSE(TextDecoding::looksBinary(std::string(8192, 'x') + std::string(8192, '\0')));
}

TEST(TextDecodingTest, anEncodingIsTheFirstThatMakesSense)
{
    EXPECT_EQ(TextDecoding::detect(""), Encoding::utf8);
    EXPECT_EQ(TextDecoding::detect("plain"), Encoding::utf8);
    EXPECT_EQ(TextDecoding::detect("안"), Encoding::utf8);
    EXPECT_EQ(TextDecoding::detect(koreanInCp949), Encoding::cp949);
    EXPECT_EQ(TextDecoding::detect("\xff"), Encoding::cp949) << "its table has a character for this byte";
    EXPECT_EQ(TextDecoding::detect("\x83\x66\x81\x5b\x83\x5e\n"), Encoding::sjis);
    EXPECT_EQ(TextDecoding::detect("\x81\x30\x81\x30\n"), Encoding::gbk);
    EXPECT_EQ(TextDecoding::detect("gr\xfc\xdf dich, sch\xf6n ist es \xfc berall"), Encoding::latin1);
    // Cut in the middle of a character, wherever that is.
    for (std::size_t length = 7; length <= koreanInUtf8.size(); ++length)
        EXPECT_EQ(TextDecoding::detect(koreanInUtf8.substr(0, length)), Encoding::utf8) << length;
    for (std::size_t length = 4; length <= koreanInCp949.size(); ++length)
        EXPECT_EQ(TextDecoding::detect(koreanInCp949.substr(0, length)), Encoding::cp949) << length;
}

TEST(TextDecodingTest, muchOfShiftJisIsTakenForKorean)
{
    EXPECT_EQ(TextDecoding::detect(japaneseInSjis), Encoding::cp949);
}

TEST(TextDecodingTest, aTextIsTheSameInPiecesOfAnyLength)
{
    auto const bad = std::string(koreanInUtf8) + "\xed\xa0\x80 \xf0\x9f\x98 \xff\xfe\xc0\x80\xf0\x9f\x98\x80\x80\x80";
    for (auto const encoding : TextDecoding::encodings) {
        for (std::string_view const bytes : {koreanInUtf8, koreanInCp949, japaneseInSjis, std::string_view(bad)}) {
            auto const whole = TextDecoding::decode(bytes, encoding);
            for (std::size_t length = 1; length < bytes.size(); ++length)
                EXPECT_EQ(decodedInPieces(bytes, encoding, length), whole)
                    << TextDecoding::nameOf(encoding) << " in pieces of " << length;
        }
    }
    EXPECT_EQ(TextDecoding::decode(koreanInCp949, Encoding::cp949), koreanInUtf8);
    EXPECT_EQ(TextDecoding::decode(japaneseInSjis, Encoding::sjis), "これはテキストです\n");
}

TEST(TextDecodingTest, onlyWhatMayGoOnIsHeldBack)
{
    using TextDecoding::decodeStreaming;
    EXPECT_EQ(decodeStreaming("", Encoding::utf8).text, "");
    EXPECT_EQ(decodeStreaming("a\xed\x95", Encoding::utf8).held, "\xed\x95");
    EXPECT_EQ(decodeStreaming("a\xed\x95\x9c", Encoding::utf8).held, "");
    EXPECT_EQ(decodeStreaming("a\xff", Encoding::utf8).held, "");
    EXPECT_EQ(decodeStreaming("\xc7\xd1", Encoding::cp949).held, "");
    EXPECT_EQ(decodeStreaming("\xc7\xd1\xb1", Encoding::cp949).held, "\xb1");
    EXPECT_EQ(decodeStreaming("x\x81\x30\x81", Encoding::gbk).held, "\x81\x30\x81");
    EXPECT_EQ(decodeStreaming("\xe9", Encoding::latin1).held, "");
}

/// What ICU says of a pair of bytes; nothing if they are no text.
std::optional<std::string> textOfPair(UConverter *converter, std::string_view pair)
{
    char16_t units[4];
    auto status = U_ZERO_ERROR;
    ucnv_reset(converter);
    auto const length =
        ucnv_toUChars(converter, units, 4, pair.data(), static_cast<std::int32_t>(pair.size()), &status);
    if (U_FAILURE(status))
        return std::nullopt;
    std::string text;
    icu::UnicodeString(units, length).toUTF8String(text);
    return text;
}

struct PairTable {
    Encoding encoding;
    char const *converter;
};

class TextDecodingPairsTest : public ::testing::TestWithParam<PairTable> {};

TEST_P(TextDecodingPairsTest, everyPairOfBytesIsWhatItsTableHas)
{
    auto status = U_ZERO_ERROR;
    std::unique_ptr<UConverter, decltype(&ucnv_close)> const converter(ucnv_open(GetParam().converter, &status),
                                                                       &ucnv_close);
    ucnv_setToUCallBack(converter.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
    ASSERT_TRUE(U_SUCCESS(status));
    for (int lead = 0x80; lead < 0x100; ++lead) {
        std::string bytes;
        std::string expected;
        for (int trail = 0; trail < 0x100; ++trail) {
            std::string const pair{static_cast<char>(lead), static_cast<char>(trail)};
            auto const text = textOfPair(converter.get(), pair);
            if (text) {
                bytes += pair + '\n';
                expected += *text + '\n';
            } else {
                EXPECT_THAT(TextDecoding::decode(pair, GetParam().encoding), HasSubstr(std::string(replacementSign)))
                    << lead << ' ' << trail;
            }
        }
        EXPECT_EQ(TextDecoding::decodeStreaming(bytes, GetParam().encoding).text, expected) << lead;
    }
}

INSTANTIATE_TEST_SUITE_P(Tables, TextDecodingPairsTest,
                         ::testing::Values(PairTable{Encoding::cp949, "windows-949"},
                                           PairTable{Encoding::sjis, "ibm-943_P15A-2003"},
                                           PairTable{Encoding::gbk, "gb18030"},
                                           PairTable{Encoding::latin1, "ISO-8859-1"}));

TEST(TextDecodingTest, utf16AndUtf32AreKnownByTheirMarkOrTheirZeros)
{
    auto const detected = [](std::string_view bytes) { return TextDecoding::detectWide(bytes); };
    EXPECT_EQ(detected("\xff\xfe\x5c\xd5\x00\xae"sv), Encoding::utf16le) << "no ASCII, but a mark";
    EXPECT_EQ(detected("\xfe\xff"sv), Encoding::utf16be);
    EXPECT_EQ(detected("h\0i\0"sv), Encoding::utf16le);
    EXPECT_EQ(detected("\0h\0i"sv), Encoding::utf16be);
    EXPECT_EQ(detected("h\0\0\0"sv), Encoding::utf32le);
    EXPECT_EQ(detected("\0\0\0h"sv), Encoding::utf32be);
    for (auto const no : {""sv, "\0"sv, "text"sv, "\1\0\2\0\3\0\4\0"sv, "\0\0\0\0\0\0\0\0"sv,
                          "\xff\xfe\0\xd8\0\xd8\0\xd8"sv, "\xef\xbb\xbftext"sv})
        EXPECT_FALSE(detected(no)) << no.size();
}

TEST(TextDecodingTest, aMarkSaysWhatATextIs)
{
    auto const marked = TextDecoding::markOf("\xff\xfeh\0i\0"sv);
    ASSERT_TRUE(marked);
    EXPECT_EQ(marked->name, "UTF-16");
    EXPECT_EQ(TextDecoding::decodeMarked("\xff\xfeh\0i\0\x3d"sv, *marked), "hi");
    EXPECT_EQ(TextDecoding::markOf("\xff\xfe\0\0h\0\0\0"sv)->name, "UTF-32");
    EXPECT_FALSE(TextDecoding::markOf("\xef\xbb"));
}

TEST(TextDecodingTest, aHexDumpHasALineForSixteenBytes)
{
    EXPECT_EQ(TextDecoding::hexDump("", 0), "");
    EXPECT_EQ(TextDecoding::hexDump("0123456789abcdef\xff", 0x1F0),
              "000001F0  30 31 32 33 34 35 36 37  38 39 61 62 63 64 65 66  |0123456789abcdef|\n"
              "00000200  FF                                                |.|\n");
    EXPECT_THAT(TextDecoding::hexDump("a", 0x123456789AB), HasSubstr("123456789AB  61"));
}

} // namespace
} // namespace tw::test
