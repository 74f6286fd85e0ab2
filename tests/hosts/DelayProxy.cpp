#include "tests/hosts/DelayProxy.h"

#include "tests/hosts/Loopback.h"
#include "tests/hosts/ProxyConnection.h"

#include <algorithm>
#include <cerrno>
#include <condition_variable>
#include <mutex>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

namespace tw::test {

namespace {

/// Enough that a fast transfer takes few system calls.
constexpr std::size_t bufferBytes = std::size_t{256} << 10;

/// Reached by a hang only: a loaded machine with sanitizers is allowed to be very slow.
constexpr std::chrono::minutes hangLimit{2};

timespec untilThen(DelayLine::Time now, DelayLine::Time then)
{
    auto const left = std::max(then - now, DelayLine::Time::duration::zero());
    auto const seconds = std::chrono::duration_cast<std::chrono::seconds>(left);
    return {.tv_sec = seconds.count(), .tv_nsec = std::chrono::nanoseconds(left - seconds).count()};
}

} // namespace

class DelayProxy::Loop {
public:
    Loop(std::uint16_t targetPort, std::chrono::nanoseconds roundTrip)
        : wakeUp(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
          listener(listenOnLoopback()),
          ownPort(portOf(listener)),
          state{.targetPort = targetPort, .roundTrip = roundTrip}
    {
        if (!wakeUp)
            throw std::system_error(errno, std::generic_category(), "eventfd");
        state.buffer.resize(bufferBytes);
        thread = std::thread([this] { run(); });
    }

    ~Loop()
    {
        perform([this] { isEnding = true; });
        thread.join();
    }

    Loop(Loop const &) = delete;
    Loop &operator=(Loop const &) = delete;

    std::uint16_t port() const noexcept { return ownPort; }

    /// Runs `command` on the proxy's thread, and returns when it has.
    void perform(std::function<void()> command)
    {
        std::unique_lock lock(mutex);
        commands.push_back(std::move(command));
        auto const mine = ++commandsGiven;
        std::uint64_t const one = 1;
        [[maybe_unused]] auto const written = ::write(wakeUp.get(), &one, sizeof one);
        changed.wait(lock, [&] { return commandsDone >= mine; });
    }

    void cut(Ending how)
    {
        for (auto &connection : connections)
            connection.end(how);
        connections.clear();
    }

    Traffic waitUntil(std::function<bool(Traffic const &)> const &condition) const
    {
        std::unique_lock lock(mutex);
        if (!changed.wait_for(lock, hangLimit, [&] { return condition(told); }))
            throw std::runtime_error("the traffic waited for did not come about");
        return told;
    }

    Traffic traffic() const
    {
        std::lock_guard const lock(mutex);
        return told;
    }

    /// On the proxy's thread.
    ProxyState &shared() noexcept { return state; }

private:
    void run()
    {
        tell(0);
        while (!isEnding) {
            auto const polls = waitForWork();
            auto const now = std::chrono::steady_clock::now();
            auto const polled = polls.data() + 2;
            for (std::size_t index = 0; index < connections.size(); ++index)
                connections[index].advance(polled + index * ProxyConnection::pollCount, now, state);
            std::erase_if(connections, [](ProxyConnection const &connection) { return connection.isOver(); });
            if (polls[1].revents != 0)
                acceptAll();
            tell(runCommands());
        }
        connections.clear();
    }

    std::vector<pollfd> waitForWork() const
    {
        std::vector<pollfd> polls{{.fd = wakeUp.get(), .events = POLLIN, .revents = 0},
                                  {.fd = listener.get(), .events = POLLIN, .revents = 0}};
        std::optional<DelayLine::Time> next;
        auto const now = std::chrono::steady_clock::now();
        for (auto const &connection : connections) {
            connection.addTo(polls, now, state);
            auto const due = connection.due(state);
            if (due && (!next || *due < *next))
                next = due;
        }
        timespec time{};
        if (next)
            time = untilThen(std::chrono::steady_clock::now(), *next);
        if (::ppoll(polls.data(), polls.size(), next ? &time : nullptr, nullptr) < 0) {
            for (auto &entry : polls)
                entry.revents = 0;
        }
        return polls;
    }

    void acceptAll()
    {
        for (;;) {
            FileDescriptor client(::accept4(listener.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
            if (!client)
                return;
            ++state.traffic.connections;
            connections.emplace_back(std::move(client), std::chrono::steady_clock::now(), state);
        }
    }

    std::uint64_t runCommands()
    {
        std::vector<std::function<void()>> toRun;
        {
            std::lock_guard const lock(mutex);
            toRun.swap(commands);
        }
        std::uint64_t wakeUps = 0;
        [[maybe_unused]] auto const cleared = ::read(wakeUp.get(), &wakeUps, sizeof wakeUps);
        // What the system has accepted for us already is a connection for the client, and made before the command.
        if (!toRun.empty())
            acceptAll();
        for (auto const &command : toRun)
            command();
        return toRun.size();
    }

    void tell(std::uint64_t commandsRun)
    {
        state.traffic.open = connections.size();
        std::lock_guard const lock(mutex);
        told = state.traffic;
        commandsDone += commandsRun;
        changed.notify_all();
    }

    // Constant after construction.
    FileDescriptor const wakeUp;
    FileDescriptor const listener;
    std::uint16_t const ownPort;

    // On the proxy's thread.
    ProxyState state;
    std::vector<ProxyConnection> connections;
    bool isEnding = false;

    mutable std::mutex mutex;
    mutable std::condition_variable changed;
    // Under the mutex.
    std::vector<std::function<void()>> commands;
    std::uint64_t commandsGiven = 0;
    std::uint64_t commandsDone = 0;
    Traffic told;

    std::thread thread;
};

DelayProxy::DelayProxy(std::uint16_t targetPort, std::chrono::nanoseconds roundTrip)
    : loop(std::make_unique<Loop>(targetPort, roundTrip))
{
}

DelayProxy::~DelayProxy() = default;

std::uint16_t DelayProxy::port() const noexcept
{
    return loop->port();
}

void DelayProxy::setRoundTrip(std::chrono::nanoseconds roundTrip)
{
    loop->perform([this, roundTrip] { loop->shared().roundTrip = roundTrip; });
}

void DelayProxy::setSpeed(double bytesPerSecond)
{
    loop->perform([this, bytesPerSecond] { loop->shared().bytesPerSecond = bytesPerSecond; });
}

void DelayProxy::stall(Ways ways)
{
    loop->perform([this, ways] {
        auto &state = loop->shared();
        state.stalledTowardsHost |= ways != Ways::towardsClient;
        state.stalledTowardsClient |= ways != Ways::towardsHost;
    });
}

void DelayProxy::resume()
{
    loop->perform([this] {
        loop->shared().stalledTowardsHost = false;
        loop->shared().stalledTowardsClient = false;
    });
}

void DelayProxy::cut(Ending how)
{
    loop->perform([this, how] { loop->cut(how); });
}

Traffic DelayProxy::traffic() const
{
    return loop->traffic();
}

Traffic DelayProxy::waitUntil(std::function<bool(Traffic const &)> condition) const
{
    return loop->waitUntil(condition);
}

} // namespace tw::test
