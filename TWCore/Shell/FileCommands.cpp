#include "TWCore/Shell/FileCommands.h"

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

Paths front(ShellDialect dialect, Paths paths, std::size_t mostBytes)
{
    std::size_t bytes = 0;
    std::size_t count = 0;
    while (count < paths.size()) {
        bytes += quotePath(dialect, paths[count]).size() + 1;
        if (count > 0 && bytes > mostBytes)
            break;
        ++count;
    }
    return paths.first(count);
}

/// Deletes folders that come before those which they are in. Each that is left, since the folder above is locked too
/// or for another reason, gets its rights back.
constexpr std::string_view removeLocked =
    R"sh(chmod u+w "$@"; rm -rf "$@"; for d do if [ -d "$d" ] && ! [ -L "$d" ]; then chmod u-w "$d"; fi; done)sh";

/// cp waits at a pipe until somebody reads it, and writes through a link to the file that it leads to, also below a
/// folder of the target. Only GNU has an option against that, so others still do it below a folder. With the option a
/// file goes before the new one can be read, so it is used only if there is a pipe or a link at a name of the source.
/// A target that is new or a file starts no other program.
///
/// Without the option, a link goes just before its own cp: if an earlier one fails or is ended, the link stays.
constexpr std::string_view copyAll = R"sh(
tw_help= tw_replace= tw_status=0
tw_meets() {
  tw_there=$tw_to${1##*/}
  [ -L "$tw_there" ] || { [ -e "$tw_there" ] && ! [ -f "$tw_there" ]; }
}
tw_names() {
  for tw_from do
    tw_meets "$tw_from" || continue
    cd -- "${tw_from%/*}/" && find "./${tw_from##*/}" -print0
    [ $? -le 128 ] || break
  done
}
tw_look='for n do
  [ -L "$n" ] && exit 255
  ! [ -e "$n" ] || [ -f "$n" ] || [ -d "$n" ] || exit 255
done'
for tw_from do
  if tw_meets "$tw_from"; then tw_help=.$(command cp --help 2>&1); break; fi
done
case $tw_help in
'') ;;
*--remove-destination*)
  { tw_names "$@" | (cd -- "$tw_to" && xargs -0 sh -c "$tw_look" sh); } 2>/dev/null ||
    tw_replace=--remove-destination
  ;;
*)
  for tw_from do
    shift
    if ! tw_meets "$tw_from" || { [ -d "$tw_there" ] && ! [ -L "$tw_there" ]; }; then
      set -- "$@" "$tw_from"
      continue
    fi
    [ -d "$tw_from" ] || ! [ -r "$tw_from" ] || [ "$tw_from" -ef "$tw_there" ] || rm -f -- "$tw_there"
    cp -a -- "$tw_from" "$tw_to" || tw_status=$?
    [ $tw_status -le 128 ] || exit $tw_status
  done
  [ $# -gt 0 ] || exit $tw_status
  ;;
esac
cp -a $tw_replace -- "$@" "$tw_to" || tw_status=$?
exit $tw_status)sh";

std::string removeAtOnce(ShellDialect dialect, Paths paths, LockedFolders locked)
{
    if (dialect == ShellDialect::posix) {
        auto const list = quotedPaths(dialect, paths);
        auto removing = "rm -rf -- " + list;
        if (locked == LockedFolders::stay)
            return removing;
        // A status above 128 is that of a command that was ended.
        return "{ " + removing + " 2>/dev/null || { [ $? -le 128 ] && find " + list +
               " -depth -type d ! -perm -200 -exec sh -c " + quote(dialect, removeLocked) + " sh {} + 2>/dev/null; " +
               removing + "; }; }";
    }
    return "Remove-Item -LiteralPath " + quotedPaths(dialect, paths) + " -Recurse -Force -ErrorAction Stop";
}

} // namespace

Paths fittingFront(ShellDialect dialect, Paths paths)
{
    return front(dialect, paths, maxPathBytes);
}

Paths fittingRequest(ShellDialect dialect, Paths paths)
{
    return front(dialect, paths, maxRequestBytes);
}

std::string makeDirectory(ShellDialect dialect, std::string_view path)
{
    if (dialect == ShellDialect::posix)
        return "mkdir " + quotePath(dialect, path);
    return "New-Item -ItemType Directory -Path " + quotePath(dialect, path) + " -ErrorAction Stop | Out-Null";
}

std::string removeEmptyFolder(ShellDialect dialect, std::string_view path)
{
    if (dialect == ShellDialect::posix)
        return "rmdir -- " + quotePath(dialect, path);
    // Remove-Item would ask what to do with the content, and nobody is there to answer.
    return "[IO.Directory]::Delete(" + quotePath(dialect, path) + ")";
}

std::string remove(ShellDialect dialect, Paths paths, LockedFolders locked)
{
    auto const first = fittingFront(dialect, paths);
    if (first.size() == paths.size())
        return removeAtOnce(dialect, paths, locked);
    // Not by xargs, which not every host has with -0.
    std::string commands = dialect == ShellDialect::posix ? "tw=0\n" : "";
    while (!paths.empty()) {
        auto const some = fittingFront(dialect, paths);
        commands += removeAtOnce(dialect, some, locked) + (dialect == ShellDialect::posix ? " || tw=1\n" : "\n");
        paths = paths.subspan(some.size());
    }
    return commands += dialect == ShellDialect::posix ? "exit $tw" : "";
}

std::string copy(ShellDialect dialect, Paths from, std::string_view to)
{
    if (dialect == ShellDialect::posix)
        return "set -- " + quotedPaths(dialect, from) + "; tw_to=" + quotePath(dialect, to) + '/' +
               std::string(copyAll);
    return "Copy-Item -LiteralPath " + quotedPaths(dialect, from) + " -Destination " + quotePath(dialect, to) +
           " -Recurse -Force -ErrorAction Stop";
}

std::string sync(ShellDialect dialect, std::string_view folder)
{
    if (dialect == ShellDialect::powershell)
        return {};
    return "sync -f -- " + quotePath(dialect, folder) + " 2>/dev/null || sync";
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
