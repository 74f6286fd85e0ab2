#include "TWCore/Shell/ShellDialect.h"

#include "TWCore/Model/WindowsPath.h"
#include "TWCore/Shell/Base64.h"

namespace tw {

namespace {

constexpr char singleQuote = '\'';

/// Between single quotes nothing means anything to a POSIX shell but the quote that ends them.
std::string posixQuoted(std::string_view text)
{
    std::string word(1, singleQuote);
    for (auto const byte : text) {
        if (byte == singleQuote)
            word += "'\\''";
        else
            word += byte;
    }
    return word += singleQuote;
}

/// How many bytes the single quote takes that stands at the front of `text`; 0 if there is none.
///
/// PowerShell ends a quoted text at the quotes of typography (U+2018 to U+201B) as well. Names with an apostrophe from
/// a word processor have them, and after one of them the rest of a name would run as a command.
std::size_t leadingPowerShellQuote(std::string_view text)
{
    if (text.starts_with(singleQuote))
        return 1;
    constexpr std::string_view commonBytes = "\xE2\x80";
    auto const size = commonBytes.size() + 1;
    if (text.size() < size || !text.starts_with(commonBytes))
        return 0;
    auto const last = static_cast<unsigned char>(text[commonBytes.size()]);
    return last >= 0x98 && last <= 0x9B ? size : 0;
}

/// Two quotes in a row stand for the second of them.
std::string powerShellQuoted(std::string_view text)
{
    std::string word(1, singleQuote);
    while (!text.empty()) {
        auto const quoteSize = leadingPowerShellQuote(text);
        auto const size = std::max<std::size_t>(quoteSize, 1);
        word.append(text.substr(0, quoteSize)).append(text.substr(0, size));
        text.remove_prefix(size);
    }
    return word += singleQuote;
}

} // namespace

std::string_view rawText(ShellDialect dialect) noexcept
{
    return dialect == ShellDialect::posix ? "posix" : "powershell";
}

std::optional<ShellDialect> shellDialectFromRaw(std::string_view text) noexcept
{
    for (auto const dialect : {ShellDialect::posix, ShellDialect::powershell}) {
        if (text == rawText(dialect))
            return dialect;
    }
    return std::nullopt;
}

ShellDialect shellDialectFromProbe(std::string_view answer)
{
    constexpr std::string_view commandInterpreter = "cmd.exe";
    auto const isSameLetter = [](char a, char b) { return (a >= 'A' && a <= 'Z' ? a + ('a' - 'A') : a) == b; };
    auto const found = std::ranges::search(answer, commandInterpreter, isSameLetter);
    return found.empty() ? ShellDialect::posix : ShellDialect::powershell;
}

std::string_view remoteCommand(ShellDialect dialect) noexcept
{
    return dialect == ShellDialect::posix ? "bash -s" : "powershell -NoProfile -NoLogo -Command -";
}

std::string_view firstRemoteCommand() noexcept
{
    // The quotes are for old versions of fish, to which an unquoted % means a job.
    return "echo \"%COMSPEC%\"; bash -s";
}

std::string_view firstCommandEcho() noexcept
{
    return "%COMSPEC%\n";
}

std::string_view lineTerminator(ShellDialect dialect) noexcept
{
    return dialect == ShellDialect::posix ? "\n" : "\r\n";
}

bool needsSingleLineRequests(ShellDialect dialect) noexcept
{
    return dialect == ShellDialect::powershell;
}

std::string quote(ShellDialect dialect, std::string_view text)
{
    return dialect == ShellDialect::posix ? posixQuoted(text) : powerShellQuoted(text);
}

std::string quotePath(ShellDialect dialect, std::string_view path)
{
    return dialect == ShellDialect::powershell ? quote(dialect, WindowsPath::toNative(path)) : quote(dialect, path);
}

std::string encodeRequest(ShellDialect dialect, std::string_view request)
{
    if (!needsSingleLineRequests(dialect))
        return std::string(request);
    // Base64 has no line ends and no quotes, so nothing in a request can break the line that carries it.
    return "iex ([Text.Encoding]::UTF8.GetString([Convert]::FromBase64String('" + Base64::encode(request) + "')))";
}

} // namespace tw
