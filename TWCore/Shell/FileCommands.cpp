#include "TWCore/Shell/FileCommands.h"

#include "TWCore/Model/LowerCased.h"
#include "TWCore/Model/Trimmed.h"

#include <charconv>
#include <limits>

namespace tw::FileCommands {

namespace {

constexpr std::int64_t bytesPerKiB = 1024;

std::string quotedPaths(ShellDialect dialect, Paths paths)
{
    auto const separator = dialect == ShellDialect::posix ? ' ' : ',';
    std::string list;
    for (auto const &path : paths) {
        if (!list.empty())
            list += separator;
        list += quotePath(dialect, path);
    }
    return list;
}

} // namespace

Paths fittingFront(ShellDialect dialect, Paths paths)
{
    std::size_t bytes = 0;
    std::size_t count = 0;
    while (count < paths.size()) {
        bytes += quotePath(dialect, paths[count]).size() + 1;
        if (count > 0 && bytes > maxPathBytes)
            break;
        ++count;
    }
    return paths.first(count);
}

std::string makeDirectory(ShellDialect dialect, std::string_view path)
{
    if (dialect == ShellDialect::posix)
        return "mkdir " + quotePath(dialect, path);
    return "New-Item -ItemType Directory -Path " + quotePath(dialect, path) + " -ErrorAction Stop | Out-Null";
}

std::string remove(ShellDialect dialect, Paths paths)
{
    if (dialect == ShellDialect::posix)
        return "rm -rf -- " + quotedPaths(dialect, paths);
    return "Remove-Item -LiteralPath " + quotedPaths(dialect, paths) + " -Recurse -Force -ErrorAction Stop";
}

std::string rename(ShellDialect dialect, std::string_view from, std::string_view to)
{
    auto const source = quotePath(dialect, from);
    auto const target = quotePath(dialect, to);
    auto const differsInCaseOnly = lowerCased(from) == lowerCased(to);
    if (dialect == ShellDialect::posix) {
        auto isTaken = "[ -e " + target + " ] || [ -L " + target + " ]";
        // A link and what it leads to are one file to -ef, and to be kept apart.
        if (differsInCaseOnly)
            isTaken = "{ " + isTaken + "; } && { [ -L " + source + " ] || [ -L " + target + " ] || ! [ " + source +
                      " -ef " + target + " ]; }";
        return "if " + isTaken + "; then echo 'File exists' >&2; false; else mv -- " + source + " " + target + "; fi";
    }
    // Windows takes both cases for one.
    auto const refusal = differsInCaseOnly ? "" : "if(Test-Path -LiteralPath " + target + "){ throw 'File exists' }; ";
    return refusal + "Move-Item -LiteralPath " + source + " -Destination " + target + " -Force -ErrorAction Stop";
}

std::string copy(ShellDialect dialect, Paths from, std::string_view to)
{
    if (dialect == ShellDialect::posix)
        return "cp -a -- " + quotedPaths(dialect, from) + " " + quotePath(dialect, to) + "/";
    return "Copy-Item -LiteralPath " + quotedPaths(dialect, from) + " -Destination " + quotePath(dialect, to) +
           " -Recurse -Force -ErrorAction Stop";
}

std::string measure(ShellDialect dialect, Paths paths)
{
    if (dialect == ShellDialect::posix)
        return "du -sk -- " + quotedPaths(dialect, paths) + " 2>/dev/null | awk '{s+=$1} END {print s+0}'";
    return "$t=0; foreach($i in @(" + quotedPaths(dialect, paths) +
           ")){ if(Test-Path -LiteralPath $i -PathType Container)"
           "{ $t += (Get-ChildItem -LiteralPath $i -Recurse -File -Force | Measure-Object -Sum Length).Sum } else "
           "{ $t += (Get-Item -LiteralPath $i).Length } }; [string][long]$t";
}

std::int64_t totalSize(ShellDialect dialect, std::string_view output)
{
    auto const digits = trimmed(output);
    auto const *const end = digits.data() + digits.size();
    std::int64_t number = 0;
    auto const parsed = std::from_chars(digits.data(), end, number);
    if (parsed.ec != std::errc() || parsed.ptr != end || number < 0)
        return 0;
    if (dialect == ShellDialect::powershell)
        return number;
    // A host may print any number.
    return number > std::numeric_limits<std::int64_t>::max() / bytesPerKiB ? 0 : number * bytesPerKiB;
}

} // namespace tw::FileCommands
