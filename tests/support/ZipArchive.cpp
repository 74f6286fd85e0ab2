#include "tests/support/ZipArchive.h"

#include <cstdint>

namespace tw::test {

namespace {

/// A number of so many bytes, the lowest first.
std::string number(std::uint32_t value, int bytes)
{
    std::string text;
    for (int index = 0; index < bytes; ++index)
        text += static_cast<char>((value >> (8 * index)) & 0xFFU);
    return text;
}

std::string number(std::size_t value, int bytes)
{
    return number(static_cast<std::uint32_t>(value), bytes);
}

std::uint32_t checksum(std::string const &data)
{
    std::uint32_t sum = 0xFFFFFFFF;
    for (auto const byte : data) {
        sum ^= static_cast<unsigned char>(byte);
        for (int bit = 0; bit < 8; ++bit)
            sum = (sum >> 1U) ^ ((sum & 1U) ? 0xEDB88320U : 0U);
    }
    return ~sum;
}

/// What a member's own header and the directory say of it alike.
std::string description(ZipArchive::Member const &member)
{
    constexpr std::uint32_t version = 20;
    constexpr std::uint32_t markOfUTF8 = 0x0800;
    constexpr std::uint32_t stored = 0;
    constexpr std::uint32_t noon = 0x6000;
    constexpr std::uint32_t newYear2025 = 0x5A21;
    return number(version, 2) + number(member.isMarkedAsUTF8 ? markOfUTF8 : 0U, 2) + number(stored, 2) +
           number(noon, 2) + number(newYear2025, 2) + number(checksum(member.data), 4) + number(member.data.size(), 4) +
           number(member.data.size(), 4) + number(member.name.size(), 2) + number(0U, 2);
}

} // namespace

std::string ZipArchive::of(std::span<Member const> members)
{
    std::string archive;
    std::string directory;
    for (auto const &member : members) {
        constexpr std::uint32_t madeByDos = 20;
        // The comment, the disk and the attributes are 0.
        directory += "PK\x01\x02" + number(madeByDos, 2) + description(member) + number(0U, 2) + number(0U, 2) +
                     number(0U, 2) + number(0U, 4) + number(archive.size(), 4) + member.name;
        archive += "PK\x03\x04" + description(member) + member.name + member.data;
    }
    auto const end = "PK\x05\x06" + number(0U, 4) + number(members.size(), 2) + number(members.size(), 2) +
                     number(directory.size(), 4) + number(archive.size(), 4) + number(0U, 2);
    return archive + directory + end;
}

} // namespace tw::test
