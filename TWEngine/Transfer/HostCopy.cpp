#include "TWEngine/Transfer/HostCopy.h"

#include "TWCore/Async/Outcome.h"
#include "TWCore/Model/FileOperationError.h"
#include "TWCore/Model/Trimmed.h"
#include "TWCore/Shell/FileCommands.h"
#include "TWEngine/Platform/RandomDigits.h"
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
        auto const token = randomDigits(16);
        auto command = TransferCommands::copyThere(dialect, some, work->to.path(), token);
        auto running = HostWork::run(work->engine, work->from.host(), token, std::move(command));
        auto const outcome = co_await outcomeOf(std::move(running));
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
