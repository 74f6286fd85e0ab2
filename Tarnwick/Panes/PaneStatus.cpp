#include "Tarnwick/Panes/PaneStatus.h"

#include "TWCore/Model/DisplayText.h"
#include "Tarnwick/Format/Fmt.h"

#include <array>
#include <charconv>

namespace tw::PaneStatus {

namespace {

/// Not printf, which would write a comma for the point in some locales.
std::string decimal(double number, int decimals)
{
    std::array<char, 400> digits; // the largest number has 309 before the point
    auto const written =
        std::to_chars(digits.data(), digits.data() + digits.size(), number, std::chars_format::fixed, decimals);
    return {digits.data(), written.ptr};
}

} // namespace

std::string summary(PaneModel const &model, std::string const &timing)
{
    auto const totals = model.totals();
    auto const marked = model.markedSummary();
    auto line = std::to_string(totals.files) + " files, " + std::to_string(totals.dirs) + " dirs";
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
    return source == Source::provider ? decimal(milliseconds, 0) + " ms network"
                                      : decimal(milliseconds, 2) + " ms cached";
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
