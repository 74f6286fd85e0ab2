#include "TWEngine/Passwords/AskpassGuard.h"

#include <unistd.h>

namespace tw::AskpassGuard {

namespace {

/// What was met between a process and this program above it.
struct Callers {
    int ssh = 0;
    int sftp = 0;
};

/// Up to the first process for which `isProgram` holds. Nothing if there is none.
template <class IsProgram>
std::optional<Callers> callersBelow(IsProgram isProgram, pid_t self, ProcessTable const &processes)
{
    Callers callers;
    auto child = self;
    for (int step = 0; step < mostSteps; ++step) {
        auto const process = processes.parentOf(child);
        if (!process || *process < 2 || *process == child) // 1 is the first of all, and 0 is in no table
            return std::nullopt;
        auto const executable = processes.executableOf(*process);
        if (isProgram(*process, executable))
            return callers;
        if (executable) {
            auto const name = executable->path.substr(executable->path.rfind('/') + 1);
            callers.ssh += name == "ssh" ? 1 : 0;
            callers.sftp += name == "sftp" ? 1 : 0;
        }
        child = *process;
    }
    return std::nullopt;
}

std::optional<Callers> callersOf(pid_t self, ProcessTable const &processes)
{
    auto const own = processes.executableOf(self);
    if (!own)
        return std::nullopt;
    return callersBelow([&own](pid_t, auto const &executable) { return executable == own; }, self, processes);
}

} // namespace

bool calledByOurOwnSSH()
{
    return calledByOurOwnSSH(::getpid(), ProcessTable::ofThisSystem());
}

bool calledByOurOwnSSH(pid_t self, ProcessTable const &processes)
{
    auto const callers = callersOf(self, processes);
    return callers && callers->ssh + callers->sftp > 0;
}

Caller callerBelow(pid_t program, pid_t asker, ProcessTable const &processes)
{
    auto const callers =
        callersBelow([program](pid_t process, auto const &) { return process == program; }, asker, processes);
    if (!callers || callers->ssh + callers->sftp == 0)
        return Caller::stranger;
    return callers->ssh > 1 ? Caller::jumpHost : Caller::host;
}

bool calledForJumpHost(pid_t self, ProcessTable const &processes)
{
    auto const callers = callersOf(self, processes);
    return callers && callers->ssh > 1;
}

} // namespace tw::AskpassGuard
