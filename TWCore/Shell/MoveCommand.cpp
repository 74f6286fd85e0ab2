#include "TWCore/Shell/MoveCommand.h"

#include "TWCore/Model/LowerCased.h"
#include "TWCore/Model/Trimmed.h"
#include "TWCore/Shell/FileCommands.h"

#include <charconv>

namespace tw::MoveCommand {

namespace {

using Move = FileSystemWriter::Move;
using Existing = FileSystemWriter::Existing;

/// The functions of a POSIX request. The first form of stat is that of GNU and busybox, the second that of BSD. A
/// failure prints its words and, in a line of its own, how many moves were done before it.
///
/// Without -T, the one that takes the new name as it is, mv moves into the folder that a link of that name leads to.
/// The name of a move into another folder is no such link to it, since mv puts that name together itself.
///
/// A folder that its owner cannot write to goes into no other folder. It gets that right for the move (`tw_locked`).
///
/// Linux takes two mounts of one disk for two file systems, and a layered one may copy too. A copy has another inode,
/// and the kind, rights, time and size of its original (`tw_same`); of a folder, the size is that of its own list.
constexpr std::string_view functions = R"sh(tw_n=0
tw_end() { printf '%s\n%s\n' "${1:-it was not moved}" "$tw_n"; exit 1; }
tw_there() { [ -e "$1" ] || [ -L "$1" ]; }
tw_taken() { tw_there "$1"; }
tw_why='File exists'
tw_id() { stat -c %d:%i:%f:%Y:%s -- "$@" 2>/dev/null || stat -f %d:%i:%Xp:%m:%z -- "$@" 2>/dev/null; }
tw_same() {
  local old=${1#*:*:} new=${2#*:*:}
  case $old in 4???:*) old=${old%:*} new=${new%:*} ;; esac
  [ "${1%:*:*:*}" = "${2%:*:*:*}" ] || [ "${1%%:*}" != "${2%%:*}" ] || [ "$old" = "$new" ] ||
    tw_end 'another file has taken the name'
}
tw_mount() {
  { while read -r key value; do [ "$key" != mnt_id: ] || echo "$value"; done; } 9<"$1" </proc/self/fdinfo/9
} 2>/dev/null
tw_apart() {
  local from to
  from=$(tw_mount "$1") to=$(tw_mount "$2")
  if [ -n "$from" ] && [ -n "$to" ] && [ "$from" != "$to" ]; then
    printf 'another file system\n%s\n' "$tw_n"
    exit 18
  fi
}
tw_help=$(mv --help 2>&1)
case $tw_help in *[[:space:]]-n*) tw_keep=-n ;; *) tw_keep= ;; esac
case $tw_help in *[[:space:]]-T*) tw_plain=-T ;; *) tw_plain= ;; esac
tw_locked() {
  local id now
  tw_there "$1" && ! tw_there "$2" && [ -n "$(find "$1" -prune -type d ! -perm -200 2>/dev/null)" ] || return
  id=$(tw_id "$1")
  chmod u+w "$1" 2>/dev/null || return
  said=$(mv $tw_plain $tw_keep -- "$1" "$2" 2>&1)
  now=$(tw_id "$2")
  if tw_there "$1"; then chmod u-w "$1"; elif [ "${id%:*:*:*}" = "${now%:*:*:*}" ]; then chmod u-w "$2"; fi
}
tw_into() {
  local from=$1/ to=$2/ name words= said before after count=0
  shift 2
  tw_apart "$from" "$to"
  cd -- "$from" || tw_end 'No such file or directory'
  for name do
    if ! [[ -e $name || -L $name ]]; then words='No such file or directory'; break; fi
    if tw_taken "$to$name"; then words=$tw_why; break; fi
    count=$((count + 1))
  done
  [ $count -eq $# ] || set -- "${@:1:count}"
  if [ $# -gt 0 ]; then
    before=$(tw_id "$@")
    said=$(mv $tw_keep -- "$@" "$to" 2>&1) || for name do tw_locked "./$name" "$to$name"; done
    after=$(cd -- "$to" && tw_id "$@")
    local old=() new=() at=0
    [ "$before" = "$after" ] || old=($before) new=($after)
    for name do
      if [[ -e $name || -L $name ]] || ! [[ -e $to$name || -L $to$name ]]; then tw_end "$said"; fi
      [ ${#old[@]} -eq 0 ] || tw_same "${old[at]}" "${new[at]}"
      at=$((at + 1)) tw_n=$((tw_n + 1))
    done
  fi
  [ -z "$words" ] || tw_end "$words"
}
tw_as() {
  local before said
  tw_there "$1" || tw_end 'No such file or directory'
  if tw_taken "$2" || { [ -z "$tw_plain" ] && [ -d "$2" ]; }; then tw_end "$tw_why"; fi
  [ "${1%/*}" = "${2%/*}" ] || tw_apart "${1%/*}/" "${2%/*}/"
  before=$(tw_id "$1")
  said=$(mv $tw_plain $tw_keep -- "$1" "$2" 2>&1) || tw_locked "$1" "$2"
  if tw_there "$1" || ! tw_there "$2"; then tw_end "$said"; fi
  tw_same "$before" "$(tw_id "$2")"
  tw_n=$((tw_n + 1))
}
tw_recase() {
  local said
  if tw_there "$2" && { [ -L "$1" ] || [ -L "$2" ] || ! [ "$1" -ef "$2" ]; }; then tw_end 'File exists'; fi
  said=$(mv -- "$1" "$2" 2>&1) || tw_end "$said"
  tw_n=$((tw_n + 1))
}
)sh";

/// Behind the functions: a file has the new name at any moment. An mv that copied would delete the old file first.
constexpr std::string_view replacing =
    R"sh(case $tw_help in *--no-copy*) tw_keep='-f --no-copy' ;; *) tw_keep=-f ;; esac
tw_why='a folder has the name'
tw_taken() { [ -d "$1" ] && ! [ -L "$1" ]; }
)sh";

struct Place {
    std::string_view folder;
    std::string_view name;
};

Place placeOf(std::string_view path)
{
    auto const slash = path.rfind('/');
    if (slash == std::string_view::npos)
        return {".", path};
    return {path.substr(0, slash), path.substr(slash + 1)};
}

/// The names in a folder, as it spells them, are compared byte by byte.
constexpr std::string_view spelling = R"sh(tw_found=1
for name in * .*; do
  [ "$name" != "$1" ] || exit 1
  [ "$name" != "$2" ] || tw_found=0
done
exit $tw_found
)sh";

/// Whether the second move can be part of the program call of the first.
///
/// To stat, a dash means its standard input.
bool goTogether(Move const &first, Move const &second)
{
    auto const from = placeOf(first.from);
    auto const to = placeOf(first.to);
    auto const otherFrom = placeOf(second.from);
    auto const otherTo = placeOf(second.to);
    return from.name == to.name && otherFrom.name == otherTo.name && otherFrom.name != "-" &&
           from.folder == otherFrom.folder && to.folder == otherTo.folder && from.folder != to.folder;
}

std::size_t bytesOf(ShellDialect dialect, Move const &move)
{
    return quotePath(dialect, move.from).size() + quotePath(dialect, move.to).size() + 2;
}

std::string single(Move const &move)
{
    return (changesOnlyCase(move) ? "tw_recase " : "tw_as ") + quotePath(ShellDialect::posix, move.from) + ' ' +
           quotePath(ShellDialect::posix, move.to) + '\n';
}

/// The line for the first of `moves`, and as many of the next ones as go with it.
std::pair<std::string, std::size_t> line(Moves moves)
{
    auto const &first = moves.front();
    if (!goTogether(first, first))
        return {single(first), 1};
    auto const dialect = ShellDialect::posix;
    auto text = "tw_into " + quotePath(dialect, placeOf(first.from).folder) + ' ' +
                quotePath(dialect, placeOf(first.to).folder);
    std::size_t bytes = 0;
    std::size_t count = 0;
    for (auto const &move : moves) {
        bytes += bytesOf(dialect, move);
        if (count > 0 && (bytes > FileCommands::maxPathBytes || !goTogether(first, move)))
            break;
        text += ' ' + quotePath(dialect, placeOf(move.from).name);
        ++count;
    }
    return {text + '\n', count};
}

std::string powerShellMove(Move const &move, Existing existing)
{
    auto const dialect = ShellDialect::powershell;
    auto const source = quotePath(dialect, move.from);
    auto const target = quotePath(dialect, move.to);
    auto moving = "Move-Item -LiteralPath " + source + " -Destination " + target + " -Force -ErrorAction Stop";
    if (existing == Existing::isReplaced) // Move-Item deletes the old file before it moves
        return "if(Test-Path -LiteralPath " + target + " -PathType Container){ throw 'a folder has the name' }; " +
               "if(Test-Path -LiteralPath " + target + "){ [IO.File]::Replace(" + source + "," + target +
               ",[NullString]::Value) } else { " + moving + " }";
    if (changesOnlyCase(move)) // Windows takes both cases for one
        return moving;
    return "if(Test-Path -LiteralPath " + target + "){ throw 'File exists' }; " + moving;
}

} // namespace

