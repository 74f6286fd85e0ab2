#include "TWCore/Model/PercentCoding.h"

#include <optional>

namespace tw::PercentCoding {

namespace {

/// Whatever the language of the system is.
constexpr std::string_view plain = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~";

constexpr std::string_view digits = "0123456789ABCDEF";

std::optional<unsigned> hexDigit(char sign)
{
    auto const isSmall = sign >= 'a' && sign <= 'f';
    auto const at = digits.find(isSmall ? static_cast<char>(sign - 'a' + 'A') : sign);
    return at == std::string_view::npos ? std::nullopt : std::optional(static_cast<unsigned>(at));
}

} // namespace

std::string encoded(std::string_view bytes, std::string_view kept)
{
    std::string text;
    text.reserve(bytes.size());
    for (auto const byte : bytes) {
        auto const value = static_cast<unsigned char>(byte);
        if (plain.contains(byte) || kept.contains(byte))
            text += byte;
        else
            text += {'%', digits[value >> 4U], digits[value & 0xfU]};
    }
    return text;
}

std::string decoded(std::string_view text)
{
    std::string bytes;
    bytes.reserve(text.size());
    for (std::size_t at = 0; at < text.size(); ++at) {
        auto const hasDigits = text[at] == '%' && at + 2 < text.size();
        auto const high = hasDigits ? hexDigit(text[at + 1]) : std::nullopt;
        auto const low = hasDigits ? hexDigit(text[at + 2]) : std::nullopt;
        if (high && low) {
            bytes += static_cast<char>(*high * 16 + *low);
            at += 2;
        } else {
            bytes += text[at];
        }
    }
    return bytes;
}

} // namespace tw::PercentCoding
