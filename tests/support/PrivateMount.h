#pragma once

#include <functional>
#include <string>

#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

namespace tw::test {

/// For a death test, in a process without threads: mounts a folder once more, where nobody else sees it, and ends the
/// process. 0: `isTrue` then.
[[noreturn]] inline void exitWithMount(std::string const &folder, std::string const &on,
                                       std::function<bool()> const &isTrue)
{
    if (::unshare(::geteuid() == 0 ? CLONE_NEWNS : CLONE_NEWNS | CLONE_NEWUSER) != 0 ||
        ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
        ::mount(folder.c_str(), on.c_str(), nullptr, MS_BIND, nullptr) != 0)
        ::_exit(2);
    ::_exit(isTrue() ? 0 : 1);
}

} // namespace tw::test
