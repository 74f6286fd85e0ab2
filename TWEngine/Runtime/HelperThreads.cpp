#include "TWEngine/Runtime/HelperThreads.h"

#include <system_error>

namespace tw {

HelperThreads::~HelperThreads()
{
    for (auto &thread : threads) {
        thread.join();
        ++budget.left;
    }
}

bool HelperThreads::start(std::function<void()> work)
{
    if (--budget.left < 0) {
        ++budget.left;
        return false;
    }
    try {
        threads.emplace_back(std::move(work));
        return true;
    } catch (std::system_error const &) {
        ++budget.left; // the system has no thread left for us
        return false;
    }
}

} // namespace tw
