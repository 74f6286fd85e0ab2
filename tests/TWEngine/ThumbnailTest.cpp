#include "TWEngine/Preview/Thumbnail.h"

#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

using namespace std::string_literals;

std::string pngChunk(std::string const &kind, std::string const &content)
{
    auto const size = static_cast<char>(content.size());
    return "\0\0\0"s + size + kind + content + "\0\0\0\0"s; // nobody looks at the check sum
}

std::string thumbnailOf(std::string const &uri, std::string const &mtime, std::string const &kindOfUri = "tEXt")
{
    return "\x89PNG\r\n\x1a\n"s + pngChunk("IHDR", std::string(13, '\1')) + pngChunk(kindOfUri, "Thumb::URI\0"s + uri) +
           pngChunk("tEXt", "Thumb::MTime\0"s + mtime) + pngChunk("IDAT", "pixels");
}

class ThumbnailTest : public ::testing::Test {
protected:
    ThumbnailTest()
    {
        cache.folder("normal");
        cache.folder("large");
    }

    bool isFound(std::string const &path, std::int64_t mtime)
    {
        return static_cast<bool>(Thumbnail::find(cache.path(), path, mtime));
    }

    TemporaryFolder cache;
};

TEST_F(ThumbnailTest, liesUnderTheSumOfTheAddressAndIsOfTheSameVersion)
{
    // `printf file:///home/jens/photos/me.png | md5sum`: the example of the standard.
    cache.file("normal/c6ee772d9e49320e97ec29a7eb5b1697.png", thumbnailOf("file:///home/jens/photos/me.png", "1234"));
    EXPECT_TRUE(isFound("/home/jens/photos/me.png", 1234));
    EXPECT_FALSE(isFound("/home/jens/photos/me.png", 1235));
    EXPECT_FALSE(isFound("/home/jens/photos/you.png", 1234));
}

TEST_F(ThumbnailTest, ofAnotherFileWithTheSameSumIsNone)
{
    cache.file("large/c6ee772d9e49320e97ec29a7eb5b1697.png", thumbnailOf("file:///home/jens/other.png", "1234"));
    EXPECT_FALSE(isFound("/home/jens/photos/me.png", 1234));
}

TEST_F(ThumbnailTest, anAddressThatIsCompressedIsNotLookedAt)
{
    cache.file("normal/c6ee772d9e49320e97ec29a7eb5b1697.png", thumbnailOf("\0zzzz"s, "1234", "zTXt"));
    EXPECT_TRUE(isFound("/home/jens/photos/me.png", 1234));
    EXPECT_FALSE(isFound("/home/jens/photos/me.png", 1235));
}

TEST_F(ThumbnailTest, aProgramThatMakesThemIsAskedByAddressAndKind)
{
    auto const asked = Thumbnail::questionAbout("/tmp/a film.png", "\x89PNG\r\n\x1a\n");
    EXPECT_EQ(asked.uri, "file:///tmp/a%20film.png");
    EXPECT_EQ(asked.mimeType, "image/png");
    EXPECT_EQ(Thumbnail::questionAbout("/tmp/x", std::string_view("\0\1\2\3\4", 5)).mimeType, "");
}

TEST_F(ThumbnailTest, aTextIsLookedForBeforeThePixelsOnlyAndWithinTheFile)
{
    auto const png = thumbnailOf("file:///a", "1");
    EXPECT_EQ(Thumbnail::textIn(png, "Thumb::URI"), "file:///a");
    EXPECT_EQ(Thumbnail::textIn(png, "Thumb"), std::nullopt);
    EXPECT_EQ(Thumbnail::textIn(png + pngChunk("tEXt", "Late\0x"s), "Late"), std::nullopt);
    for (std::size_t length = 0; length < png.size(); ++length)
        static_cast<void>(Thumbnail::textIn(std::string_view(png).substr(0, length), "Thumb::MTime"));
    EXPECT_EQ(Thumbnail::textIn("\x89PNG\r\n\x1a\n\xff\xff\xff\xfftEXtThumb::URI", "Thumb::URI"), std::nullopt);
}

} // namespace
} // namespace tw::test
