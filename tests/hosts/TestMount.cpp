#include "tests/hosts/TestMount.h"

#include "TWEngine/Runtime/MountTable.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tw::test {

namespace {

/// Reached by a hang only: a loaded machine is allowed to be very slow.
constexpr std::chrono::minutes hangLimit{1};

bool isMounted(std::string const &path)
{
    std::ifstream stream("/proc/self/mountinfo", std::ios::binary);
    std::string const text{std::istreambuf_iterator<char>(stream), {}};
    auto const mounts = MountTable::parse(text);
    return mounts.mountOf(path) != mounts.mountOf(path.substr(0, path.rfind('/')));
}

bool waitUntilMounted(std::string const &path, bool mounted)
{
    // The kernel signals each change of the mounts since the file was opened, see proc(5).
    FileDescriptor const changes(::open("/proc/self/mountinfo", O_RDONLY | O_CLOEXEC));
    auto const deadline = std::chrono::steady_clock::now() + hangLimit;
    while (isMounted(path) != mounted) {
        auto const left = std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        pollfd change{.fd = changes.get(), .events = POLLPRI, .revents = 0};
        if (left.count() <= 0 || !changes || ::poll(&change, 1, static_cast<int>(left.count())) == 0)
            return false;
    }
    return true;
}

void unmount(std::string const &path)
{
    if (::umount2(path.c_str(), MNT_DETACH) == 0 || errno != EPERM)
        return; // as root, or there is none any more
    std::array<char *, 6> arguments{};
    std::array<std::string, 5> words{"fusermount3", "-u", "-z", "-q", path};
    for (std::size_t place = 0; place < words.size(); ++place)
        arguments[place] = words[place].data();
    pid_t program = -1;
    if (::posix_spawnp(&program, arguments[0], nullptr, nullptr, arguments.data(), environ) == 0)
        ::waitpid(program, nullptr, 0);
}

} // namespace

TestMount::TestMount(std::string folder, std::vector<std::string> const &mode) : mountPoint(std::move(folder))
{
    std::vector<std::string> arguments{TARNWICK_TEST_MOUNT, mountPoint};
    arguments.insert(arguments.end(), mode.begin(), mode.end());
    std::vector<char *> pointers;
    for (auto &argument : arguments)
        pointers.push_back(argument.data());
    pointers.push_back(nullptr);

    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0)
        throw std::runtime_error("no pipe for a test mount");
    FileDescriptor const theirs(ends[0]);
    input = FileDescriptor(ends[1]);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, theirs.get(), STDIN_FILENO);
    auto const failure = ::posix_spawn(&pid, TARNWICK_TEST_MOUNT, &actions, nullptr, pointers.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (failure != 0)
        throw std::runtime_error("the test mount cannot be started");
    if (!waitUntilMounted(mountPoint, true))
        throw std::runtime_error("the test mount is not mounted");
}

TestMount::TestMount(TestMount &&other) noexcept
    : mountPoint(std::move(other.mountPoint)), pid(std::exchange(other.pid, -1)), input(std::move(other.input))
{
}

TestMount::~TestMount()
{
    end();
}

void TestMount::end()
{
    if (pid < 0)
        return;
    input = FileDescriptor();
    ::kill(pid, SIGKILL);
    ::waitpid(std::exchange(pid, -1), nullptr, 0);
    // The fusermount3 of the mount does this too, unless it notices the end before the kernel has noticed it, and
    // leaves the mount as it is.
    unmount(mountPoint);
    waitUntilMounted(mountPoint, false);
}

TestMount TestMount::slow(std::string const &folder, int files, std::chrono::microseconds delay)
{
    return TestMount(folder, {"slow", std::to_string(files), std::to_string(delay.count())});
}

TestMount TestMount::silent(std::string const &folder)
{
    return TestMount(folder, {"silent"});
}

} // namespace tw::test
