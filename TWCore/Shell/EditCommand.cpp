#include "TWCore/Shell/EditCommand.h"

#include "TWCore/Model/Trimmed.h"

#include <array>
#include <charconv>

namespace tw::EditCommand {

namespace {

/// What each POSIX request begins with, after `tw_p`, the path. A version is the inode, the size and the time, as
/// exactly as the host's tools say it; they are asked about the target of a link.
///
/// `ls` marks an access list with a plus, extended attributes on macOS with an at sign, and a label of SELinux with a
/// dot. A `cp` that does not know the option for attributes is no reason to write in place: such a host has none, or
/// cannot say so.
///
/// A full disk must not cost the old content: before a file is written in place, the bytes by which it grows are
/// written once beside it.
constexpr std::string_view functions = R"sh(
set -f
if stat -c %i / >/dev/null 2>&1; then
  tw_version() { stat -L -c '%i %s %y' -- "$1" 2>/dev/null; }
  tw_mode() { stat -L -c %a -- "$1" 2>/dev/null; }
elif stat -f %i / >/dev/null 2>&1; then
  tw_version() { stat -f '%i %z %Fm' -L -- "$1" 2>/dev/null; }
  tw_mode() { stat -f %Mp%Lp -L -- "$1" 2>/dev/null; }
else
  tw_version() {
    LC_ALL=C ls -Lldin -- "$1" 2>/dev/null | { read -r i _ _ _ _ s a b c _ && echo "$i $s $a $b $c"; }
  }
  tw_mode() { :; }
fi
tw_t=$tw_p
if [ -L "$tw_p" ]; then tw_t=$(readlink -f -- "$tw_p" 2>/dev/null && echo .); tw_t=${tw_t%??}; fi
tw_d=${tw_t:-$tw_p}
tw_d=${tw_d%/*}
tw_d=${tw_d:-/}
tw_renames() {
  [ -n "$tw_t" ] || return 1
  [ -e "$tw_t" ] || return 0
  set -- $(LC_ALL=C ls -ldn -- "$tw_t" 2>/dev/null)
  case $1 in *+|*@) return 1 ;; esac
  [ "$2" = 1 ] && [ -O "$tw_t" ] && [ -w "$tw_d" ] && [ -x "$tw_d" ] && [ -n "$(tw_mode "$tw_t")" ]
}
tw_say() {
  local way=copy
  tw_renames && way=rename
  printf '%s|%s|%s|%s\n' "$1" "$(tw_version "$tw_p")" "$(tw_mode "$tw_p")" "${tw_w:-$way}"
  exit 0
}
tw_stage() {
  local folder
  for folder in "$tw_d" "${TMPDIR:-/tmp}"; do
    tw_s=${folder%/}/.tw-edit-$tw_k
    rm -rf -- "$tw_s" 2>/dev/null
    (umask 077; mkdir -- "$tw_s") 2>/dev/null && return
  done
  echo "no folder can be made beside it, and none in ${TMPDIR:-/tmp}"
  return 1
}
tw_fail() {
  rm -rf -- "$tw_s"
  tw_say failed
}
tw_make() {
  if (umask 077; set -C; cat -- "$tw_s/new" >"$tw_p"); then
    [ -z "$tw_m" ] || chmod -- "$tw_m" "$tw_p"
    rm -rf -- "$tw_s"
    tw_say replaced
  fi
  tw_fail
}
tw_attributes() {
  local words
  words=$(LC_ALL=C cp --attributes-only --preserve=xattr -- "$tw_t" "$tw_s/new" 2>&1) && return
  case $words in *option*|*argument*|*'without xattr'*) return 0 ;; esac
  return 1
}
tw_rename() {
  [ "$tw_s" = "${tw_d%/}/.tw-edit-$tw_k" ] && tw_renames && tw_attributes || return 1
  local mode=$(tw_mode "$tw_t")
  set -- $(LC_ALL=C ls -ldn -- "$tw_t")
  case $1 in *.) chcon --reference="$tw_t" -- "$tw_s/new" 2>/dev/null || return 1 ;; esac
  chgrp -- "$4" "$tw_s/new" 2>/dev/null && chmod -- "$mode" "$tw_s/new" && mv -f -- "$tw_s/new" "$tw_t"
}
tw_room() {
  local more=$(($(wc -c <"$tw_s/new") - $(wc -c <"$tw_p")))
  [ "$more" -le 0 ] && return
  head -c "$more" -- "$tw_s/new" >"$tw_s/room" && rm -f -- "$tw_s/room"
}
tw_replace() {
  local now=$(tw_version "$tw_p") result=changed
  if [ "$now" != "$tw_e" ]; then
    [ -n "$now" ] && cmp -s -- "$tw_s/new" "$tw_p" && result=same
    rm -rf -- "$tw_s"
    tw_say $result
  fi
  [ -n "$now" ] || tw_make
  if ! [ -f "$tw_p" ]; then echo 'it is no file'; tw_fail; fi
  if ! [ -w "$tw_p" ]; then echo 'it may not be written'; tw_fail; fi
  if tw_rename; then rm -rf -- "$tw_s"; tw_say replaced; fi
  tw_w=copy
  tw_room || tw_fail
  if cat -- "$tw_s/new" >"$tw_p"; then rm -rf -- "$tw_s"; tw_say replaced; fi
  echo "it may be incomplete now; the whole content is in $tw_s/new on the host"
  tw_say failed
}
)sh";

/// The same on Windows, after `$p`. A version is the size and the time of a link's target. `Replace` keeps the access
/// list and the attributes of the file; a file with other hard links would lose them.
constexpr std::string_view powerShellFunctions = R"ps(
function tw_file {
  $f=Get-Item -LiteralPath $p -Force -ErrorAction SilentlyContinue
  for($n=0; $n -lt 40 -and $f -is [IO.FileInfo] -and $f.LinkType -eq 'SymbolicLink'; $n++) {
    $t=[IO.Path]::Combine($f.DirectoryName, @($f.Target)[0])
    $f=Get-Item -LiteralPath $t -Force -ErrorAction SilentlyContinue
  }
  if($f -is [IO.FileInfo]) { $f }
}
function tw_version($f) { if($f) { "$($f.Length) $($f.LastWriteTimeUtc.Ticks)" } else { '' } }
function tw_say($kind) {
  $f=tw_file
  $way=if($f -and $f.LinkType) { 'copy' } else { 'rename' }
  "$kind|$(tw_version $f)||$way"
}
)ps";

/// Then `$e` and `$s`. A file that is written in place gets its new length first: a full disk refuses that.
constexpr std::string_view powerShellReplace = R"ps(
try {
  $f=tw_file
  if((tw_version $f) -ne $e) {
    $same=$f -and (Get-FileHash -LiteralPath $f.FullName).Hash -eq (Get-FileHash -LiteralPath $s).Hash
    Remove-Item -LiteralPath $s -Force
    tw_say $(if($same) { 'same' } else { 'changed' })
  } elseif(-not $f) {
    [IO.File]::Move($s,$p)
    tw_say replaced
  } elseif($f.LinkType) {
    $i=[IO.File]::OpenRead($s)
    try {
      $o=[IO.File]::Open($f.FullName,'Open','Write','None')
      try { $o.SetLength($i.Length); $i.CopyTo($o) } finally { $o.Close() }
    } finally { $i.Close() }
    Remove-Item -LiteralPath $s -Force
    tw_say replaced
  } else {
    [IO.File]::Replace($s,$f.FullName,[NullString]::Value)
    tw_say replaced
  }
} catch {
  $_.Exception.Message
  Remove-Item -LiteralPath $s -Force -ErrorAction SilentlyContinue
  tw_say failed
}
)ps";

std::string assigned(std::string_view variable, std::string_view value)
{
    return std::string(variable) + '=' + quote(ShellDialect::posix, value) + '\n';
}

std::string powerShellBeginning(std::string_view path)
{
    return "$p=" + quotePath(ShellDialect::powershell, path) + std::string(powerShellFunctions);
}

std::string beginning(std::string_view path)
{
    return assigned("tw_p", path) + std::string(functions);
}

std::string beginning(Replacement const &wanted)
{
    return assigned("tw_k", wanted.token) + assigned("tw_e", wanted.expected) + assigned("tw_m", wanted.mode) +
           beginning(wanted.path);
}

/// The content as printf prints it. Only what every locale has as one character stays as it is.
std::string printed(std::string_view content)
{
    std::string format;
    for (auto const byte : content) {
        auto const isPlain = byte == '\n' || byte == '\t' || (byte >= ' ' && byte <= '~');
        if (isPlain && byte != '\\' && byte != '%') {
            format += byte;
            continue;
        }
        auto const value = static_cast<unsigned char>(byte);
        auto const digit = [value](unsigned shift) { return static_cast<char>('0' + ((value >> shift) & 7U)); };
        format.append({'\\', digit(6), digit(3), digit(0)});
    }
    return "printf -- " + quote(ShellDialect::posix, format);
}

std::string_view lastLine(std::string_view output)
{
    auto const said = trimmed(output);
    auto const lineEnd = said.rfind('\n');
    return lineEnd == std::string_view::npos ? said : said.substr(lineEnd + 1);
}

struct Answer {
    std::string_view kind;
    State state;
};

std::optional<Answer> answerIn(std::string_view line)
{
    std::array<std::string_view, 4> fields;
    for (std::size_t index = 0; index < fields.size(); ++index) {
        auto const end = line.find('|');
        auto const isLast = index + 1 == fields.size();
        if ((end == std::string_view::npos) != isLast)
            return std::nullopt;
        fields[index] = line.substr(0, end);
        line.remove_prefix(isLast ? line.size() : end + 1);
    }
    if (fields[3] != "rename" && fields[3] != "copy")
        return std::nullopt;
    return Answer{.kind = fields[0],
                  .state = {.version = std::string(fields[1]),
                            .mode = std::string(fields[2]),
                            .way = fields[3] == "rename" ? Way::rename : Way::copy}};
}

std::optional<std::string> bytesOf(std::string_view digits)
{
    std::string bytes;
    for (; digits.size() >= 2; digits.remove_prefix(2)) {
        unsigned value = 0;
        auto const parsed = std::from_chars(digits.data(), digits.data() + 2, value, 16);
        if (parsed.ec != std::errc() || parsed.ptr != digits.data() + 2)
            return std::nullopt;
        bytes += static_cast<char>(value);
    }
    return digits.empty() ? std::optional(bytes) : std::nullopt;
}

std::string_view folderOf(std::string_view path)
{
    return path.substr(0, path.rfind('/'));
}

constexpr std::string_view stagedWord = "staged ";

} // namespace

std::string question(ShellDialect dialect, std::string_view path)
{
    if (dialect == ShellDialect::powershell)
        return powerShellBeginning(path) + "tw_say state\n";
    return beginning(path) + "tw_say state\n";
}

std::optional<State> state(std::string_view output)
{
    auto answer = answerIn(lastLine(output));
    return answer && answer->kind == "state" ? std::optional(std::move(answer->state)) : std::nullopt;
}

std::string replace(Replacement const &wanted, std::string_view content)
{
    return beginning(wanted) + "tw_stage || tw_say failed\n(umask 077; " + printed(content) +
           " >\"$tw_s/new\") || tw_fail\ntw_replace\n";
}

std::string stage(Replacement const &wanted)
{
    return beginning(wanted) + "tw_stage || exit 1\nprintf '" + std::string(stagedWord) +
           "'\nprintf %s \"$tw_s/new\" | od -An -v -tx1 | tr -d ' \\n'\necho\n";
}

std::optional<std::string> stagedFile(std::string_view output)
{
    auto const line = lastLine(output);
    if (!line.starts_with(stagedWord))
        return std::nullopt;
    auto path = bytesOf(line.substr(stagedWord.size()));
    return path && path->starts_with('/') ? path : std::nullopt;
}

std::string stagedOnWindows(Replacement const &wanted)
{
    return wanted.path + ".tw-edit-" + wanted.token;
}

std::string replaceWithStaged(ShellDialect dialect, Replacement const &wanted, std::string_view stagedFile)
{
    if (dialect == ShellDialect::powershell)
        return powerShellBeginning(wanted.path) + "$e=" + quote(dialect, wanted.expected) +
               "\n$s=" + quotePath(dialect, stagedFile) + std::string(powerShellReplace);
    return beginning(wanted) + assigned("tw_s", folderOf(stagedFile)) + "tw_replace\n";
}

std::string dropStaged(ShellDialect dialect, std::string_view stagedFile)
{
    if (dialect == ShellDialect::powershell)
        return "Remove-Item -LiteralPath " + quotePath(dialect, stagedFile) + " -Force -ErrorAction SilentlyContinue";
    return "rm -rf -- " + quote(dialect, folderOf(stagedFile));
}

Outcome outcome(std::string_view output)
{
    auto const line = lastLine(output);
    auto answer = answerIn(line);
    if (!answer)
        return {.words = std::string(trimmed(output))};
    using Kind = Outcome::Kind;
    auto const kind = answer->kind == "replaced"  ? Kind::replaced
                      : answer->kind == "same"    ? Kind::same
                      : answer->kind == "changed" ? Kind::changed
                                                  : Kind::failed;
    auto const said = trimmed(output);
    return {.kind = kind,
            .state = std::move(answer->state),
            .words = std::string(trimmed(said.substr(0, said.size() - line.size())))};
}

} // namespace tw::EditCommand
