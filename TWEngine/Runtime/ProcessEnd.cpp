#include "TWEngine/Runtime/ProcessEnd.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include <unistd.h>

namespace tw {

namespace {

/// Not files: closing one that lies on a dead mount does not return.
void closePipesAndSockets()
{
    namespace fs = std::filesystem;
    std::error_code failure;
    std::vector<int> toClose;
    for (auto const &entry : fs::directory_iterator("/proc/self/fd", failure)) {
        std::error_code gone;
        auto const target = fs::read_symlink(entry.path(), gone).string();
        auto const number = std::atoi(entry.path().filename().c_str());
        if (number > STDERR_FILENO && (target.starts_with("pipe:") || target.starts_with("socket:")))
            toClose.push_back(number);
    }
    for (auto const number : toClose)
        ::close(number);
}

} // namespace

void endProcess(int status)
{
    std::fflush(nullptr);
    closePipesAndSockets();
    std::_Exit(status);
}

} // namespace tw
