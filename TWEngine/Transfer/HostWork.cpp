#include "TWEngine/Transfer/HostWork.h"

#include "TWCore/Async/ChildTask.h"
#include "TWCore/Shell/EndableCommand.h"
#include "TWEngine/Runtime/Completion.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "TWEngine/Runtime/TimeOut.h"

namespace tw::HostWork {

namespace {

/// A host that does not answer must not hold a cancel; its work then goes on.
constexpr std::chrono::seconds patienceWithEnd{5};

using Answer = std::shared_ptr<Completion<CommandResult>>;

Task<void> ask(std::shared_ptr<CommandHost> host, HostCommand command, Answer answer)
{
    try {
        auto result = co_await host->runCommand(std::move(command));
        answer->succeed(std::move(result));
    } catch (...) {
        answer->fail(std::current_exception());
    }
}

Task<void> endOn(EngineRuntime *engine, std::shared_ptr<CommandHost> host, std::string token)
{
    auto ending = host->runCommand({.text = EndableCommand::end(token)});
    co_await outcomeOf(withTimeOut(engine->clock(), patienceWithEnd, std::move(ending)).withStop({}));
}

Task<CommandResult> runOn(EngineRuntime *engine, std::shared_ptr<CommandHost> host, std::string token,
                          HostCommand command)
{
    auto const dialect = co_await host->dialect();
    auto const answer = std::make_shared<Completion<CommandResult>>();
    auto const context = co_await currentContext();
    spawn({context.executor, {}}, ask(host, std::move(command), answer));
    auto outcome = co_await outcomeOf(Completion<CommandResult>::wait(answer));
    if (!outcome.value && context.stop.stop_requested() && dialect == ShellDialect::posix)
        co_await endOn(engine, host, token);
    co_return outcome.take();
}

} // namespace

Task<CommandResult> run(EngineRuntime &engine, std::shared_ptr<CommandHost> host, std::string token, std::string text,
                        CommandEffect effect, std::chrono::seconds limit)
{
    return runOn(&engine, std::move(host), std::move(token),
                 {.text = std::move(text), .session = CommandSession::work, .effect = effect, .limit = limit});
}

Task<void> end(EngineRuntime &engine, std::shared_ptr<CommandHost> host, std::string token)
{
    return endOn(&engine, std::move(host), std::move(token));
}

} // namespace tw::HostWork
