#pragma once

#include <cerrno>
#include <cstdlib>
#include <linux/capability.h>
#include <system_error>

#include <sys/syscall.h>
#include <unistd.h>

namespace tw::test {

/// Permissions apply to this thread, and to the threads that it starts meanwhile, also if they are root's. Programs
/// that they start have root's rights again.
class WithoutPrivileges {
public:
    WithoutPrivileges()
    {
        ::__user_cap_header_struct header{.version = _LINUX_CAPABILITY_VERSION_3, .pid = 0};
        if (::syscall(SYS_capget, &header, before) != 0)
            throw std::system_error(errno, std::generic_category());
        set(before[0].effective & ~(1U << CAP_DAC_OVERRIDE | 1U << CAP_DAC_READ_SEARCH | 1U << CAP_FOWNER));
    }

    ~WithoutPrivileges() { set(before[0].effective); }

    WithoutPrivileges(WithoutPrivileges const &) = delete;
    WithoutPrivileges &operator=(WithoutPrivileges const &) = delete;

private:
    void set(__u32 effective)
    {
        ::__user_cap_header_struct header{.version = _LINUX_CAPABILITY_VERSION_3, .pid = 0};
        ::__user_cap_data_struct now[2] = {before[0], before[1]};
        now[0].effective = effective;
        if (::syscall(SYS_capset, &header, now) != 0)
            std::abort();
    }

    ::__user_cap_data_struct before[2] = {};
};

} // namespace tw::test
