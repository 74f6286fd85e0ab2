// Becomes the program that is named behind the first argument, and ends with the thread that has started this one:
// posix_spawn(3) cannot ask for that. The first argument is the number of the process that must be the parent.
//
// Linked without any library, so that it costs a fraction of a millisecond.

#include <csignal>
#include <cstdio>
#include <cstdlib>

#include <sys/prctl.h>
#include <unistd.h>

int main(int count, char **arguments)
{
    constexpr int cannotStart = 127; // as shells have it
    constexpr int program = 2;
    if (count <= program || ::prctl(PR_SET_PDEATHSIG, SIGKILL) != 0)
        return cannotStart;
    // A parent that ended before the call above sends no signal.
    if (::getppid() != std::atoi(arguments[1]))
        return cannotStart;
    ::execv(arguments[program], arguments + program);
    std::perror(arguments[program]);
    return cannotStart;
}
