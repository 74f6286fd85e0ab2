#include "TWCore/Shell/EndableCommand.h"

namespace tw::EndableCommand {

namespace {

std::string fileOf(std::string_view token)
{
    return "\"${TMPDIR:-/tmp}\"/.tarnwick-" + std::string(token);
}

} // namespace

std::string text(std::string_view token, std::string_view program, std::string_view script)
{
    auto const file = fileOf(token);
    std::string const name(program);
    // A shell that becomes the program, so that the number in the file is that of the program.
    return "(" + name +
           "() { sh -c 'u=$(umask); umask 077; set -C; (echo $$ >\"$0\") 2>/dev/null; umask $u; "
           "if [ -e \"$0\".end ]; then exit 143; fi; exec " +
           name + " \"$@\"' " + file + " \"$@\"; set -- $?; command rm -f " + file + "; return $1; }\n" +
           std::string(script) + "\n)\ntw_s=$?; rm -f " + file + ".end; (exit $tw_s)";
}

std::string end(std::string_view token)
{
    auto const file = fileOf(token);
    return "(umask 077; : >" + file + ".end); p=$(cat " + file + " 2>/dev/null) && kill \"$p\"";
}

std::string forget(std::string_view token)
{
    return "rm -f " + fileOf(token) + ".end";
}

} // namespace tw::EndableCommand
