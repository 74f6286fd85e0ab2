#include "TWEngine/Runtime/EngineRuntime.h"
#include "tests/e2e/ProgramTest.h"
#include "tests/hosts/ProcessTree.h"
#include "tests/hosts/SSHClient.h"
#include "tests/hosts/SSHHome.h"
#include "tests/hosts/TestHost.h"
#include "tests/hosts/TestMount.h"

#include <unistd.h>

namespace tw::test {

namespace {

/// The program with a host and four mounts that never answer.
///
///     left/dead0/ ... left/dead3/  remote/first/
class DeadMountTest : public ProgramTest {
protected:
    DeadMountTest()
    {
        folder.folder("remote/first");
        client.add(alias, host.address());
        for (int number = 0; number < 4; ++number)
            mounts.push_back(TestMount::silent(folder.folder("left/dead" + std::to_string(number))));
    }

    Child::Environment environment() const override
    {
        auto changes = ProgramTest::environment();
        changes.merge(sshHome(folder, client.home()));
        return changes;
    }

    std::string const alias = "tarnwick-e2e-" + std::to_string(::getpid());
    std::vector<TestMount> mounts;
    EngineRuntime engine;
    TestHost host{engine};
    SSHClient client;
};

TEST_F(DeadMountTest, theyStopNeitherOtherFoldersNorHostsNorTheEnd)
{
    auto program = start({"--left", at("left"), "--right", alias + ":" + at("remote")});
    auto dead = std::exchange(mounts, {}); // gone before the program is waited for, also if this test fails
    expectPainted(program, at("left"));
    expectPainted(program, at("remote"));
    // The rows are "..", alpha, beta and the mounts. The listing that is on show stays while another one is awaited.
    press({"Home", "Down", "Down", "Down", "Return", "Down", "Return", "Down", "Return", "Down"});
    pressUntilPainted(program, {"Home", "Down", "Return"}, at("left/alpha"));
    press({"Tab"});
    pressUntilPainted(program, {"Home", "Down", "Return"}, at("remote/first"));

    // A master that ssh itself keeps for a minute is no child of the program.
    auto const clientsAreGone = [&] {
        return std::ranges::all_of(descendantsOf(program.id()), &ProcessRecord::hasEnded);
    };
    EXPECT_FALSE(clientsAreGone());
    press({"ctrl+q"});
    EXPECT_TRUE(screen.waitForPicture([&](Picture const &) { return screen.titles().empty() && clientsAreGone(); }));
    dead.clear();
    EXPECT_EQ(program.waitForEnd(), 0) << program.output();
}

} // namespace

} // namespace tw::test
