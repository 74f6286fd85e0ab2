#include "TWCore/Shell/EndableCommand.h"

namespace tw::EndableCommand {

namespace {

constexpr std::string_view folder = "\"${TMPDIR:-/tmp}\"";

std::string fileOf(std::string_view token)
{
    return std::string(folder) + "/.tarnwick-" + std::string(token);
}

std::string endableFunction(std::string_view program, std::string const &isEnded)
{
    std::string const name(program);
    return name + "() { if " + isEnded + "; then return 143; fi; { exec " + name + " \"$@\" <&9 9<&- & } 9<&0; " +
           "{ echo $! >\"$tw_number\"; if " + isEnded + "; then kill $!; fi; wait $!; set -- $?; " +
           "echo >\"$tw_number\"; } 2>/dev/null; return $1; }\n";
}

} // namespace

std::string text(std::string_view token, std::initializer_list<std::string_view> programs, std::string_view script)
{
    auto const file = fileOf(token);
    // The file is made here, so that nobody else's is written to later. The number goes as soon as the program has been
    // waited for: it may become that of another one. `end` may come before the number is written; then the program is
    // ended here. In the background, a program would have an empty input.
    //
    // Starting rm takes longer than all of this, so it is not waited for. It removes the end last: an end that has
    // still found the file goes too. Not by a trap: bash then handles SIGTERM, and a program that gets it before its
    // `exec` would live on.
    auto command =
        "tw_number=" + file + "; (umask 077; set -C; : >\"$tw_number\") 2>/dev/null || tw_number=/dev/null\n(";
    for (auto const program : programs)
        command += endableFunction(program, "[ -e " + file + ".end ]");
    return command + std::string(script) + "\n)\ntw_s=$?; exec rm -f " + file + " " + file +
           ".end >/dev/null 2>&1 &\nexit $tw_s";
}

std::string end(std::string_view token)
{
    auto const file = fileOf(token);
    // The number is read behind the attempt to leave the mark: a program that starts in between looks for the mark when
    // its number is there.
    return "(umask 077; set -C; : >" + file + ".end) 2>/dev/null || [ -e " + file + ".end ]; tw_mark=$?; " +
           "tw_number=$(cat " + file +
           " 2>/dev/null) && { [ -z \"$tw_number\" ] || kill \"$tw_number\"; }; tw_kill=$?; " +
           "[ $tw_mark = 0 ] || exit " + std::to_string(cannotBeEnded) + "; [ $tw_kill = 0 ]";
}

std::string isWatched()
{
    return "[ -r /proc/self/fdinfo/0 ] && [ -w " + std::string(folder) + " ]";
}

std::string position(std::string_view token)
{
    return "{ read -r p <" + fileOf(token) + " && read -r w n <\"/proc/$p/fdinfo/0\" && echo \"$n\"; } 2>/dev/null";
}

std::string forget(std::string_view token)
{
    return "rm -f " + fileOf(token) + ".end";
}

} // namespace tw::EndableCommand
