#include "tests/e2e/Child.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <string_view>
#include <system_error>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tw::test {

namespace {

int millisecondsUntil(std::chrono::steady_clock::time_point deadline)
{
    auto const left = deadline - std::chrono::steady_clock::now();
    return static_cast<int>(std::max<std::int64_t>(0, std::chrono::ceil<std::chrono::milliseconds>(left).count()));
}

std::vector<std::string> environmentWith(Child::Environment const &changes)
{
    std::vector<std::string> result;
    for (auto **variable = environ; *variable; ++variable) {
        std::string_view const text = *variable;
        if (!changes.contains(std::string(text.substr(0, text.find('=')))))
            result.emplace_back(text);
    }
    for (auto const &[name, value] : changes) {
        if (!value.empty())
            result.push_back(name + "=" + value);
    }
    return result;
}

std::vector<char *> pointersTo(std::vector<std::string> &texts)
{
    std::vector<char *> result;
    for (auto &text : texts)
        result.push_back(text.data());
    result.push_back(nullptr);
    return result;
}

pid_t spawnChild(std::vector<std::string> arguments, Child::Environment const &changes, int output)
{
    auto environment = environmentWith(changes);
    auto const argumentPointers = pointersTo(arguments);
    auto const environmentPointers = pointersTo(environment);

    // Not as the tests have it, which may run under nohup(1).
    sigset_t byDefault;
    sigemptyset(&byDefault);
    sigaddset(&byDefault, SIGHUP);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setsigdefault(&attributes, &byDefault);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output, STDERR_FILENO);
    pid_t pid = -1;
    auto const error = posix_spawnp(&pid, argumentPointers[0], &actions, &attributes, argumentPointers.data(),
                                    environmentPointers.data());
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
    if (error != 0)
        throw std::system_error(error, std::generic_category(), arguments[0]);
    return pid;
}

} // namespace

Child::Child(std::vector<std::string> arguments, Environment const &changes)
{
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0)
        throw std::system_error(errno, std::generic_category(), "pipe");
    outputEnd = ends[0];
    try {
        pid = spawnChild(std::move(arguments), changes, ends[1]);
    } catch (...) {
        close(ends[0]);
        close(ends[1]);
        throw;
    }
    close(ends[1]);
}

Child::~Child()
{
    if (!hasEnded) {
        kill(pid, SIGKILL);
        waitpid(pid, nullptr, 0);
    }
    close(outputEnd);
}

bool Child::readMore(Deadline deadline)
{
    pollfd ready{.fd = outputEnd, .events = POLLIN, .revents = 0};
    if (poll(&ready, 1, millisecondsUntil(deadline)) <= 0)
        return false;
    std::array<char, 4096> buffer{};
    auto const count = read(outputEnd, buffer.data(), buffer.size());
    if (count <= 0) {
        outputIsClosed = true;
        return false;
    }
    std::string_view const text(buffer.data(), static_cast<std::size_t>(count));
    written += text;
    unfinishedLine += text;
    for (auto end = unfinishedLine.find('\n'); end != std::string::npos; end = unfinishedLine.find('\n')) {
        lines.push_back(unfinishedLine.substr(0, end));
        unfinishedLine.erase(0, end + 1);
    }
    return true;
}

bool Child::takeLine(std::function<bool(std::string const &)> const &isWanted)
{
    while (readMore(std::chrono::steady_clock::now())) {
    }
    auto const found = std::ranges::find_if(lines, isWanted);
    if (found == lines.end())
        return false;
    lines.erase(found);
    return true;
}

std::string Child::waitForLine(std::function<bool(std::string const &)> const &isWanted)
{
    auto const deadline = std::chrono::steady_clock::now() + hangLimit;
    for (;;) {
        auto const found = std::ranges::find_if(lines, isWanted);
        if (found != lines.end()) {
            auto line = std::move(*found);
            lines.erase(found);
            return line;
        }
        if (!readMore(deadline)) {
            ADD_FAILURE() << "a line that was waited for did not come; what came is:\n" << written;
            return {};
        }
    }
}

int Child::waitForEnd()
{
    if (hasEnded)
        return status;
    auto const deadline = std::chrono::steady_clock::now() + hangLimit;
    // To the end of its output first, so that it cannot hang on a full pipe.
    while (readMore(deadline)) {
    }
    // By number, because the header of glibc 2.36 declares it for C only.
    auto const handle = static_cast<int>(syscall(SYS_pidfd_open, pid, 0));
    pollfd ended{.fd = handle, .events = POLLIN, .revents = 0};
    if (poll(&ended, 1, millisecondsUntil(deadline)) <= 0) {
        ADD_FAILURE() << "the program did not end; it wrote:\n" << written;
        kill(pid, SIGKILL);
    }
    close(handle);
    int raw = 0;
    waitpid(pid, &raw, 0);
    hasEnded = true;
    status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -WTERMSIG(raw);
    return status;
}

void Child::signal(int number) const
{
    if (!hasEnded)
        kill(pid, number);
}

std::string outputOf(std::vector<std::string> arguments, Child::Environment const &changes)
{
    auto const name = arguments.at(0);
    Child child(std::move(arguments), changes);
    EXPECT_EQ(child.waitForEnd(), 0) << name << ":\n" << child.output();
    return child.output();
}

} // namespace tw::test
