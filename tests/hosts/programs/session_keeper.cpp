// session_keeper PROGRAM ARGUMENT...
//
// Becomes PROGRAM. The process adopts what its descendants leave behind when they end, so that everything that it has
// started can be found below it. It ends with its parent.
#include <cstdio>
#include <cstdlib>

#include <signal.h>
#include <sys/prctl.h>
#include <unistd.h>

int main(int count, char **arguments)
{
    if (count < 2) {
        std::fputs("session_keeper: no program\n", stderr);
        return EXIT_FAILURE;
    }
    auto const parent = ::getppid();
    // Both stay over exec. Killed, because one that is stopped hears nothing else.
    if (::prctl(PR_SET_CHILD_SUBREAPER, 1) != 0 || ::prctl(PR_SET_PDEATHSIG, SIGKILL) != 0) {
        std::perror("session_keeper: prctl");
        return EXIT_FAILURE;
    }
    // It may have ended before that.
    if (::getppid() != parent)
        return EXIT_FAILURE;
    ::execv(arguments[1], arguments + 1);
    std::perror("session_keeper: exec");
    return EXIT_FAILURE;
}
