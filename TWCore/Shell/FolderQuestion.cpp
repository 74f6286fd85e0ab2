#include "TWCore/Shell/FolderQuestion.h"

#include "TWCore/Model/WindowsPath.h"
#include "TWCore/Shell/FileCommands.h"

#include <charconv>
#include <vector>

namespace tw::FolderQuestion {

namespace {

/// The functions of a POSIX request, after the name of the folder. An answer is, by lines: what is there; its real path
/// with a line end, in hexadecimal; the identities of the folder and all above it; whether it takes both cases for one
/// name; for each batch the numbers of the names that are taken, and a line for each of them; a full stop.
///
/// Cases are tried with a name that is there, or with the folder's own name if the folder above is on the same disk.
/// Links are no good for that, since a link may lead to its other case. In the empty root of a disk, its file system
/// tells; of one that is not known to take them for two, the answer is the one with which nothing is overwritten.
constexpr std::string_view functions = R"sh(
if ! [ -d "$tw_d" ]; then
  if [ -e "$tw_d" ] || [ -L "$tw_d" ]; then echo file; else echo none; fi
  exit 0
fi
cd -- "$tw_d" || exit 1
if stat -c %i / >/dev/null 2>&1; then
  tw_stat() { stat -c '%d:%i %f %s %Y' -- "$@" 2>/dev/null; }
elif stat -f %i / >/dev/null 2>&1; then
  tw_stat() { stat -f '%d:%i %Xp %z %m' -- "$@" 2>/dev/null; }
else
  tw_stat() {
    local name kind
    for name do
      kind=0
      if [ -L "$name" ]; then kind=a000; elif [ -d "$name" ]; then kind=4000; elif [ -f "$name" ]; then kind=8000; fi
      ls -ldn -- "$name" 2>/dev/null | { read -r _ _ _ _ size _; echo "- $kind ${size:-0} 0"; }
    done
  }
fi
tw_way() {
  local path=$1 up=.
  set -- .
  while [ -n "$path" ] && [ "$path" != / ]; do up=$up/.. path=${path%/*}; set -- "$@" "$up"; done
  tw_stat "$@" | while read -r id _; do printf '%s ' "$id"; done
  echo
}
tw_cases() {
  local name other here above
  name=$(find . ! -name . -prune ! -type l -name '*[A-Za-z]*' -print 2>/dev/null | head -1)
  if [ -z "$name" ]; then
    here=$(tw_stat .) above=$(tw_stat ..)
    [ "${here%%:*}" = "${above%%:*}" ] && name=../${1##*/}
  fi
  if [ -z "$name" ]; then
    case $(stat -f -c %T . 2>/dev/null) in
      ext2/ext3 | xfs | btrfs | zfs | f2fs | tmpfs | ramfs | overlayfs | nfs) echo two ;;
      *) echo one ;;
    esac
    return
  fi
  other=$(printf '%s' "$name" | tr 'A-Za-z' 'a-zA-Z')
  if [ "$name" != "$other" ] && [ -e "$name" ] && ! [ -L "$other" ] && [ "$name" -ef "$other" ]; then
    echo one
  else
    echo two
  fi
}
tw_names() {
  local number=$1 name there=()
  shift
  for name do
    if [ -e "./$name" ] || [ -L "./$name" ]; then there[number]=./$name; fi
    number=$((number + 1))
  done
  echo "taken ${!there[*]}"
  [ ${#there[@]} -eq 0 ] || tw_stat "${there[@]}"
}
echo folder
pwd -P | od -An -v -tx1 | tr -d ' \n'
echo
tw_way "$(pwd -P)"
tw_cases "$(pwd -P)"
)sh";

/// The same answer. Windows has no identities that a script gets at, and takes both cases for one name.
constexpr std::string_view powerShellFolder = R"ps(
if(-not (Test-Path -LiteralPath $d)){ 'none' }
elseif(-not (Test-Path -LiteralPath $d -PathType Container)){ 'file' }
else {
'folder'
$b=[Text.Encoding]::UTF8.GetBytes((Get-Item -LiteralPath $d -Force).FullName + "`n")
[BitConverter]::ToString($b).Replace('-','').ToLower()
''
'one'
$n=0
foreach($x in $names){
$f=Get-Item -LiteralPath ($d.TrimEnd('/') + '/' + $x) -Force -ErrorAction SilentlyContinue
if($f){
$k=if($f.Attributes -band [IO.FileAttributes]::ReparsePoint){'a000'}elseif($f.PSIsContainer){'4000'}else{'8000'}
$s=if($f.PSIsContainer){0}else{$f.Length}
$t=[long][Math]::Floor(($f.LastWriteTimeUtc - [datetime]'1970-01-01').TotalSeconds)
"taken $n"
"- $k $s $t"
}
$n++
}
'.'
}
)ps";

std::size_t bytesOf(ShellDialect dialect, std::string const &name)
{
    return quote(dialect, name).size() + 1;
}

/// Takes the lines of an answer one by one.
class Lines {
public:
    explicit Lines(std::string_view text) : rest(text) {}

    std::optional<std::string_view> next()
    {
        auto const end = rest.find('\n');
        if (end == std::string_view::npos)
            return std::nullopt;
        auto line = rest.substr(0, end);
        rest.remove_prefix(end + 1);
        if (line.ends_with('\r'))
            line.remove_suffix(1);
        return line;
    }

private:
    std::string_view rest;
};

std::vector<std::string_view> words(std::string_view line)
{
    std::vector<std::string_view> result;
    while (!line.empty()) {
        auto const end = std::min(line.find(' '), line.size());
        if (end > 0)
            result.push_back(line.substr(0, end));
        line.remove_prefix(std::min(end + 1, line.size()));
    }
    return result;
}

