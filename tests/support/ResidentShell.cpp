#include "tests/support/ResidentShell.h"

#include "TWEngine/Shell/PathQuestion.h"
#include "TWEngine/Shell/ResidentScript.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include <unistd.h>

namespace tw::test {

namespace {

constexpr std::string_view nonce = "0123456789abcdef";

/// Bash as anybody has it: rights on files bind root too, when it has left its capabilities behind.
ChildCommand bash(ResidentShell::Setup const &setup)
{
    ChildCommand command{.program = "/bin/bash",
                         .arguments = {"-s"},
                         .environment = Environment{{"PATH", setup.path}},
                         .workingDirectory = setup.startFolder,
                         .input = PipeEnd{},
                         .output = PipeEnd{}};
    if (geteuid() == 0) {
        constexpr auto rights = "-dac_override,-dac_read_search";
        command.program = "/usr/bin/setpriv";
        command.arguments = {"--bounding-set", rights, "--inh-caps", rights, "--", "/bin/bash", "-s"};
    }
    return command;
}

std::shared_ptr<ChildProcess> started(IoThread &io, ChildCommand const &command)
{
    auto child = ChildProcess::start(io, command);
    if (!child)
        throw child.error();
    return *child;
}

} // namespace

ResidentShell::ResidentShell(IoThread &io, TestLoop &testLoop, Setup const &setup)
    : loop(testLoop), child(started(io, bash(setup))), reader(nonce, setup.budget)
{
    write(ResidentScript::posix(nonce, setup.budget) + '\n' + PathQuestion::script(nonce));
    greeting = nextFrame();
}

ShellReader::Frame ResidentShell::answerTo(ShellRequest const &request)
{
    auto const id = nextId++;
    write(request.numbered(id));
    auto frame = nextFrame();
    EXPECT_EQ(frame.id, id);
    return frame;
}

ShellReader::Frame ResidentShell::nextFrame()
{
    std::string buffer;
    while (arrived.empty()) {
        buffer = loop.run(child->read(ChildOutput::standard, std::move(buffer)));
        if (buffer.empty())
            throw std::runtime_error("the resident shell has ended");
        std::ranges::move(reader.ingest(buffer), std::back_inserter(arrived));
    }
    auto frame = std::move(arrived.front());
    arrived.pop_front();
    return frame;
}

void ResidentShell::write(std::string bytes)
{
    loop.run(child->write(std::move(bytes)));
}

std::string ResidentShell::end()
{
    child->closeInput();
    std::string rest;
    for (;;) {
        auto const bytes = loop.run(child->read(ChildOutput::standard));
        if (bytes.empty())
            return rest;
        rest += bytes;
    }
}

} // namespace tw::test
