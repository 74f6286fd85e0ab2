#include "TWEngine/Preview/EmbeddedPicture.h"

#include <cstdint>
#include <optional>

namespace tw::EmbeddedPicture {

namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;

constexpr auto startOfImage = "\xff\xd8"sv;
constexpr auto exifHeader = "Exif\0\0"sv;

enum class ByteOrder { bigEndian, littleEndian };

/// A number of 2 or 4 bytes; 0 if it lies outside.
std::uint32_t numberAt(std::string_view bytes, std::size_t at, std::size_t size, ByteOrder order)
{
    if (at > bytes.size() || size > bytes.size() - at)
        return 0;
    std::uint32_t number = 0;
    for (std::size_t each = 0; each < size; ++each) {
        auto const from = order == ByteOrder::bigEndian ? at + each : at + size - 1 - each;
        number = (number << 8) | static_cast<unsigned char>(bytes[from]);
    }
    return number;
}

/// What a camera says about a photograph: the tables of a TIFF file, which point at each other by offsets.
class Exif {
public:
    enum class Tag : std::uint16_t { orientation = 0x112, pictureOffset = 0x201, pictureLength = 0x202 };

    explicit Exif(std::string_view bytes)
        : block(bytes), order(bytes.starts_with("MM") ? ByteOrder::bigEndian : ByteOrder::littleEndian)
    {
    }

    /// Of the photograph.
    std::size_t firstTable() const { return number(4, 4); }

    /// Of the small picture. 0 or outside of the block: there is none.
    std::size_t tableAfter(std::size_t table) const { return number(table + 2 + rows(table) * bytesPerRow, 4); }

    std::optional<std::uint32_t> value(std::size_t table, Tag tag) const
    {
        constexpr std::uint32_t shortNumber = 3;
        for (std::size_t row = 0; row < rows(table); ++row) {
            auto const at = table + 2 + row * bytesPerRow;
            if (number(at, 2) == static_cast<std::uint32_t>(tag))
                return number(at + 8, number(at + 2, 2) == shortNumber ? 2 : 4);
        }
        return std::nullopt;
    }

    std::string_view picture(std::size_t table) const
    {
        auto const offset = value(table, Tag::pictureOffset).value_or(0);
        auto const length = value(table, Tag::pictureLength).value_or(0);
        return offset < block.size() && length <= block.size() - offset ? block.substr(offset, length)
                                                                        : std::string_view();
    }

private:
    static constexpr std::size_t bytesPerRow = 12;

    std::uint32_t number(std::size_t at, std::size_t size) const { return numberAt(block, at, size, order); }

    std::size_t rows(std::size_t table) const { return number(table, 2); }

    std::string_view block;
    ByteOrder order;
};

/// The block that a camera writes before the pixels; empty without one.
std::string_view exifIn(std::string_view jpeg)
{
    constexpr unsigned char startOfPixels = 0xda;
    constexpr unsigned char application1 = 0xe1;
    if (!jpeg.starts_with(startOfImage))
        return {};
    jpeg.remove_prefix(startOfImage.size());
    while (jpeg.size() > 4 && jpeg[0] == '\xff') {
        auto const marker = static_cast<unsigned char>(jpeg[1]);
        std::size_t const length = numberAt(jpeg, 2, 2, ByteOrder::bigEndian); // with itself
        if (marker == startOfPixels || length < 2 || length > jpeg.size() - 2)
            return {};
        auto const content = jpeg.substr(4, length - 2);
        if (marker == application1 && content.starts_with(exifHeader))
            return content.substr(exifHeader.size());
        jpeg.remove_prefix(2 + length);
    }
    return {};
}

/// A block that says nothing else.
std::string exifOfOrientation(char orientation)
{
    return "\xff\xe1\0\x22"
           "Exif\0\0MM\0\x2a\0\0\0\x08\0\x01\x01\x12\0\x03\0\0\0\x01\0"s +
           orientation + "\0\0\0\0\0\0"s;
}

} // namespace

std::string in(std::string_view jpeg)
{
    auto const block = exifIn(jpeg);
    if (!block.starts_with("II*\0"sv) && !block.starts_with("MM\0*"sv))
        return {};
    Exif const exif(block);
    auto const photograph = exif.firstTable();
    auto const picture = exif.picture(exif.tableAfter(photograph));
    if (!picture.starts_with("\xff\xd8\xff"))
        return {};
    constexpr std::uint32_t upright = 1;
    constexpr std::uint32_t mostOrientations = 8;
    auto const said = exif.value(photograph, Exif::Tag::orientation).value_or(upright);
    auto const orientation = said <= mostOrientations ? static_cast<char>(said) : static_cast<char>(upright);
    return std::string(startOfImage) + exifOfOrientation(orientation) +
           std::string(picture.substr(startOfImage.size()));
}

} // namespace tw::EmbeddedPicture
