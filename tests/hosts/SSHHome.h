#pragma once

#include "tests/support/TemporaryFolder.h"

#include <map>
#include <string>

namespace tw::test {

/// What lets the ssh that every user has take `home` for the user's home folder, as variables of its environment: it
/// asks the password database for it and not HOME. `folder` keeps what is needed for that.
std::map<std::string, std::string> sshHome(TemporaryFolder const &folder, std::string const &home);

} // namespace tw::test
