#include "tests/hosts/LoginScripts.h"

namespace tw::test {

namespace {

std::string script(std::string const &body)
{
    return "#!/bin/sh\n" + body;
}

/// All 256 bytes, as printf reads them.
std::string everyByteEscaped()
{
    std::string escaped;
    for (unsigned value = 0; value < 256; ++value) {
        escaped += '\\';
        for (int shift = 6; shift >= 0; shift -= 3)
            escaped += static_cast<char>('0' + ((value >> shift) & 7U));
    }
    return escaped;
}

} // namespace

std::string loginWithNoise()
{
    return script(R"(printf 'Welcome!\n* 3 updates can be applied\n\n'
echo 'stty: standard input: Inappropriate ioctl for device' >&2
printf 'no end of line'
exec /bin/sh -c "$SSH_ORIGINAL_COMMAND"
)");
}

std::string loginWithoutBash()
{
    // Links to what scripts commonly use; to link all programs takes a second on some file systems.
    return script(R"(programs=$HOME/programs.$$
mkdir "$programs"
for name in '[' awk basename cat chmod chown cmp cp cut date dd df diff dirname du env expr false find free getconf \
    grep gzip head hostname id kill ln ls mawk md5sum mkdir mkfifo mktemp mv nproc od perl printf ps pwd python3 \
    readlink realpath rm rmdir sed seq sh sha256sum sleep sort stat stty tail tar tee test touch tr true tty uname \
    uniq uptime wc which who whoami xargs; do
    if [ -x "/usr/bin/$name" ]; then
        set -- "$@" "/usr/bin/$name"
    elif [ -x "/bin/$name" ]; then
        set -- "$@" "/bin/$name"
    fi
done
ln -s "$@" "$programs"
PATH=$programs
export PATH
exec /bin/sh -c "$SSH_ORIGINAL_COMMAND"
)");
}

std::string loginWithAnotherShell()
{
    // Quoted words are taken out first; a quote that is left then was open at the end of its line.
    return script(R"(unquoted=$(printf '%s\n' "$SSH_ORIGINAL_COMMAND" | sed "s/'[^']*'//g; s/\"[^\"\$]*\"//g")
refuse()
{
    echo "$1" >&2
    exit 1
}
case $unquoted in
    *"'"* | *'"'*) refuse "Unmatched '''." ;;
    *'$('* | *'${'* | *'$?'*) refuse 'Illegal variable name.' ;;
    *'2>'*) refuse 'Ambiguous output redirect.' ;;
esac
for word in $unquoted; do
    case $word in
        [A-Za-z_]*=*) refuse "$word: Command not found." ;;
        export | local | '{' | '(' | *'()') refuse "$word: Command not found." ;;
        then | do | fi | done | esac) refuse "$word: Command not found." ;;
    esac
done
exec /bin/sh -c "$SSH_ORIGINAL_COMMAND"
)");
}

std::string loginWithGarbage()
{
    return script("round=0\n"
                  "while [ $round -lt 256 ]; do\n"
                  "    printf '" +
                  everyByteEscaped() +
                  "'\n"
                  "    round=$((round + 1))\n"
                  "done\n"
                  "exec cat >/dev/null\n");
}

std::string loginWithFlood(std::size_t bytes)
{
    return script("head -c " + std::to_string(bytes) +
                  " /dev/zero | tr '\\0' x\n"
                  "exec cat >/dev/null\n");
}

std::string loginThatBreaksOff(std::size_t afterBytes)
{
    // The command reads what the client sends, which a job in the background does only if it is told to.
    return script(R"(said=$HOME/said.$$
mkfifo "$said"
exec 3<&0
/bin/sh -c "$SSH_ORIGINAL_COMMAND" <&3 >"$said" &
head -c )" + std::to_string(afterBytes) +
                  R"( <"$said"
kill -KILL $!
)");
}

std::string loginWithoutPrivileges()
{
    return script(R"(if [ $(id -u) = 0 ]; then
    rights=-dac_override,-dac_read_search
    exec setpriv --bounding-set "$rights" --inh-caps "$rights" -- /bin/sh -c "$SSH_ORIGINAL_COMMAND"
fi
exec /bin/sh -c "$SSH_ORIGINAL_COMMAND"
)");
}

std::string loginWithoutAnswer()
{
    return script("exec cat >/dev/null\n");
}

} // namespace tw::test
