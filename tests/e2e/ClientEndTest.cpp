#include "tests/e2e/HostTest.h"
#include "tests/hosts/ProcessTree.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <thread>

namespace tw::test {

namespace {

/// What is left of the processes that the program has started when it has ended, whatever its end.
class ClientEndTest : public HostTest, public testing::WithParamInterface<int> {
protected:
    using Processes = std::vector<ProcessRecord>;

    /// Waits until the program has started a program of that name. The answer is all that it has started.
    static Processes waitForDescendant(Child const &program, std::string const &name)
    {
        auto const deadline = std::chrono::steady_clock::now() + hangLimit;
        while (std::chrono::steady_clock::now() < deadline) {
            auto all = descendantsOf(program.id());
            if (std::ranges::any_of(all, [&](auto const &process) { return process.name == name; }))
                return all;
            std::this_thread::yield();
        }
        std::string names;
        for (auto const &process : descendantsOf(program.id()))
            names += ' ' + process.name;
        ADD_FAILURE() << "no " << name << ", but" << names;
        return {};
    }

    /// A client that is stopped is as deaf as can be: neither a limit of its own nor the end of its input ends it.
    static void stopClients(Processes const &processes)
    {
        for (auto const &process : processes) {
            if (process.name == "ssh")
                ::kill(process.id, SIGSTOP);
        }
    }

    static void expectGone(Processes const &processes)
    {
        auto const isThere = [](ProcessRecord const &process) {
            auto const now = recordOf(process.id);
            return now && now->born == process.born && !now->hasEnded();
        };
        auto const deadline = std::chrono::steady_clock::now() + hangLimit;
        while (std::ranges::any_of(processes, isThere)) {
            if (std::chrono::steady_clock::now() < deadline) {
                std::this_thread::yield();
                continue;
            }
            for (auto const &process : processes) {
                if (isThere(process)) {
                    ADD_FAILURE() << process.name << " is left";
                    killAndWait(process);
                }
            }
        }
    }

    void end(Child &program) const
    {
        program.signal(GetParam());
        EXPECT_EQ(program.waitForEnd(), GetParam() == SIGKILL ? -SIGKILL : 0) << program.output();
    }
};

TEST_P(ClientEndTest, leavesNoClientOfAHostInUse)
{
    auto program = startWithHost();
    expectBothPainted(program);
    auto const processes = waitForDescendant(program, "ssh");
    line.stall();
    stopClients(processes);
    end(program);
    expectGone(processes);
}

TEST_P(ClientEndTest, leavesNoClientOfAHostThatIsSilent)
{
    line.stall();
    auto program = startWithHost();
    expectPainted(program, at("left"));
    waitForAClient();
    auto const processes = waitForDescendant(program, "ssh");
    stopClients(processes);
    end(program);
    expectGone(processes);
}

INSTANTIATE_TEST_SUITE_P(Signals, ClientEndTest, testing::Values(SIGKILL, SIGHUP, SIGTERM),
                         [](auto const &signal) { return "SIG" + std::string(sigabbrev_np(signal.param)); });

TEST_F(ClientEndTest, quittingLeavesNoHelperOfAClientThatIsOnItsWay)
{
    // What leads to the host neither answers nor sees that its input has ended.
    client.add(alias, host.address(), SSHClient::Knowledge::right, "ProxyCommand sleep 1000");
    auto program = startWithHost();
    expectPainted(program, at("left"));
    auto const processes = waitForDescendant(program, "sleep");
    stopClients(processes);
    expectQuits(program);
    expectGone(processes);
}

} // namespace

} // namespace tw::test
