#include "tests/hosts/CommandOutcome.h"

#include "TWEngine/Runtime/ChildProcess.h"
#include "TWEngine/Runtime/SharedTask.h"
#include "tests/hosts/WaitFor.h"

namespace tw::test {

namespace {

using Process = std::shared_ptr<ChildProcess>;

Task<std::string> readAll(Process process, ChildOutput output)
{
    std::string all;
    for (;;) {
        auto const piece = co_await process->read(output);
        if (piece.empty())
            break;
        all += piece;
    }
    co_return all;
}

Task<void> writeAll(Process process, std::string input)
{
    try {
        co_await process->write(std::move(input));
    } catch (PipeError const &) {
        // It may end without having read everything, as `true` does.
    }
    process->closeInput();
}

/// All three ends at once: a command that fills one of them waits until somebody empties it.
Task<CommandOutcome> runToEnd(Process process, std::string input)
{
    auto const context = co_await currentContext();
    auto const output = SharedTask<std::string>::start(context.executor, readAll(process, ChildOutput::standard));
    auto const error = SharedTask<std::string>::start(context.executor, readAll(process, ChildOutput::error));
    co_await writeAll(process, std::move(input));

    CommandOutcome outcome;
    outcome.output = co_await output.wait();
    outcome.error = co_await error.wait();
    outcome.status = co_await process->wait();
    co_return outcome;
}

} // namespace

CommandOutcome runCommand(IoThread &io, ChildCommand command, std::string input)
{
    command.input = PipeEnd();
    command.output = PipeEnd();
    command.error = PipeEnd();
    auto started = ChildProcess::start(io, command);
    if (!started)
        throw std::move(started.error());
    return waitFor(runToEnd(std::move(*started), std::move(input)));
}

} // namespace tw::test
