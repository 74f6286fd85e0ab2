#include "TWEngine/Runtime/ProcessEnd.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include <sys/socket.h>
#include <unistd.h>

namespace tw {

namespace {

/// Not files: closing one that lies on a dead mount does not return.
std::vector<int> pipesAndSockets()
{
    namespace fs = std::filesystem;
    std::vector<int> all;
    std::error_code failure;
    for (auto const &entry : fs::directory_iterator("/proc/self/fd", failure)) {
        std::error_code gone;
        auto const target = fs::read_symlink(entry.path(), gone).string();
        auto const number = std::atoi(entry.path().filename().c_str());
        if (number > STDERR_FILENO && (target.starts_with("pipe:") || target.starts_with("socket:")))
            all.push_back(number);
    }
    return all;
}

/// A socket on which nothing ever comes: to read from it has to be tried again later.
int silentSocket()
{
    std::array<int, 2> ends{-1, -1};
    ::socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0, ends.data());
    return ends[0]; // the other end stays open, or this one would be at its end
}

/// Each is replaced and not just closed. A thread of the toolkit that still reads from one takes an error for the end
/// of the display, and ends the process with a status of its own.
void closePipesAndSockets()
{
    auto const all = pipesAndSockets();
    auto const silence = silentSocket();
    for (auto const number : all) {
        if (silence < 0 || ::dup2(silence, number) < 0)
            ::close(number);
    }
}

} // namespace

void endProcess(int status)
{
    std::fflush(nullptr);
    closePipesAndSockets();
    std::_Exit(status);
}

} // namespace tw
