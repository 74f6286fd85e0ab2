#include "tests/support/TestLoop.h"

#include "TWEngine/Runtime/EngineRuntime.h"

#include <gtest/gtest.h>

#include <chrono>

namespace tw::test {

TestLoop::TestLoop()
    : main(std::make_shared<MainContext>([this] {
          // Notified under the lock: the loop may be gone as soon as it is released.
          std::lock_guard const lock(mutex);
          hasWork = true;
          woken.notify_one();
      }))
{
}

TestLoop::~TestLoop()
{
    main->close();
}

void TestLoop::drain()
{
    while (runPending() > 0) {
    }
}

void TestLoop::settle(EngineRuntime &engine)
{
    do {
        engine.waitUntilIdle();
    } while (runPending() > 0);
}

bool TestLoop::runUntil(std::function<bool()> condition)
{
    auto const deadline = std::chrono::steady_clock::now() + hangLimit;
    for (;;) {
        runPending();
        auto const ranBefore = ran;
        if (condition())
            return true;
        // Looked at here too: a condition that lets time pass never lets the loop sleep.
        if (std::chrono::steady_clock::now() >= deadline) {
            ADD_FAILURE() << "the condition waited for did not come about";
            return false;
        }
        // A condition that drives the loop itself may have run, unseen, what would make it hold: it is asked again.
        if (ran != ranBefore)
            continue;
        std::unique_lock lock(mutex);
        if (woken.wait_until(lock, deadline, [this] { return hasWork; }))
            hasWork = false;
    }
}

std::size_t TestLoop::runPending()
{
    auto const count = main->runPending();
    ran += count;
    return count;
}

} // namespace tw::test
