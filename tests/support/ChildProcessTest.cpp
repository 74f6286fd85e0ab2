#include "tests/support/ChildProcessTest.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <stdexcept>

#include <unistd.h>

namespace tw::test {

Task<std::string> restOf(ChildHandle child, ChildOutput output)
{
    std::string all;
    std::string buffer;
    for (;;) {
        buffer = co_await child->read(output, std::move(buffer));
        if (buffer.empty())
            co_return all;
        all += buffer;
    }
}

namespace {

/// Of a process that may be gone by now; 0 then.
pid_t parentOf(std::filesystem::path const &process)
{
    // "12 (name) S 1 ...": the name may hold anything, and the parent comes behind the state.
    char text[512] = {};
    std::unique_ptr<FILE, int (*)(FILE *)> const status(std::fopen((process / "stat").c_str(), "r"), std::fclose);
    if (!status || std::fread(text, 1, sizeof(text) - 1, status.get()) == 0)
        return 0;
    auto const *const name = std::strrchr(text, ')');
    pid_t parent = 0;
    return name && std::sscanf(name, ") %*c %d", &parent) == 1 ? parent : 0;
}

} // namespace

std::set<pid_t> childrenOfOurs()
{
    std::set<pid_t> children;
    for (auto const &entry : std::filesystem::directory_iterator("/proc")) {
        auto const number = std::atoi(entry.path().filename().c_str());
        if (number > 0 && parentOf(entry.path()) == getpid())
            children.insert(number);
    }
    return children;
}

ChildProcessTest::~ChildProcessTest()
{
    io.reset(); // kills and collects what a test has dropped
    EXPECT_FALSE(hasChildren());
}

ChildHandle ChildProcessTest::start(ChildCommand const &command)
{
    auto started = ChildProcess::start(*io, command);
    if (!started)
        throw started.error();
    return *started;
}

ChildHandle ChildProcessTest::startShell(std::string script)
{
    return start({.program = "/bin/sh",
                  .arguments = {"-c", std::move(script)},
                  .input = PipeEnd{},
                  .output = PipeEnd{},
                  .error = PipeEnd{}});
}

ChildHandle ChildProcessTest::startCat()
{
    return start({.program = "cat", .input = PipeEnd{}, .output = PipeEnd{}});
}

std::string ChildProcessTest::outputOf(ChildCommand command)
{
    command.output = PipeEnd{};
    auto const child = start(command);
    auto output = readAll(child);
    EXPECT_EQ(wait(child), exited(0));
    return output;
}

SpawnError ChildProcessTest::refusalOf(ChildCommand const &command)
{
    auto const started = ChildProcess::start(*io, command);
    if (started)
        throw std::logic_error("it was to be refused, and started");
    return started.error();
}

} // namespace tw::test
