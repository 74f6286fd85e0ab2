#include "TWEngine/Runtime/FileDescriptor.h"
#include "tests/e2e/ProgramTest.h"

#include <cstring>
#include <stdexcept>

#include <sys/socket.h>
#include <sys/un.h>

namespace tw::test {

namespace {

/// A message bus that accepts every connection and never answers.
class SilentBus {
public:
    explicit SilentBus(std::string const &path) : listener(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
        std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
        // The system completes a connection that nobody takes from the queue.
        if (::bind(listener.get(), reinterpret_cast<sockaddr const *>(&address), sizeof address) != 0 ||
            ::listen(listener.get(), 100) != 0)
            throw std::runtime_error("no silent bus at " + path);
    }

private:
    FileDescriptor const listener;
};

/// The program in a session in which something that it may ask hangs.
class HangingServicesTest : public ProgramTest {
protected:
    Child startWith(Child::Environment const &changes)
    {
        auto all = environment();
        for (auto const &[name, value] : changes)
            all[name] = value;
        return Child({TARNWICK_PROGRAM, "--left", at("left"), "--right", at("right")}, all);
    }

    /// The time-outs that libraries have for a bus are of 25 s.
    void expectPaintedWithoutWaiting(Child &program)
    {
        auto const event = " listing painted " + at("left");
        auto const line = program.waitForLine([&](std::string const &text) { return text.ends_with(event); });
        auto const time = line.substr(0, line.size() - event.size());
        // The program's clock is the test's.
        std::chrono::steady_clock::time_point const painted(
            std::chrono::microseconds(std::stoll(time.substr(time.rfind(' ') + 1))));
        EXPECT_LT(painted - began, std::chrono::seconds(20));
    }

    std::chrono::steady_clock::time_point const began = std::chrono::steady_clock::now();
};

TEST_F(HangingServicesTest, aSessionBusThatNeverAnswersHoldsNoWindowBack)
{
    SilentBus const bus(at("bus"));
    auto program = startWith({{"DBUS_SESSION_BUS_ADDRESS", "unix:path=" + at("bus")}});
    expectPaintedWithoutWaiting(program);
    expectQuits(program);
}

TEST_F(HangingServicesTest, norDoesOneThatIsFoundInTheRuntimeFolder)
{
    SilentBus const bus(at("runtime/bus"));
    auto program = startWith({{"DBUS_SESSION_BUS_ADDRESS", ""}});
    expectPaintedWithoutWaiting(program);
    expectQuits(program);
}

TEST_F(HangingServicesTest, aPasswordDatabaseThatNeverAnswersHoldsNoWindowBack)
{
    auto program = startWith({{"LD_PRELOAD", TARNWICK_HANGING_NSS}});
    expectBothFoldersPainted(program);
    expectQuits(program);
}

TEST_F(HangingServicesTest, norDoesItWithoutAHomeInTheEnvironment)
{
    auto program = startWith({{"LD_PRELOAD", TARNWICK_HANGING_NSS}, {"HOME", ""}});
    expectBothFoldersPainted(program);
    expectQuits(program);
}

} // namespace

} // namespace tw::test