Moves fittingFront(ShellDialect dialect, Moves moves)
{
    std::size_t bytes = 0;
    std::size_t count = 0;
    while (count < moves.size()) {
        bytes += bytesOf(dialect, moves[count]);
        if (count > 0 && bytes > FileCommands::maxRequestBytes)
            break;
        ++count;
    }
    return moves.first(count);
}

std::string text(ShellDialect dialect, Moves moves, Existing existing)
{
    if (dialect == ShellDialect::powershell) {
        std::string request = "$tw=0; try {\n";
        for (auto const &move : moves)
            request += powerShellMove(move, existing) + "; $tw++\n";
        return request + "} catch { throw ($_.Exception.Message + \"`n$tw\") }";
    }
    std::string request(functions);
    if (existing == Existing::isReplaced)
        request += replacing;
    while (!moves.empty()) {
        auto const [words, count] = line(moves);
        request += words;
        moves = moves.subspan(count);
    }
    return request;
}

bool changesOnlyCase(Move const &move)
{
    return lowerCased(move.from) == lowerCased(move.to);
}

std::string isRespelled(Move const &move)
{
    auto const dialect = ShellDialect::posix;
    auto const to = placeOf(move.to);
    return "cd -- " + quotePath(dialect, std::string(to.folder) + '/') + " || exit 2\nset -- " +
           quotePath(dialect, placeOf(move.from).name) + ' ' + quotePath(dialect, to.name) + '\n' +
           std::string(spelling);
}

Failure failure(std::string_view output, std::size_t count)
{
    auto const said = trimmed(output);
    auto const lineEnd = said.rfind('\n');
    auto const last = lineEnd == std::string_view::npos ? said : said.substr(lineEnd + 1);
    auto const *const end = last.data() + last.size();
    std::size_t index = 0;
    auto const parsed = std::from_chars(last.data(), end, index);
    if (parsed.ec != std::errc() || parsed.ptr != end || index >= count)
        return {0, std::string(said)};
    return {index, std::string(trimmed(said.substr(0, said.size() - last.size())))};
}

} // namespace tw::MoveCommand
