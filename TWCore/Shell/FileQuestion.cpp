#include "TWCore/Shell/FileQuestion.h"

#include "TWCore/Model/Trimmed.h"

#include <algorithm>
#include <charconv>

namespace tw::FileQuestion {

namespace {

constexpr std::string_view fileWord = "file ";

/// A file of the kernel's log looks like any other one, and a reading of it never ends. The first form of the size is
/// that of GNU, the second that of BSD.
constexpr std::string_view posixScript =
    "if [ -d \"$p\" ]; then echo directory; elif [ ! -e \"$p\" ]; then echo missing; "
    "elif [ ! -f \"$p\" ] || [ \"$p\" -ef /proc/kmsg ]; then echo special; "
    "elif [ ! -r \"$p\" ]; then echo refused; "
    "else echo \"file $(stat -L -c '%s %d:%i' \"$p\" 2>/dev/null || stat -L -f '%z %d:%i' \"$p\" 2>/dev/null)\"; fi";

} // namespace

std::string text(ShellDialect dialect, std::string_view path)
{
    if (dialect == ShellDialect::posix)
        return "p=" + quotePath(dialect, path) + "; " + std::string(posixScript);
    return "$i = Get-Item -LiteralPath " + quotePath(dialect, path) +
           " -Force -ErrorAction SilentlyContinue; if (-not $i) { 'missing' } elseif ($i.PSIsContainer) "
           "{ 'directory' } else { 'file ' + $i.Length }";
}

Answer answer(std::string_view output)
{
    using enum Answer::Access;
    auto const words = trimmed(output);
    if (words == "directory")
        return {.access = readable, .kind = EntryKind::directory};
    if (words == "special")
        return {.access = readable, .kind = EntryKind::unknown};
    if (words == "refused")
        return {.access = refused, .kind = EntryKind::file};
    if (!words.starts_with(fileWord))
        return {.access = missing};
    std::int64_t size = 0;
    auto const *const end = words.data() + words.size();
    auto const *const behindSize = std::from_chars(words.data() + fileWord.size(), end, size).ptr;
    return {.access = readable,
            .kind = EntryKind::file,
            .size = std::max<std::int64_t>(size, 0),
            .identity = std::string(trimmed({behindSize, end}))};
}

} // namespace tw::FileQuestion
