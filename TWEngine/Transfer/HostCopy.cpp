#include "TWEngine/Transfer/HostCopy.h"

#include "TWCore/Async/FailureKind.h"
#include "TWCore/Async/Outcome.h"
#include "TWCore/Model/FileOperationError.h"
#include "TWCore/Model/Trimmed.h"
#include "TWCore/Provider/FileSystemWriter.h"
#include "TWCore/Shell/FileCommands.h"
#include "TWEngine/Platform/RandomDigits.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "TWEngine/Runtime/TimeOut.h"
#include "TWEngine/Transfer/HostWork.h"

namespace tw::HostCopy {

namespace {

void throwIfFailed(CommandResult const &result, std::string const &path)
{
    if (result.status == 0)
        return;
    auto const words = trimmed(result.output);
    throw FileOperationError::Failed("copy", path,
                                     words.empty() ? "exit " + std::to_string(result.status) : std::string(words));
}

using Names = std::vector<std::string>;

void append(Names &names, std::span<std::string const> more)
{
    names.insert(names.end(), more.begin(), more.end());
}

struct Sides {
    Survey source;
    Survey target;
};

Task<Sides> surveySides(TransferWork::Shared work, std::shared_ptr<FileSystemWriter> host, Names names)
{
    auto source = co_await host->survey(work->from.path(), names, Survey::Detail::files);
    auto target = co_await host->survey(work->to.path(), names, Survey::Detail::files);
    co_return Sides{std::move(source), std::move(target)};
}

/// Adds the names of the last command, and counts the files of these and of the `complete` ones.
void addArrived(TransferSummary &summary, Names const &begun, Sides const &sides)
{
    summary.areFilesKnown = true;
    auto const count = [&](std::string const &name) {
        auto const source = sides.source.parts.find(name);
        auto const target = sides.target.parts.find(name);
        if (source == sides.source.parts.end() || target == sides.target.parts.end())
            return false;
        auto const files = target->second.countOf(source->second);
        summary.files += files.value_or(0);
        summary.areFilesKnown = summary.areFilesKnown && files;
        return source->second == target->second;
    };
    std::ranges::for_each(summary.complete, count);
    for (auto const &name : begun) {
        bool const isThere = sides.target.parts.contains(name);
        auto &place = count(name) ? summary.complete : isThere ? summary.partial : summary.untouched;
        place.push_back(name);
    }
}

std::int64_t filesOf(Survey const &survey)
{
    std::int64_t files = 0;
    for (auto const &[name, part] : survey.parts)
        files += part.files;
    return files;
}

/// Whether cp has ended on the host. One whose connection was lost may go on.
enum class State { ended, unknown };

/// What a copy has done that ends with this command. `begun` are its names, and `left` those behind them.
Task<void> sumUp(TransferWork::Shared work, State state, Names begun, Names left)
{
    auto asked = work->summary.complete;
    append(asked, begun);
    Outcome<Sides> sides;
    auto host = std::dynamic_pointer_cast<FileSystemWriter>(work->from.host());
    if (host && state == State::ended) {
        auto asking = surveySides(work, std::move(host), std::move(asked));
        sides = co_await outcomeOf(withTimeOut(work->engine.clock(), patienceWithSurvey, std::move(asking)));
    }
    if (sides.value)
        addArrived(work->summary, begun, *sides.value);
    else
        append(work->summary.partial, begun);
    if (sides.value && left.empty())
        work->summary.totalFiles = filesOf(sides.value->source);
    append(work->summary.untouched, left);
}

} // namespace

Task<void> run(TransferWork::Shared work)
{
    auto const count = std::to_string(work->names.size());
    work->report({.bytes = 0, .total = {}, .item = count + " item(s) — server-side copy"});
    auto const dialect = co_await work->from.host()->dialect();
    auto const context = co_await currentContext();
    std::span<std::string const> left = work->names;
    while (!left.empty()) {
        auto const paths = work->sources();
        auto const rest = std::span(paths).last(left.size());
        auto const fitting = FileCommands::fittingFront(dialect, rest);
        Names const some(fitting.begin(), fitting.end());
        Names const begun(left.begin(), left.begin() + static_cast<std::ptrdiff_t>(some.size()));
        left = left.subspan(some.size());
        auto const token = randomDigits(16);
        auto command = TransferCommands::copyThere(dialect, some, work->to.path(), token);
        auto running = HostWork::run(work->engine, work->from.host(), token, std::move(command));
        auto const outcome = co_await outcomeOf(std::move(running));
        work->summary.areFilesKnown = false;
        bool const isDone = outcome.value && outcome.value->status == 0;
        if (!isDone) {
            auto const isEnded = context.stop.stop_requested() && !failureIs<HostWork::MayGoOn>(outcome.failure);
            auto const state = outcome.value || isEnded ? State::ended : State::unknown;
            auto summingUp = sumUp(work, state, begun, Names(left.begin(), left.end()));
            co_await std::move(summingUp).withStop({});
        }
        if (outcome.failure)
            std::rethrow_exception(outcome.failure);
        work->summary.words = trimmed(outcome.value->output);
        throwIfFailed(*outcome.value, some.front());
        append(work->summary.complete, begun);
    }
}

} // namespace tw::HostCopy
