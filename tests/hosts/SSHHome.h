#pragma once

#include "tests/support/TemporaryFolder.h"

#include <map>
#include <string>

namespace tw::test {

/// Environment variables that make the installed ssh use `home` as the home folder of the user: ssh ignores HOME and
/// asks the password database. `folder` holds the files that this needs.
std::map<std::string, std::string> sshHome(TemporaryFolder const &folder, std::string const &home);

} // namespace tw::test
