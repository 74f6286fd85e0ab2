#include "TWEngine/Runtime/ExitDeadline.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>

#include <sys/time.h>
#include <unistd.h>

namespace tw {

void setExitDeadline(std::chrono::milliseconds remaining)
{
    std::signal(SIGALRM, [](int) { _exit(EXIT_SUCCESS); });

    // A timer of zero would be none.
    auto const time = std::max(remaining, std::chrono::milliseconds(1));
    auto const seconds = std::chrono::duration_cast<std::chrono::seconds>(time);
    itimerval timer{};
    timer.it_value.tv_sec = seconds.count();
    timer.it_value.tv_usec = std::chrono::microseconds(time - seconds).count();
    setitimer(ITIMER_REAL, &timer, nullptr);
}

} // namespace tw
