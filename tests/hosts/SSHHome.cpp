#include "tests/hosts/SSHHome.h"

#include <pwd.h>
#include <unistd.h>

namespace tw::test {

std::map<std::string, std::string> sshHome(TemporaryFolder const &folder, std::string const &home)
{
    auto const *const real = ::getpwuid(::getuid());
    auto const name = std::string(real->pw_name);
    auto const user = std::to_string(real->pw_uid);
    auto const group = std::to_string(real->pw_gid);
    return {
        {"LD_PRELOAD", "libnss_wrapper.so"},
        {"NSS_WRAPPER_DISABLE_DEEPBIND", "1"}, // which the sanitizers do not bear
        {"NSS_WRAPPER_PASSWD", folder.file("passwd", name + ":x:" + user + ":" + group + "::" + home + ":/bin/sh\n")},
        {"NSS_WRAPPER_GROUP", folder.file("group", name + ":x:" + group + ":\n")}};
}

} // namespace tw::test
