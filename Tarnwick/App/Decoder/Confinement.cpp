#include "Tarnwick/App/Decoder/Confinement.h"

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <vector>

#include <malloc.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace tw::Confinement {

namespace {

constexpr rlim_t mebibyte = 1024 * 1024;

/// What a process of this kind may use in memory of its own. A picture that needs more is not shown.
constexpr rlim_t mostData = 180 * mebibyte;

/// For a picture that is decoded pixel by pixel: itself, and once more while it is turned.
constexpr rlim_t mostDataOfLarge = 280 * mebibyte;

/// With the libraries, whose pages are shared and mostly never touched.
constexpr rlim_t mostAddresses = 1024 * mebibyte;

constexpr rlim_t mostCpuSeconds = 8;

/// The wall time, from the request on. Much more than the processor time: on a busy machine that takes long to
/// get.
constexpr unsigned mostSeconds = 30;

/// Standard input, output and error.
constexpr rlim_t openDescriptors = 3;

void limit(int resource, rlim_t bound)
{
    rlimit const bounds{bound, bound};
    static_cast<void>(::setrlimit(static_cast<__rlimit_resource>(resource), &bounds));
}

#if defined(__x86_64__)
constexpr std::uint32_t architecture = AUDIT_ARCH_X86_64;
#elif defined(__aarch64__)
constexpr std::uint32_t architecture = AUDIT_ARCH_AARCH64;
#else
constexpr std::uint32_t architecture = 0;
#endif

/// What decoding needs: memory, the time, and the descriptors and threads that there are.
constexpr std::array allowedCalls{
    SYS_read,
    SYS_pread64,
    SYS_readv,
    SYS_write,
    SYS_writev,
    SYS_lseek,
    SYS_fstat,
    SYS_newfstatat,
    SYS_statx,
    SYS_close,
    SYS_fcntl,
    SYS_mmap,
    SYS_munmap,
    SYS_mremap,
    SYS_mprotect,
    SYS_madvise,
    SYS_brk,
    SYS_futex,
    SYS_getrandom,
    SYS_getpid,
    SYS_gettid,
    SYS_exit,
    SYS_exit_group,
    SYS_rt_sigaction,
    SYS_rt_sigreturn,
    SYS_rt_sigprocmask,
    SYS_tgkill,
    SYS_sched_yield,
    SYS_sched_getaffinity,
    SYS_sysinfo,
    SYS_uname,
    SYS_clock_gettime,
    SYS_clock_nanosleep,
    SYS_restart_syscall,
};

constexpr auto offsetOfNumber = static_cast<std::uint32_t>(offsetof(seccomp_data, nr));
constexpr auto offsetOfArchitecture = static_cast<std::uint32_t>(offsetof(seccomp_data, arch));

sock_filter load(std::uint32_t offset)
{
    return BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offset);
}

sock_filter answer(std::uint32_t action)
{
    return BPF_STMT(BPF_RET | BPF_K, action);
}

/// Skips the next instruction unless what was loaded is `value`.
sock_filter unlessEqual(std::uint32_t value)
{
    return BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, value, 0, 1);
}

/// Everything else fails as a thing that is not permitted, which libraries expect.
void filterCalls()
{
    if (architecture == 0)
        return;
    std::vector<sock_filter> program{load(offsetOfArchitecture),
                                     BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, architecture, 1, 0),
                                     answer(SECCOMP_RET_KILL_PROCESS), load(offsetOfNumber)};
    for (auto const call : allowedCalls) {
        program.push_back(unlessEqual(static_cast<std::uint32_t>(call)));
        program.push_back(answer(SECCOMP_RET_ALLOW));
    }
    program.push_back(answer(SECCOMP_RET_ERRNO | EPERM));
    sock_fprog const whole{static_cast<unsigned short>(program.size()), program.data()};
    static_cast<void>(::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &whole));
}

} // namespace

void limitResources()
{
    limit(RLIMIT_CORE, 0);
    limit(RLIMIT_CPU, mostCpuSeconds);
    limit(RLIMIT_FSIZE, 0);
    limit(RLIMIT_DATA, mostDataOfLarge);
    limit(RLIMIT_AS, mostAddresses);
    // Every thread would reserve an arena of its own.
    ::mallopt(M_ARENA_MAX, 1);
}

void limitPicture(Memory memory)
{
    ::alarm(mostSeconds);
    if (memory == Memory::usual)
        limit(RLIMIT_DATA, mostData);
}

void closeDoors()
{
    limit(RLIMIT_NOFILE, openDescriptors);
    static_cast<void>(::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0));
    filterCalls();
}

} // namespace tw::Confinement