template <class Number>
std::optional<Number> number(std::string_view digits, int base = 10)
{
    Number value = 0;
    auto const *const end = digits.data() + digits.size();
    auto const parsed = std::from_chars(digits.data(), end, value, base);
    if (parsed.ec != std::errc() || parsed.ptr != end)
        return std::nullopt;
    return value;
}

std::optional<FileIdentity> identity(std::string_view word)
{
    auto const colon = word.find(':');
    if (colon == std::string_view::npos)
        return std::nullopt;
    auto const device = number<std::uint64_t>(word.substr(0, colon));
    auto const inode = number<std::uint64_t>(word.substr(colon + 1));
    if (!device || !inode)
        return std::nullopt;
    return FileIdentity{*device, *inode};
}

/// The path, which has one line end behind it.
std::optional<std::string> pathFromHex(std::string_view digits)
{
    std::string path;
    for (; digits.size() >= 2; digits.remove_prefix(2)) {
        auto const byte = number<std::uint8_t>(digits.substr(0, 2), 16);
        if (!byte)
            return std::nullopt;
        path += static_cast<char>(*byte);
    }
    if (!digits.empty() || !path.ends_with('\n'))
        return std::nullopt;
    path.pop_back();
    return path;
}

FolderFacts::Occupant occupant(std::string const &name, std::vector<std::string_view> const &columns,
                               std::vector<FileIdentity> const &way)
{
    FolderFacts::Occupant taken{.name = name};
    if (columns.size() != 4)
        return taken;
    taken.identity = identity(columns[0]);
    taken.kind = entryKindOfMode(number<std::uint32_t>(columns[1], 16).value_or(0));
    taken.size = std::max<std::int64_t>(number<std::int64_t>(columns[2]).value_or(0), 0);
    taken.mtime = number<std::int64_t>(columns[3]).value_or(0);
    // Of folders only: layers of one mount can have devices of their own for files.
    taken.isMountPoint = taken.kind == EntryKind::directory && taken.identity && !way.empty() &&
                         taken.identity->device != way.front().device;
    return taken;
}

/// The lines behind the facts of the folder. False if they are not what they should be.
///
/// A file that vanishes while it is looked at has a number and no line, so that no line can be relied on: then the
/// names are taken, and more is not known.
bool readTaken(Lines &lines, Names names, FolderFacts &facts)
{
    std::vector<std::size_t> numbers;
    std::vector<std::vector<std::string_view>> rows;
    auto const settle = [&] {
        auto const isWhole = numbers.size() == rows.size();
        for (std::size_t index = 0; index < numbers.size(); ++index)
            facts.taken.push_back(
                occupant(names[numbers[index]], isWhole ? rows[index] : std::vector<std::string_view>(), facts.way));
        numbers.clear();
        rows.clear();
    };
    while (auto const line = lines.next()) {
        auto columns = words(*line);
        if (*line == ".") {
            settle();
            return true;
        }
        if (columns.empty())
            return false;
        if (columns.front() != "taken") {
            rows.push_back(std::move(columns));
            continue;
        }
        settle();
        for (auto const digits : std::span(columns).subspan(1)) {
            auto const index = number<std::size_t>(digits);
            if (!index || *index >= names.size())
                return false;
            numbers.push_back(*index);
        }
    }
    return false;
}

} // namespace

Names fittingFront(ShellDialect dialect, Names names)
{
    std::size_t bytes = 0;
    std::size_t count = 0;
    while (count < names.size()) {
        bytes += bytesOf(dialect, names[count]);
        if (count > 0 && bytes > FileCommands::maxRequestBytes)
            break;
        ++count;
    }
    return names.first(count);
}

std::string text(ShellDialect dialect, std::string_view folder, Names names)
{
    if (dialect == ShellDialect::powershell) {
        std::string list;
        for (auto const &name : names)
            list += (list.empty() ? "" : ",") + quote(dialect, name);
        return "$d=" + quotePath(dialect, folder) + "\n$names=@(" + list + ")" + std::string(powerShellFolder);
    }
    auto request = "tw_d=" + quotePath(dialect, folder) + std::string(functions);
    std::size_t bytes = FileCommands::maxPathBytes;
    for (std::size_t index = 0; index < names.size(); ++index) {
        bytes += bytesOf(dialect, names[index]);
        if (bytes > FileCommands::maxPathBytes) {
            request += (index == 0 ? "tw_names " : "\ntw_names ") + std::to_string(index);
            bytes = 0;
        }
        request += ' ' + quote(dialect, names[index]);
    }
    return request + "\necho .\n";
}

std::optional<FolderFacts> facts(ShellDialect dialect, std::string_view output, Names names)
{
    using State = FolderFacts::State;
    Lines lines(output);
    auto const state = lines.next();
    if (state == "none")
        return FolderFacts{.state = State::missing};
    if (state == "file")
        return FolderFacts{.state = State::notAFolder};
    auto const path = lines.next();
    auto const way = lines.next();
    auto const cases = lines.next();
    if (state != "folder" || !cases)
        return std::nullopt;
    auto realPath = pathFromHex(*path);
    if (!realPath)
        return std::nullopt;
    FolderFacts facts{.state = State::present, .takesCasesForOne = *cases == "one"};
    facts.realPath = dialect == ShellDialect::posix ? *std::move(realPath) : WindowsPath::fromNative(*realPath);
    for (auto const word : words(*way)) {
        if (auto const known = identity(word))
            facts.way.push_back(*known);
    }
    if (!readTaken(lines, names, facts))
        return std::nullopt;
    return facts;
}

} // namespace tw::FolderQuestion
