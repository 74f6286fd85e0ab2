#include "TWEngine/Transfer/Measuring.h"

#include "TWCore/Async/Outcome.h"
#include "TWCore/Shell/FileCommands.h"

namespace tw::Measuring {

namespace {

using Measures = std::vector<Measure>;

std::optional<Measures> measuresOf(std::vector<std::string> const &paths, std::stop_token const &stop)
{
    Measures measures;
    for (auto const &path : paths) {
        auto const measure = Measure::here(path, stop);
        if (!measure)
            return std::nullopt;
        measures.push_back(*measure);
    }
    return measures;
}

Task<void> measureHere(TransferWork::Shared work)
{
    auto const context = co_await currentContext();
    auto measures =
        co_await work->engine.files().run(work->from.path(), FileLanes::LastLink::follow, WorkPriority::background,
                                          [paths = work->sources(), stop = context.stop](
                                              std::string const & /*place*/) { return measuresOf(paths, stop); });
    if (measures)
        work->setMeasures(std::move(*measures));
}

Task<void> measureThere(TransferWork::Shared work)
{
    auto const host = work->from.host();
    auto const dialect = co_await host->dialect();
    auto const paths = work->sources();
    std::span<std::string const> left = paths;
    Measure sum{.bytes = 0, .files = 0};
    while (!left.empty()) {
        auto const some = FileCommands::fittingFront(dialect, left);
        auto const result = co_await host->runCommand({.text = TransferCommands::measureThere(dialect, some),
                                                       .session = CommandSession::longWork,
                                                       .limit = FileCommands::measureLimit});
        sum += Measure::parse(dialect, result.output);
        left = left.subspan(some.size());
    }
    work->measure = sum;
}

} // namespace

Task<void> run(TransferWork::Shared work)
{
    auto measuring = work->from.host() ? measureThere(work) : measureHere(work);
    co_await outcomeOf(std::move(measuring));
}

} // namespace tw::Measuring
