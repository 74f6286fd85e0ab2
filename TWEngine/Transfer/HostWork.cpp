#include "TWEngine/Transfer/HostWork.h"

#include "TWCore/Async/ChildTask.h"
#include "TWCore/Shell/EndableCommand.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "TWEngine/Runtime/SharedCompletion.h"
#include "TWEngine/Runtime/TimeOut.h"

namespace tw::HostWork {

namespace {

/// A host that does not answer, and a program that does not end, must not hold a cancel; the work then goes on.
constexpr std::chrono::seconds patienceWithEnd{5};

/// For the answer of a command that was over before its end was asked for.
constexpr std::chrono::milliseconds patienceWithAnswer{100};

/// Of a command that was sent: its answer, which one task waits for, and then that it is over, which several may.
struct Sent {
    std::shared_ptr<Completion<CommandResult>> const answer = std::make_shared<Completion<CommandResult>>();
    std::shared_ptr<SharedCompletion<bool>> const over = std::make_shared<SharedCompletion<bool>>();
};

Task<void> ask(Task<CommandResult> sending, Sent sent)
{
    auto outcome = co_await outcomeOf(std::move(sending));
    if (outcome.failure)
        sent.answer->fail(outcome.failure);
    else
        sent.answer->succeed(*std::move(outcome.value));
    sent.over->settle({.value = true, .failure = {}});
}

enum class Ending {
    isUnderWay,
    willBeAtItsBegin, ///< if it is not over already
    cannotBe,
    noAnswer
};

Task<Ending> endOn(EngineRuntime *engine, std::shared_ptr<CommandHost> host, std::string token)
{
    auto ending = host->runCommand({.text = EndableCommand::end(token)});
    auto const outcome =
        co_await outcomeOf(withTimeOut(engine->clock(), patienceWithEnd, std::move(ending)).withStop({}));
    if (!outcome.value)
        co_return Ending::noAnswer;
    if (outcome.value->status == EndableCommand::cannotBeEnded)
        co_return Ending::cannotBe;
    co_return outcome.value->status == 0 ? Ending::isUnderWay : Ending::willBeAtItsBegin;
}

/// What the caller does about the remains goes over another session, and must come behind the last of the command.
Task<bool> isOverWithin(EngineRuntime *engine, std::chrono::milliseconds patience, Sent sent)
{
    auto ended = SharedCompletion<bool>::wait(sent.over);
    auto const outcome = co_await outcomeOf(withTimeOut(engine->clock(), patience, std::move(ended)).withStop({}));
    co_return outcome.value.has_value();
}

/// The answer of a command and its end may cross.
Task<void> forgetWhenOver(std::shared_ptr<CommandHost> host, std::string token, Sent sent)
{
    co_await SharedCompletion<bool>::wait(sent.over);
    co_await outcomeOf(host->runCommand({.text = EndableCommand::forget(token), .onLoss = CommandOnLoss::fails}));
}

Task<CommandResult> runSent(EngineRuntime *engine, std::shared_ptr<CommandHost> host, std::string token,
                            Task<CommandResult> sending, CommandEffect effect)
{
    auto const dialect = co_await host->dialect();
    Sent const sent;
    std::stop_source stopSending;
    auto const context = co_await currentContext();
    spawn({context.executor, stopSending.get_token()}, ask(std::move(sending), sent));
    auto outcome = co_await outcomeOf(Completion<CommandResult>::wait(sent.answer));
    if (!outcome.value && context.stop.stop_requested() && dialect == ShellDialect::posix) {
        auto const ending = co_await endOn(engine, host, token);
        if (ending != Ending::isUnderWay)
            stopSending.request_stop(); // of no effect once it was sent: a session waits for its answer
        std::chrono::milliseconds const patience = ending == Ending::isUnderWay ? patienceWithEnd : patienceWithAnswer;
        auto const isEnded = ending == Ending::willBeAtItsBegin || co_await isOverWithin(engine, patience, sent);
        if (ending != Ending::isUnderWay)
            spawn({context.executor, {}}, forgetWhenOver(host, token, sent));
        if (!isEnded && effect == CommandEffect::changes)
            throw MayGoOn();
    }
    co_return outcome.take();
}

} // namespace

Task<CommandResult> run(EngineRuntime &engine, std::shared_ptr<CommandHost> host, std::string token, std::string text,
                        CommandEffect effect, std::optional<std::chrono::seconds> limit, CommandSession session)
{
    auto sending = host->runCommand({.text = std::move(text), .session = session, .effect = effect, .limit = limit});
    return runSent(&engine, std::move(host), std::move(token), std::move(sending), effect);
}

Task<CommandResult> run(EngineRuntime &engine, std::shared_ptr<CommandHost> host, std::string token,
                        Task<CommandResult> sending)
{
    return runSent(&engine, std::move(host), std::move(token), std::move(sending), CommandEffect::none);
}

} // namespace tw::HostWork
