#include "tests/support/TarArchive.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace tw::test {

namespace {

constexpr std::size_t blockBytes = 512;

std::string octal(std::size_t value, int digits)
{
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%0*zo", digits, value);
    return text.data();
}

} // namespace

std::string TarArchive::header(Member const &member)
{
    std::string block(blockBytes, '\0');
    auto const put = [&block](std::size_t offset, std::string_view text) {
        std::ranges::copy(text, block.begin() + static_cast<std::ptrdiff_t>(offset));
    };
    put(0, member.name.substr(0, 100));
    put(100, "0000644");
    put(108, "0000000");
    put(116, "0000000");
    put(124, member.size.empty() ? octal(member.data.size(), 11) : member.size);
    put(136, "00000000000");
    put(148, "        ");
    block[156] = member.kind;
    put(157, member.link.substr(0, 100));
    put(257, member.magic);
    put(345, member.prefix);
    std::size_t sum = 0;
    for (auto const byte : block)
        sum += static_cast<unsigned char>(byte);
    put(148, octal(sum, 6) + std::string(1, '\0'));
    return block;
}

std::string TarArchive::member(Member const &member)
{
    auto bytes = header(member) + member.data;
    bytes.resize((bytes.size() + blockBytes - 1) / blockBytes * blockBytes);
    return bytes;
}

std::string TarArchive::paxRecord(std::string_view key, std::string_view value)
{
    auto const rest = " " + std::string(key) + "=" + std::string(value) + "\n";
    auto length = rest.size() + 1;
    while (std::to_string(length).size() + rest.size() != length)
        ++length;
    return std::to_string(length) + rest;
}

} // namespace tw::test
