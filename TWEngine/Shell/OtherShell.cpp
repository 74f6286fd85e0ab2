#include "TWEngine/Shell/OtherShell.h"

namespace tw::OtherShell {

namespace {

std::string handshake(std::string_view nonce, std::int32_t status)
{
    return "printf '@@TW" + std::string(nonce) + ":0:" + std::to_string(status) + "@@\\n'";
}

} // namespace

std::string question(std::string_view nonce)
{
    auto const answer = handshake(nonce, isThere) + '\n';
    // To csh, $?NAME is 0 if there is no such variable. To sh it is the last status with the text NAME behind it. The
    // second line ends csh, which does not know the variable.
    return "test \"$?BASH_VERSION\" = 0 && " + answer + "test -n \"$BASH_VERSION\" || " + answer;
}

std::string replacement(std::string_view nonce)
{
    // BASH_ENV names a start file of any bash that runs a script.
    constexpr auto bash = "exec env BASH_ENV= bash --norc --noprofile ";
    // In double quotes, since the handshake has single ones.
    return bash + std::string("-c \"") + handshake(nonce, isGone) + "; " + bash + "-s\"\n";
}

} // namespace tw::OtherShell
