#include "Tarnwick/Panes/PaneStatus.h"

#include "TWCore/Model/DisplayText.h"
#include "Tarnwick/Format/Fmt.h"

#include <cstdio>

namespace tw::PaneStatus {

namespace {

template <class... Arguments>
std::string formatted(char const *format, Arguments... arguments)
{
    char text[96]; // the longest line here has two integers and some words
    auto const length = std::snprintf(text, sizeof text, format, arguments...);
    return {text, std::min(static_cast<std::size_t>(std::max(length, 0)), sizeof text - 1)};
}

} // namespace

std::string summary(PaneModel const &model, std::string const &timing)
{
    auto const totals = model.totals();
    auto const marked = model.markedSummary();
    auto line = formatted("%d files, %d dirs", totals.files, totals.dirs);
    if (totals.bytes >= 1)
        line += "  ·  " + Fmt::size(totals.bytes, EntryKind::file);
    if (marked.count >= 1)
        line += "   ▸ " + std::to_string(marked.count) + " marked (" + Fmt::size(marked.bytes, EntryKind::file) + ")";
    if (model.snapshot() && model.snapshot()->truncated())
        line += "   ⚠︎ listing truncated";
    if (!timing.empty())
        line += "   ·  " + timing;
    return line;
}

std::string timing(std::chrono::duration<double> elapsed, Source source)
{
    auto const milliseconds = elapsed.count() * 1000.0;
    return source == Source::provider ? formatted("%.0f ms network", milliseconds)
                                      : formatted("%.2f ms cached", milliseconds);
}

std::string describe(std::exception_ptr const &error)
{
    try {
        std::rethrow_exception(error);
    } catch (std::exception const &failure) {
        // Every typed failure of ours carries its text.
        return failure.what();
    } catch (...) {
        return "unknown error";
    }
}

std::string connecting(std::string const &host)
{
    return "connecting to " + withNothingHidden(host) + "…";
}

std::string connectFailed(std::string const &host, std::exception_ptr const &error)
{
    return warning("cannot connect to " + withNothingHidden(host) + ": " + describe(error));
}

std::string warning(std::string const &text)
{
    return "⚠︎ " + text;
}

} // namespace tw::PaneStatus
