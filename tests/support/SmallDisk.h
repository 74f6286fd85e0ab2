#pragma once

#include <string>

namespace tw::test {

/// The text of a script that runs `program` with the script's arguments while the folder `target` is a really small
/// disk, which only the program sees there. What it has written to it is in the folder afterwards. `scratch` is an
/// empty folder.
inline std::string onSmallDisk(std::string const &program, std::string const &target, std::string const &scratch)
{
    auto const inside = "mount --bind " + target + " " + scratch + " && mount -t tmpfs -o size=64k none " + target +
                        " && { " + program + " \"$@\"; s=$?; /bin/cp -a " + target + "/. " + scratch + "/; exit $s; }";
    return "exec unshare --user --map-root-user --mount sh -c '" + inside + "' sh \"$@\"";
}

} // namespace tw::test
