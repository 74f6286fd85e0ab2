#include "TWCore/Archives/ArchiveScripts.h"

#include "TWCore/Shell/ShellDialect.h"

namespace tw::ArchiveScripts {

namespace {

/// For another user, the tools themselves leave out both.
constexpr std::string_view clean = R"sh([ "$(id -u)" != 0 ] || find "$1" \( -type b -o -type c \) -exec rm -f {} + -o \
    -type f \( -perm -4000 -o -perm -2000 \) -exec chmod ug-s {} + || exit 1
)sh";

/// A folder that its owner cannot write to cannot be moved either.
constexpr std::string_view move = R"sh(tw_move() {
    mv -f "$1" "$2" 2>/dev/null && return
    [ -d "$1" ] && [ ! -L "$1" ] && [ ! -w "$1" ] || { mv -f "$1" "$2"; return; }
    chmod u+w "$1" && mv -f "$1" "$2" && chmod u-w "$2"
}
)sh";

/// By umask: the folder was nobody else's until here.
constexpr std::string_view placeAllText = R"sh(if [ -e "$2" ] || [ -L "$2" ]; then
    echo "$2 is there already" >&2; exit 1
fi
if [ -d "$1/$3" ] && [ ! -L "$1/$3" ] && [ "$(ls -A "$1" | wc -l)" -eq 1 ]; then
    tw_move "$1/$3" "$2" && rmdir "$1"
else
    chmod +rwx "$1" && tw_move "$1" "$2"
fi
)sh";

/// Folders are merged by tar, which removes a link in its way and never writes through it.
constexpr std::string_view placeMembersText = R"sh(s=$1; t=$2; shift 2
for e do
    n=${e##*/}
    if [ ! -e "$s/$e" ] && [ ! -L "$s/$e" ]; then
        echo "$e is not in the archive" >&2; exit 1
    elif [ -d "$s/$e" ] && [ ! -L "$s/$e" ] && [ -d "$t/$n" ] && [ ! -L "$t/$n" ]; then
        tar -cf - -C "$s/$e" . | tar -xpf - -C "$t/$n" || exit 1
    elif [ -d "$t/$n" ] && [ ! -L "$t/$n" ]; then
        echo "$t/$n is a folder" >&2; exit 1
    else
        [ ! -L "$t/$n" ] || rm -f "$t/$n" || exit 1
        tw_move "$s/$e" "$t/$n" || exit 1
    fi
done
rm -rf "$s" 2>/dev/null || { chmod -R u+rwX "$s"; rm -rf "$s"; }
)sh";

constexpr std::string_view placeFileText = R"sh(if [ -d "$2" ]; then
    echo "$2 is a folder" >&2; exit 1
fi
mv -f "$1" "$2" && rmdir "${1%/*}"
)sh";

std::string joined(std::initializer_list<std::string_view> parts)
{
    std::string text;
    for (auto const part : parts)
        text += part;
    return text;
}

Script scriptOf(ArchivePlacing::All const &all)
{
    return {joined({clean, move, placeAllText}), {all.staging, all.target, all.stem}};
}

Script scriptOf(ArchivePlacing::Members const &some)
{
    Script script{joined({clean, move, placeMembersText}), {some.staging, some.target}};
    script.arguments.insert(script.arguments.end(), some.members.begin(), some.members.end());
    return script;
}

Script scriptOf(ArchivePlacing::File const &one)
{
    return {std::string(placeFileText), {one.file, one.target}};
}

} // namespace

std::string Script::inSubshell() const
{
    std::string all = "(set --";
    for (auto const &argument : arguments)
        all += " " + quote(ShellDialect::posix, argument);
    return all + "\n" + text + ")";
}

Script makeStaging(std::string staging)
{
    return {"umask 077; mkdir \"$1\"\n", {std::move(staging)}};
}

Script removeStaging(std::string staging)
{
    return {"rm -rf \"$1\" 2>/dev/null || { chmod -R u+rwX \"$1\"; rm -rf \"$1\"; }\n", {std::move(staging)}};
}

Script place(ArchivePlacing::Any const &placing)
{
    return std::visit([](auto const &one) { return scriptOf(one); }, placing);
}

Script readFile(std::string path)
{
    return {"exec cat -- \"$1\"\n", {std::move(path)}};
}

Script writeFile(std::string path)
{
    return {"exec cat > \"$1\"\n", {std::move(path)}};
}

} // namespace tw::ArchiveScripts
