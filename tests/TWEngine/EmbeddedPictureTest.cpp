#include "TWEngine/Preview/EmbeddedPicture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

using namespace std::string_literals;
using ::testing::EndsWith;
using ::testing::StartsWith;

auto const smallJpeg = "\xff\xd8\xff\xdb the small one \xff\xd9"s;

enum class ByteOrderOfCamera { bigEndian, littleEndian };

/// A photograph with a small picture of itself, as a camera writes it.
class Photograph {
public:
    explicit Photograph(ByteOrderOfCamera byteOrder) : order(byteOrder) {}

    int orientation = 6;
    std::size_t pictureAt = 56; ///< in the block
    std::string picture = smallJpeg;

    std::string jpeg() const
    {
        auto const content = "Exif\0\0"s + block();
        return "\xff\xd8\xff\xe0\0\4ab\xff\xe1"s + static_cast<char>((content.size() + 2) >> 8) +
               static_cast<char>(content.size() + 2) + content + "\xff\xda\0\2the pixels"s;
    }

private:
    std::string number(std::size_t value, int bytes) const
    {
        std::string written;
        for (int byte = 0; byte < bytes; ++byte)
            written += static_cast<char>(value >> (8 * byte));
        return order == ByteOrderOfCamera::littleEndian ? written : std::string(written.rbegin(), written.rend());
    }

    std::string row(std::size_t tag, std::size_t type, std::string const &value) const
    {
        return number(tag, 2) + number(type, 2) + number(1, 4) + value;
    }

    std::string block() const
    {
        auto const first =
            number(1, 2) + row(0x112, 3, number(static_cast<std::size_t>(orientation), 2) + number(0, 2));
        auto const second =
            number(2, 2) + row(0x201, 4, number(pictureAt, 4)) + row(0x202, 4, number(picture.size(), 4));
        return (order == ByteOrderOfCamera::littleEndian ? "II*\0"s : "MM\0*"s) + number(8, 4) + first + number(26, 4) +
               second + number(0, 4) + picture;
    }

    ByteOrderOfCamera const order;
};

class EmbeddedPictureTest : public ::testing::TestWithParam<ByteOrderOfCamera> {
protected:
    Photograph photograph{GetParam()};
};

TEST_P(EmbeddedPictureTest, itIsTakenOutAndTurnedAsThePhotographIs)
{
    auto const found = EmbeddedPicture::in(photograph.jpeg());
    EXPECT_THAT(found, StartsWith("\xff\xd8\xff\xe1"));
    EXPECT_THAT(found, EndsWith(smallJpeg.substr(2)));
    photograph.orientation = 8;
    auto const other = EmbeddedPicture::in(photograph.jpeg());
    EXPECT_EQ(other.size(), found.size());
    EXPECT_NE(other, found);
    photograph.orientation = 99;
    auto const wrong = EmbeddedPicture::in(photograph.jpeg());
    photograph.orientation = 1;
    EXPECT_EQ(wrong, EmbeddedPicture::in(photograph.jpeg()));
}

TEST_P(EmbeddedPictureTest, aPhotographThatBreaksOffOrLiesHasNone)
{
    auto const whole = photograph.jpeg();
    auto const end = whole.find(smallJpeg) + smallJpeg.size();
    for (std::size_t length = 0; length < end; ++length)
        EXPECT_EQ(EmbeddedPicture::in(std::string_view(whole).substr(0, length)), "") << length;
    photograph.pictureAt = 57;
    EXPECT_EQ(EmbeddedPicture::in(photograph.jpeg()), "") << "it would end beyond its block";
    photograph.pictureAt = 0xffffffff;
    EXPECT_EQ(EmbeddedPicture::in(photograph.jpeg()), "");
    photograph.pictureAt = 56;
    photograph.picture = "GIF89a and more";
    EXPECT_EQ(EmbeddedPicture::in(photograph.jpeg()), "");
}

INSTANTIATE_TEST_SUITE_P(, EmbeddedPictureTest,
                         ::testing::Values(ByteOrderOfCamera::bigEndian, ByteOrderOfCamera::littleEndian));

} // namespace
} // namespace tw::test
