#include "TWEngine/Shell/ResidentScript.h"

namespace tw::ResidentScript {

namespace {

constexpr std::string_view maximumMark = "{MAX}";
constexpr std::string_view nonceMark = "{NONCE}";

/// Every tool speaks and sorts as in the C locale, so that its output can be read by a program.
constexpr std::string_view preamble = R"sh(export LC_ALL=C
TW_MAX={MAX}
)sh";

/// GNU find prints a whole subtree in one pass. BSD find has no -printf; there perl prints the same records.
constexpr std::string_view listerChoice = R"sh(
if find . -maxdepth 0 -printf '' >/dev/null 2>&1; then
  TW_IMPL=gnu
else
  TW_IMPL=perl
fi
)sh";

/// -H follows the link that was asked for and none below it. Without it /lib, a link on most systems, would be empty.
constexpr std::string_view gnuLister = R"sh(
tw_emit_gnu() {
  find -H "$2" -maxdepth "$1" -mindepth 1 -printf '%y\t%s\t%T@\t%m\t%P\0' 2>/dev/null
}
)sh";

/// One quoted word of the shell, so there is no single quote in it.
///
/// A root that is a link is resolved for the same reason as above; paths come back relative, so the caller's name for
/// it stands. The kind is read from the bits of the mode and not asked of perl's `-l _`, which takes links for files
/// here.
constexpr std::string_view perlLister = R"sh(
tw_emit_perl() {
  perl -e '
use File::Find ();
use Cwd ();
my ($maxdepth, $root) = @ARGV;
$root =~ s{/+$}{} if length($root) > 1;
if (-l $root) { my $r = Cwd::abs_path($root); $root = $r if defined $r; }
my $rlen = length($root) + ($root eq "/" ? 0 : 1);
File::Find::find({
  no_chdir => 1,
  preprocess => sub { return sort @_ },
  wanted => sub {
    my $p = $File::Find::name;
    return if $p eq $root;
    my $rel = substr($p, $rlen);
    return if $rel eq "";
    my $d = ($rel =~ tr{/}{}) + 1;
    if ($d > $maxdepth) { $File::Find::prune = 1; return; }
    my @s = lstat($p) or return;
    my $fmt = $s[2] & 0170000;
    my $y = $fmt == 0120000 ? "l"
          : $fmt == 0040000 ? "d"
          : $fmt == 0100000 ? "f"
          : $fmt == 0060000 ? "b"
          : $fmt == 0020000 ? "c"
          : $fmt == 0010000 ? "p"
          : $fmt == 0140000 ? "s"
          : "?";
    $File::Find::prune = 1 if $y eq "d" && $d >= $maxdepth;
    printf("%s\t%d\t%d\t%o\t%s\0", $y, $s[7], $s[9], $s[2] & 07777, $rel);
  },
}, $root);
' "$1" "$2" 2>/dev/null
}
)sh";

/// What a command prints on its error output is part of the answer, so that a failure explains itself. The parentheses
/// are a subshell: no `cd`, `exit` or variable of the command reaches the session.
constexpr std::string_view runService = R"sh(
tw_run() {
  local id="$1" st
  shift
  ( eval "$*" ) 2>&1
  st=$?
  printf '@@TW{NONCE}:%s:%s@@\n' "$id" "$st"
}
)sh";

/// Errors are dropped: a warning in the middle of a file's bytes would be one of them.
constexpr std::string_view readService = R"sh(
tw_read() {
  local id="$1" path="$2" off="$3" len="$4" st
  tail -c "+$(( off + 1 ))" "$path" 2>/dev/null | head -c "$len"
  st=$?
  printf '@@TW{NONCE}:%s:%s@@\n' "$id" "$st"
}
)sh";

/// The first form is that of GNU, the second that of BSD.
constexpr std::string_view sizeService = R"sh(
tw_size() {
  local id="$1" path="$2" st
  { stat -c %s "$path" 2>/dev/null || stat -f %z "$path" 2>/dev/null; } | head -1
  st=$?
  printf '@@TW{NONCE}:%s:%s@@\n' "$id" "$st"
}
)sh";

/// When head has its fill, the lister dies of the closed pipe: a huge tree costs the budget and no more.
constexpr std::string_view listService = R"sh(
tw_list() {
  local id=$1 depth=$2 path=$3 st
  if [ "$TW_IMPL" = gnu ]; then
    tw_emit_gnu "$depth" "$path" | head -c "$TW_MAX"
  else
    tw_emit_perl "$depth" "$path" | head -c "$TW_MAX"
  fi
  st=$?
  printf '@@TW{NONCE}:%s:%s@@\n' "$id" "$st"
}
)sh";

/// GNU tar knows no zip, which bsdtar does by itself. 7-Zip is the only one that writes 7z, and zip with names that
/// every system reads; what its command is called depends on the package.
constexpr std::string_view archiveAbilities = R"sh(
if tar --version 2>&1 | head -1 | grep -qi bsdtar; then TW_TAR=bsdtar
else TW_TAR=gnutar; fi
TW_ZIP=no
if command -v zip >/dev/null 2>&1 && command -v unzip >/dev/null 2>&1; then
  TW_ZIP=yes
fi
TW_7Z=no
for c in 7zz 7z 7za; do
  if command -v "$c" >/dev/null 2>&1; then TW_7Z=$c; break; fi
done
)sh";

/// The folder that the shell starts in is the home on most hosts. Where bash is a Linux within Windows, it is the
/// person's own on the drive, which is the one that is meant.
constexpr std::string_view handshake = R"sh(
printf '%s\t%s\t%s,%s,%s@@TW{NONCE}:0:0@@\n' \
  "$TW_IMPL" "${PWD:-${HOME:-/}}" "$TW_TAR" "$TW_ZIP" "$TW_7Z"
)sh";

void replaceAll(std::string &text, std::string_view mark, std::string_view value)
{
    for (auto at = text.find(mark); at != std::string::npos; at = text.find(mark, at + value.size()))
        text.replace(at, mark.size(), value);
}

} // namespace

std::string posix(std::string_view nonce, std::size_t maxResponseBytes)
{
    std::string script;
    for (auto const part : {preamble, listerChoice, gnuLister, perlLister, runService, readService, sizeService,
                            listService, archiveAbilities, handshake})
        script += part;
    replaceAll(script, maximumMark, std::to_string(maxResponseBytes));
    replaceAll(script, nonceMark, nonce);
    return script;
}

} // namespace tw::ResidentScript
