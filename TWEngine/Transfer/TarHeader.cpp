#include "TWEngine/Transfer/TarHeader.h"

#include "TWEngine/Transfer/TarError.h"

#include <algorithm>
#include <optional>

namespace tw {

namespace {

struct Field {
    std::size_t offset;
    std::size_t length;
};

constexpr Field nameField{0, 100};
constexpr Field sizeField{124, 12};
constexpr Field checksumField{148, 8};
constexpr std::size_t kindOffset = 156;
constexpr Field linkField{157, 100};
constexpr Field magicField{257, 6};
constexpr Field prefixField{345, 155};
constexpr std::size_t moreSparseOffset = 482;
constexpr std::size_t moreSparseInMapOffset = 504;

/// Far beyond any file, and far below what a sum of sizes could overflow.
constexpr std::int64_t mostBytes = std::int64_t{1} << 60U;

constexpr auto noArchive = "the stream is not a tar archive";

std::string_view bytesOf(std::string_view block, Field field)
{
    return block.substr(field.offset, field.length);
}

std::string textOf(std::string_view block, Field field)
{
    auto const bytes = bytesOf(block, field);
    return std::string(bytes.substr(0, bytes.find('\0')));
}

/// Octal digits with blanks before them, up to a blank or a NUL.
std::optional<std::int64_t> octal(std::string_view digits)
{
    digits.remove_prefix(std::min(digits.find_first_not_of(' '), digits.size()));
    std::int64_t value = 0;
    for (auto const digit : digits) {
        if (digit == ' ' || digit == '\0')
            break;
        if (digit < '0' || digit > '7' || value > mostBytes)
            return std::nullopt;
        value = value * 8 + (digit - '0');
    }
    return value;
}

/// A number as octal digits, or in base 256 if it begins with the byte 0x80.
std::optional<std::int64_t> numberOf(std::string_view bytes)
{
    if (static_cast<unsigned char>(bytes.front()) != 0x80)
        return octal(bytes);
    std::int64_t value = 0;
    for (auto const byte : bytes.substr(1)) {
        if (value > mostBytes)
            return std::nullopt;
        value = value * 256 + static_cast<unsigned char>(byte);
    }
    return value;
}

/// The sum of all bytes with blanks for the sum itself. Some programs of old took bytes for signed numbers.
bool hasRightChecksum(std::string_view block)
{
    auto const expected = octal(bytesOf(block, checksumField));
    std::int64_t sum = 0;
    std::int64_t signedSum = 0;
    for (std::size_t index = 0; index < block.size(); ++index) {
        bool const isSum = index - checksumField.offset < checksumField.length;
        auto const byte = isSum ? ' ' : block[index];
        sum += static_cast<unsigned char>(byte);
        signedSum += static_cast<signed char>(byte);
    }
    return expected && (*expected == sum || *expected == signedSum);
}

TarHeader::Kind kindOf(char letter)
{
    using Kind = TarHeader::Kind;
    switch (letter) {
    case '\0':
    case '0':
    case '7':
        return Kind::file;
    case '1':
        return Kind::hardLink;
    case '2':
        return Kind::symbolicLink;
    case '3':
    case '4':
    case '6':
        return Kind::node;
    case '5':
        return Kind::folder;
    case 'S':
        return Kind::sparseFile;
    case 'L':
        return Kind::longName;
    case 'K':
        return Kind::longLink;
    case 'x':
    case 'X':
        return Kind::attributes;
    case 'g':
        return Kind::commonAttributes;
    default:
        throw TarError("the archive has a member of an unknown kind");
    }
}

} // namespace

TarHeader TarHeader::parse(std::string_view block)
{
    if (!hasRightChecksum(block))
        throw TarError(noArchive);
    auto const size = numberOf(bytesOf(block, sizeField));
    if (!size || *size > mostBytes)
        throw TarError(noArchive);
    TarHeader header{.kind = kindOf(block[kindOffset]),
                     .name = textOf(block, nameField),
                     .linkTarget = textOf(block, linkField),
                     .size = *size};
    // GNU tar has other things in the place of the prefix, and another magic number.
    auto const prefix = bytesOf(block, magicField) == std::string_view("ustar\0", 6) ? textOf(block, prefixField) : "";
    if (!prefix.empty())
        header.name = prefix + "/" + header.name;
    header.hasMoreSparse = header.kind == Kind::sparseFile && block[moreSparseOffset] != '\0';
    return header;
}

bool TarHeader::isZero(std::string_view block) noexcept
{
    return std::ranges::all_of(block, [](char byte) { return byte == '\0'; });
}

bool TarHeader::continuesSparse(std::string_view block) noexcept
{
    return block[moreSparseInMapOffset] != '\0';
}

} // namespace tw
