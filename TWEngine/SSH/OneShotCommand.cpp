#include "TWEngine/SSH/OneShotCommand.h"

#include "TWCore/Async/ChildTask.h"
#include "TWEngine/Runtime/ChildProcess.h"

namespace tw::OneShotCommand {

namespace {

Task<std::string> beginningOf(std::shared_ptr<ChildProcess> child, ChildOutput output, bool isPipe, std::size_t kept)
{
    std::string beginning;
    if (!isPipe)
        co_return beginning;
    std::string buffer;
    for (;;) {
        buffer = co_await child->read(output, std::move(buffer));
        if (buffer.empty())
            co_return beginning;
        beginning.append(buffer, 0, kept - beginning.size());
    }
}

Task<std::string> handAll(std::shared_ptr<ChildProcess> child, Taker taker)
{
    std::string buffer;
    for (;;) {
        buffer = co_await child->read(ChildOutput::standard, std::move(buffer));
        if (buffer.empty())
            co_return std::string();
        buffer = co_await taker(std::move(buffer));
    }
}

Task<std::string> feed(std::shared_ptr<ChildProcess> child, std::string input)
{
    if (!input.empty()) {
        co_await outcomeOf(child->write(std::move(input)));
        child->closeInput();
    }
    co_return std::string();
}

Task<Result> runChild(IoThread *io, ChildCommand command, std::size_t kept, Taker taker, std::string input)
{
    auto const started = ChildProcess::start(*io, command);
    if (!started)
        throw started.error();
    auto const &child = *started;
    auto const context = co_await currentContext();
    auto const hasOutput = std::holds_alternative<PipeEnd>(command.output);
    auto const hasErrors = std::holds_alternative<PipeEnd>(command.error);
    // Both at once: a program that fills one pipe while only the other is read would hang.
    auto const errors = ChildTask<std::string>::start(context, beginningOf(child, ChildOutput::error, hasErrors, kept));
    // Not awaited: what the program has not read at its end is of no use.
    auto const feeding = ChildTask<std::string>::start(context, feed(child, std::move(input)));
    auto output = co_await outcomeOf(taker ? handAll(child, std::move(taker))
                                           : beginningOf(child, ChildOutput::standard, hasOutput, kept));
    // Before the caller hears of it: what an ssh still waits for may end with the caller.
    if (output.failure)
        child->terminate();
    Result result;
    result.output = output.take();
    result.errors = co_await errors.join();
    result.status = co_await child->wait();
    co_return result;
}

} // namespace

Task<Result> run(IoThread &io, ChildCommand command, std::size_t kept)
{
    return runChild(&io, std::move(command), kept, nullptr, {});
}

Task<Result> run(IoThread &io, ChildCommand command, std::size_t kept, Taker taker)
{
    return runChild(&io, std::move(command), kept, std::move(taker), {});
}

Task<Result> run(IoThread &io, ChildCommand command, std::size_t kept, Taker taker, std::string input)
{
    return runChild(&io, std::move(command), kept, std::move(taker), std::move(input));
}

} // namespace tw::OneShotCommand
