#include "TWCore/Archives/BsdTarThere.h"

namespace tw::BsdTarThere {

bool isIt(ArchiveTools const &tools, std::string_view program)
{
    return !program.empty() && program == tools.bsdtar;
}

std::string_view locale()
{
    // Not every system has both; in either the words are English. One line, since a csh may have to pass it on.
    return "for tw_l in C.UTF-8 en_US.UTF-8; do [ \"$(LC_ALL=$tw_l locale charmap 2>/dev/null)\" = UTF-8 ] && break; "
           "done; export LC_ALL=$tw_l; ";
}

std::string withoutPassword(std::string_view call)
{
    // Nothing can be read from it, while /dev/null that is open for reading is at its end.
    return std::string(call) + " 0>/dev/null";
}

std::string withPassword(std::string_view call, std::string_view end)
{
    // Its questions have no line ends, and a closed pipe does not end it.
    return "set -o pipefail; " + std::string(call) +
           " 2>&1 | { LC_ALL=C awk 'BEGIN { RS = \":\" } { printf \"%s%s\", colon, $0; colon = RS } "
           "/Enter passphrase$/ && ++n > 1 { exit 1 }' || { " +
           std::string(end) + "; }; }";
}

} // namespace tw::BsdTarThere
