#include "tests/e2e/HostTest.h"

#include <thread>

namespace tw::test {

namespace {

using HostDeleteTest = HostTest;

TEST_F(HostDeleteTest, f8DeletesOnlyAfterItsButtonWasChosen)
{
    auto program = startWithHost();
    expectBothPainted(program);
    press({"Tab", "Home", "Down", "F8"});
    answer("Delete 1 item on", {"Return"});
    EXPECT_TRUE(std::filesystem::exists(remote("first")));
    press({"F8"});
    answer("Delete 1 item on", {"shift+Tab", "space"});
    auto const deadline = std::chrono::steady_clock::now() + hangLimit;
    while (std::filesystem::exists(remote("first")) && std::chrono::steady_clock::now() < deadline)
        std::this_thread::yield();
    EXPECT_FALSE(std::filesystem::exists(remote("first")));
    EXPECT_TRUE(std::filesystem::exists(remote("second")));
    expectQuits(program);
}

} // namespace

} // namespace tw::test
