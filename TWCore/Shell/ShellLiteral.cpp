#include "TWCore/Shell/ShellLiteral.h"

#include "TWCore/Shell/Base64.h"
#include "TWCore/Shell/ShellDialect.h"

#include <unicode/unistr.h>

namespace tw::ShellLiteral {

namespace {

bool isPrintableAscii(char byte)
{
    return byte >= ' ' && byte <= '~';
}

/// The escape by which printf(1) prints a byte: three octal digits.
std::string octalEscape(char byte)
{
    auto const value = static_cast<unsigned char>(byte);
    auto const digit = [value](unsigned shift) { return static_cast<char>('0' + ((value >> shift) & 7U)); };
    return {'\\', digit(6), digit(3), digit(0)};
}

std::string utf16LittleEndian(std::string_view text)
{
    auto const units = icu::UnicodeString::fromUTF8({text.data(), static_cast<std::int32_t>(text.size())});
    std::string bytes;
    for (std::int32_t index = 0; index < units.length(); ++index) {
        auto const unit = units.charAt(index);
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8);
    }
    return bytes;
}

} // namespace

std::string posix(std::string_view text)
{
    if (std::ranges::all_of(text, isPrintableAscii))
        return quote(ShellDialect::posix, text);
    std::string word = "\"$(printf '";
    for (auto const byte : text)
        word += octalEscape(byte);
    return word += "')\"";
}

std::string powerShellEncoded(std::string_view script)
{
    return "powershell -NoProfile -NoLogo -EncodedCommand " + Base64::encode(utf16LittleEndian(script));
}

std::string powerShellInvoke(std::string_view executable, std::span<std::string const> arguments)
{
    std::string list;
    for (auto const &argument : arguments) {
        if (!list.empty())
            list += ',';
        list += quote(ShellDialect::powershell, argument);
    }
    return "& " + std::string(executable) + " @(" + list + ")";
}

} // namespace tw::ShellLiteral
