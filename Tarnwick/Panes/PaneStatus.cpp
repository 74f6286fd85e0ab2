#include "Tarnwick/Panes/PaneStatus.h"

#include "TWCore/Model/DisplayText.h"
#include "TWCore/Model/FileOperationError.h"
#include "TWCore/Model/FolderRefusal.h"
#include "TWCore/Model/ReadError.h"
#include "TWEngine/Browsing/Browser.h"
#include "TWEngine/Browsing/LocalProviderError.h"
#include "TWEngine/Shell/RemoteShellError.h"
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

Text size(std::int64_t bytes)
{
    return Fmt::size(bytes, EntryKind::file);
}

std::vector<Text> counts(PaneModel const &model)
{
    auto const totals = model.totals();
    auto const marked = model.markedSummary();
    std::vector<Text> line{{"%d files, %d dirs", {std::to_string(totals.files), std::to_string(totals.dirs)}}};
    if (totals.bytes >= 1)
        line.push_back({"  ·  %@", {size(totals.bytes)}});
    if (marked.count >= 1)
        line.push_back({"   ▸ %d marked (%@)", {std::to_string(marked.count), size(marked.bytes)}});
    return line;
}

} // namespace

Text summary(PaneModel const &model, Text const &timing, std::optional<int> secondsOfWatching)
{
    auto line = counts(model);
    if (model.snapshot() && model.snapshot()->truncated())
        line.push_back({"   ⚠︎ %@", {"listing truncated"}});
    if (!timing.isEmpty())
        line.push_back({"   ·  %@", {timing}});
    if (secondsOfWatching)
        line.push_back({"   ·  %@", {Text("watching every %ds", {std::to_string(*secondsOfWatching)})}});
    return Text::sequence(std::move(line));
}

Text partSummary(PaneModel const &model)
{
    auto line = counts(model);
    line.push_back({"   ·  %@", {"reading"}});
    return Text::sequence(std::move(line));
}

Text timing(std::chrono::duration<double> elapsed, Source source)
{
    auto const milliseconds = elapsed.count() * 1000.0;
    switch (source) {
    case Source::network:
        return {"%.0f ms network", {decimal(milliseconds, 0)}};
    case Source::disk:
        return {"%.0f ms disk", {decimal(milliseconds, 0)}};
    case Source::memory:
        break;
    }
    return {"%.2f ms cached", {decimal(milliseconds, 2)}};
}

Text describe(std::exception_ptr const &error)
{
    try {
        std::rethrow_exception(error);
    } catch (FileOperationError::Failed const &failed) {
        return {"%@ failed on %@: %@", {Text::ofWords(failed.operation), failed.path, Text::ofWords(failed.detail)}};
    } catch (FileOperationError::Unsupported const &unsupported) {
        return {"not supported: %@", {Text::ofWords(unsupported.detail)}};
    } catch (ReadError::NotReadable const &unreadable) {
        return {"cannot read %@: %@", {unreadable.path, Text::ofWords(unreadable.detail)}};
    } catch (BrowserError::NotADirectory const &file) {
        return {"%@ is not a directory", {file.path}};
    } catch (RemoteShellError::ConnectFailed const &failed) {
        return {"cannot reach %@: %@", {failed.host, Text::ofWords(failed.detail)}};
    } catch (RemoteShellError::Disconnected const &ended) {
        return {"disconnected: %@", {Text::ofWords(ended.detail)}};
    } catch (RemoteShellError::TimedOut const &late) {
        return {"timed out after %ds", {std::to_string(static_cast<std::int64_t>(late.limit.count()))}};
    } catch (RemoteShellError::OutcomeUnknown const &lost) {
        return {"connection to %@ was lost; it is not known whether this was done", {lost.host}};
    } catch (std::exception const &failure) {
        // Every typed failure of ours carries its text.
        return Text::ofWords(failure.what());
    } catch (...) {
        return "unknown error";
    }
}

bool isAboutAFile(std::exception_ptr const &error)
{
    try {
        std::rethrow_exception(error);
    } catch (FileOperationError::Failed const &failed) {
        return failed.detail == notAFolder;
    } catch (LocalProviderError::CannotOpen const &failed) {
        return failed.reason() == notAFolder;
    } catch (BrowserError::NotADirectory const &) {
        return true;
    } catch (...) {
        return false;
    }
}

bool isAboutThePath(std::exception_ptr const &error)
{
    try {
        std::rethrow_exception(error);
    } catch (FileOperationError::Failed const &) {
        return true;
    } catch (LocalProviderError const &) {
        return true;
    } catch (BrowserError const &) {
        return true;
    } catch (...) {
        return false;
    }
}

Text connecting(std::string const &host)
{
    return {"connecting to %@…", {withNothingHidden(host)}};
}

Text warning(Text const &text)
{
    return {"⚠︎ %@", {text}};
}

} // namespace tw::PaneStatus
