#include "TWEngine/Transfer/HostCopy.h"

#include "TWCore/Async/Cancelled.h"
#include "TWCore/Async/ChildTask.h"
#include "TWCore/Model/FileOperationError.h"
#include "TWCore/Model/Trimmed.h"
#include "TWCore/Shell/EndableCommand.h"
#include "TWCore/Shell/FileCommands.h"
#include "TWEngine/Platform/RandomDigits.h"
#include "TWEngine/Runtime/Completion.h"
#include "TWEngine/Runtime/TimeOut.h"

namespace tw::HostCopy {

namespace {

/// A copy within a host may take long, and nobody sees it grow.
constexpr std::chrono::seconds limit{3600};

/// A host that does not answer must not hold a cancel; its copy then goes on.
constexpr std::chrono::seconds patienceWithEnd{5};

using Answer = std::shared_ptr<Completion<CommandResult>>;

Task<void> ask(std::shared_ptr<CommandHost> host, std::string text, Answer answer)
{
    try {
        auto result = co_await host->runCommand({.text = std::move(text),
                                                 .session = CommandSession::work,
                                                 .effect = CommandEffect::changes,
                                                 .limit = limit});
        answer->succeed(std::move(result));
    } catch (...) {
        answer->fail(std::current_exception());
    }
}

/// The answer is not waited for after a stop: the session gives it when the copy has ended.
Task<CommandResult> copySome(TransferWork::Shared work, std::vector<std::string> paths, ShellDialect dialect)
{
    auto const token = randomDigits(16);
    auto const host = work->from.host();
    auto const answer = std::make_shared<Completion<CommandResult>>();
    auto const context = co_await currentContext();
    auto command = TransferCommands::copyThere(dialect, paths, work->to.path(), token);
    spawn({context.executor, {}}, ask(host, std::move(command), answer));
    auto outcome = co_await outcomeOf(Completion<CommandResult>::wait(answer));
    if (!outcome.value && context.stop.stop_requested() && dialect == ShellDialect::posix) {
        auto ending = host->runCommand({.text = EndableCommand::end(token)});
        co_await outcomeOf(withTimeOut(work->engine.clock(), patienceWithEnd, std::move(ending)).withStop({}));
    }
    co_return outcome.take();
}

void throwIfFailed(CommandResult const &result, std::string const &path)
{
    if (result.status == 0)
        return;
    auto const words = trimmed(result.output);
    throw FileOperationError::Failed("copy", path,
                                     words.empty() ? "exit " + std::to_string(result.status) : std::string(words));
}

} // namespace

Task<void> run(TransferWork::Shared work)
{
    auto const count = std::to_string(work->names.size());
    work->report({.bytes = 0, .total = {}, .item = count + " item(s) — server-side copy"});
    auto const dialect = co_await work->from.host()->dialect();
    std::span<std::string const> left = work->names;
    while (!left.empty()) {
        auto const paths = work->sources();
        auto const rest = std::span(paths).last(left.size());
        auto const fitting = FileCommands::fittingFront(dialect, rest);
        std::vector<std::string> const some(fitting.begin(), fitting.end());
        auto const outcome = co_await outcomeOf(copySome(work, some, dialect));
        auto &summary = work->summary;
        bool const isDone = outcome.value && outcome.value->status == 0;
        auto &place = isDone ? summary.complete : summary.partial;
        place.insert(place.end(), left.begin(), left.begin() + static_cast<std::ptrdiff_t>(some.size()));
        left = left.subspan(some.size());
        if (!isDone)
            summary.untouched.assign(left.begin(), left.end());
        if (outcome.failure)
            std::rethrow_exception(outcome.failure);
        summary.words = trimmed(outcome.value->output);
        throwIfFailed(*outcome.value, some.front());
    }
}

} // namespace tw::HostCopy
