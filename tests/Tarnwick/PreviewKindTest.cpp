#include "Tarnwick/Preview/PreviewKind.h"

#include "Tarnwick/Preview/PreviewText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

using namespace std::string_literals;
using ::testing::EndsWith;
using ::testing::SizeIs;
using Look = PreviewKind::Look;

TEST(PreviewKindTest, aFileIsWhatItsFirstBytesSay)
{
    struct Case {
        std::string beginning;
        char const *name;
        Look look;
        char const *format;
        char const *title;
    };

    for (auto const &each : std::initializer_list<Case>{
             {"\x89PNG\r\n\x1a\nIHDR"s, "a.txt", Look::picture, "png", "PNG picture"},
             {"\xff\xd8\xff\xe0"s, "a", Look::picture, "jpeg", "JPEG picture"},
             {"GIF89a..."s, "a.png", Look::picture, "gif", "GIF picture"},
             {"RIFF\1\2\3\4WEBPVP8 "s, "a", Look::picture, "webp", "WebP picture"},
             {"BM\x36\x10\0\0\0\0\0\0\x36\0\0\0\x28\0\0\0\x10\0"s, "a", Look::picture, "bmp", "BMP picture"},
             {"BMW is a maker of cars and of more"s, "a", Look::text, "", "text"},
             {"P5\n2 2\n255\n"s, "a", Look::picture, "pgm", "PGM picture"},
             {"\0\0\2\0\0"s, "a.tga", Look::picture, "tga", "TGA picture"},
             {"%PDF-1.7\n"s, "a", Look::picture, "pdf", "PDF document"},
             {"<?xml version='1.0'?>\n<!-- x -->\n<svg>"s, "a", Look::picture, "svg", "SVG drawing"},
             {"  \n<svg xmlns=''>"s, "a.txt", Look::picture, "svg", "SVG drawing"},
             {"<html><svg></svg></html>"s, "a.svg", Look::text, "", "text"},
             {"PK\3\4\x14\0"s, "a.odt", Look::other, "", "ZIP archive"},
             {std::string(257, '\0') + "ustar\0"s, "a", Look::other, "", "tar archive"},
             {"\x7f"s + "ELF\2\1\1\0"s, "a", Look::other, "", "program"},
             {"\0\1\2\3"s, "film.mkv", Look::other, "", "video"},
             {"\0\1\2\3"s, "a", Look::other, "", "file"},
             {"hello\n"s, "a.png", Look::text, "", "text"},
             {""s, "a.png", Look::text, "", "text"},
         }) {
        auto const kind = PreviewKind::of(each.beginning, each.name);
        EXPECT_EQ(kind.look, each.look) << each.beginning;
        EXPECT_EQ(kind.format, each.format) << each.beginning;
        EXPECT_EQ(kind.title.english(), each.title) << each.beginning;
    }
}

TEST(PreviewTextTest, aTextIsReadInTheEncodingThatFits)
{
    struct Case {
        std::string bytes;
        std::string text;
        char const *encoding;
    };

    for (auto const &each : std::initializer_list<Case>{
             {"plain\n"s, "plain\n"s, "UTF-8"},
             {"gr\xc3\xbc\xc3\x9f"s, "grüß"s, "UTF-8"},
             {"cut off: gr\xc3"s, "cut off: gr"s, "UTF-8"},
             {"\xef\xbb\xbfwith a mark"s, "with a mark"s, "UTF-8"},
             {"\xff\xfeh\0i\0"s, "hi"s, "UTF-16"},
             {"\xfe\xff\0h\0i"s, "hi"s, "UTF-16"},
             {"\xc7\xd1\xb1\xdb"s, "한글"s, "CP949"},
             {"caf\xe9\n"s, "café\n"s, "ISO-8859-1"},
         }) {
        auto const text = PreviewText::of(each.bytes);
        EXPECT_EQ(text.text, each.text);
        EXPECT_EQ(text.encoding, each.encoding) << each.text;
    }
}

TEST(PreviewTextTest, anEndlessLineIsCutBetweenTwoCharacters)
{
    std::string line = "x";
    while (line.size() < 256 * 1024)
        line += "ü";
    auto const text = PreviewText::of(line + "\nnext").text;
    EXPECT_THAT(text, SizeIs(testing::Lt(PreviewText::mostLineBytes + 20)));
    EXPECT_THAT(text, EndsWith("ü…\nnext"));
}

TEST(PreviewTextTest, oneControlCharacterInTwentyIsTooMany)
{
    EXPECT_FALSE(PreviewText::looksBinary(""));
    EXPECT_FALSE(PreviewText::looksBinary("\x1b" + std::string(19, 'x')));
    EXPECT_TRUE(PreviewText::looksBinary("\x1b" + std::string(18, 'x')));
    EXPECT_TRUE(PreviewText::looksBinary("a\0b and much more text that follows"s));
    EXPECT_FALSE(PreviewText::looksBinary("\t\n\v\f\r"));
}

} // namespace
} // namespace tw::test
