#include "Tarnwick/Panes/HostWording.h"

#include "TWCore/Model/DisplayText.h"
#include "TWCore/Model/FileOperationError.h"
#include "TWCore/Model/Trimmed.h"
#include "TWEngine/Browsing/Browser.h"
#include "TWEngine/Browsing/LocalProviderError.h"
#include "Tarnwick/Panes/FailureSentences.h"
#include "Tarnwick/Panes/PaneStatus.h"

#include <algorithm>
#include <cerrno>

namespace tw::HostWording {

namespace {

using Action = PaneNotice::Action;

/// Lines of any bytes, with a sign for every character that cannot be seen.
std::string cleanedLines(std::string_view words)
{
    std::string lines;
    words = trimmed(words);
    while (!words.empty()) {
        auto const end = std::min(words.find('\n'), words.size());
        auto line = words.substr(0, end);
        words.remove_prefix(std::min(end + 1, words.size()));
        if (line.ends_with('\r'))
            line.remove_suffix(1);
        lines += withNothingHidden(line) + '\n';
    }
    return lines;
}

/// The same behind each other: a strip has no line ends, and would show a sign for each.
std::string linesJoined(std::string_view words)
{
    auto lines = cleanedLines(words);
    auto const repeated = std::ranges::unique(lines, [](char one, char next) { return one == '\n' && next == '\n'; });
    lines.erase(repeated.begin(), repeated.end());
    std::ranges::replace(lines, '\n', ' ');
    return std::string(trimmed(lines));
}

void addSection(std::string &text, std::string const &title, std::string_view words)
{
    if (auto const lines = cleanedLines(words); !lines.empty())
        text += (text.empty() ? "" : "\n") + title + '\n' + lines;
}

std::string inLines(std::vector<std::string> const &items)
{
    std::string lines;
    for (auto const &item : items)
        lines += item + '\n';
    return lines;
}

std::string keysOf(HostFailure const &failure)
{
    std::string text;
    addSection(text, "The key that the host shows now:", failure.shownFingerprint);
    addSection(text, "The key that is stored for it:", failure.storedFingerprint);
    addSection(text, "Where the old key is stored:", failure.storedAt);
    if (failure.cause == HostFailure::Cause::changedKey)
        addSection(text, "What removes the old key, once you know that the new one is right:", failure.subject);
    return text;
}

std::string detailsOf(RemoteShellError::ConnectFailed const &failed, HostFailure const &failure)
{
    auto const &report = failed.report;
    std::string text;
    if (report.words.empty() && report.printed.empty())
        addSection(text, "The reason:", failed.detail);
    addSection(text, "Words of ssh and of the host:", report.words);
    addSection(text, "What the host printed:", report.printed);
    addSection(text, "Keys that were offered:", inLines(failure.offeredKeys));
    addSection(text, "Ways to log in that the host takes:", inLines(failure.offeredMethods));
    auto const keys = keysOf(failure);
    return keys.empty() ? text : text + '\n' + keys;
}

std::vector<Action> actionsFor(HostFailure const &failure)
{
    if (failure.cause == HostFailure::Cause::changedKey)
        return {Action::showKey, Action::retry, Action::details};
    if (failure.canLogIn())
        return {Action::logIn, Action::retry, Action::details};
    return {Action::retry, Action::details};
}

PaneNotice notConnected(RemoteShellError::ConnectFailed const &failed)
{
    auto const failure = HostFailure::of(failed);
    return {.text = failureSentences(failure),
            .actions = actionsFor(failure),
            .details = detailsOf(failed, failure),
            .keys = keysOf(failure)};
}

PaneNotice notListed(std::string const &path, std::string const &reason)
{
    Text text;
    if (reason == "permission denied")
        text = {"No permission to read %@.", {path}};
    else if (reason == "no such folder")
        text = {"There is no folder %@.", {path}};
    else if (reason == "not a folder")
        text = {"%@ is not a folder.", {path}};
    else if (reason == "too many links")
        text = {"%@ is a link that leads nowhere: too many links follow one another.", {path}};
    else
        text = {"%@ cannot be read: %@.", {path, Text::ofWords(reason)}};
    return {.text = std::move(text), .actions = {Action::retry}};
}

/// A program may say much when it fails.
PaneNotice inSeveralLines(FileOperationError::Failed const &failed)
{
    return {.text = Text(failed.operation + " failed on " + failed.path + ": " + linesJoined(failed.detail)),
            .actions = {Action::retry, Action::details},
            .details = cleanedLines(failed.detail)};
}

std::string reasonOf(int errorNumber)
{
    switch (errorNumber) {
    case EACCES:
    case EPERM:
        return "permission denied";
    case ENOENT:
        return "no such folder";
    case ENOTDIR:
        return "not a folder";
    case ELOOP:
        return "too many links";
    default:
        return systemText(errorNumber);
    }
}

PaneNotice lost(std::string const &host, std::string const &words)
{
    return {.text = {"The connection to %@ was lost. Retry connects again.", {withNothingHidden(host)}},
            .actions = {Action::retry, Action::details},
            .details = cleanedLines(words)};
}

Text waitingText(HostStatus::Phase phase, std::string const &host, std::string const &seconds)
{
    using Phase = HostStatus::Phase;
    switch (phase) {
    case Phase::reaching:
        return {"%@: connecting, %d s. Escape gives up.", {host, seconds}};
    case Phase::loggingIn:
        return {"%@: connected, logging in, %d s. Escape gives up.", {host, seconds}};
    case Phase::asking:
        return {"%@: the login waits for your answer. Escape gives up.", {host}};
    case Phase::waitingForShell:
        return {"%@: logged in, waiting for the shell, %d s. Escape gives up.", {host, seconds}};
    case Phase::silent:
        return {"No answer from %@ for %d s. Escape gives up.", {host, seconds}};
    case Phase::notTried:
    case Phase::up:
    case Phase::lost:
    case Phase::givenUp:
        break;
    }
    return {"%@: waiting, %d s. Escape gives up.", {host, seconds}};
}

} // namespace

PaneNotice failure(std::exception_ptr const &reason, std::string const &host, std::string const &path)
{
    try {
        std::rethrow_exception(reason);
    } catch (RemoteShellError::ConnectFailed const &failed) {
        return notConnected(failed);
    } catch (RemoteShellError::Disconnected const &ended) {
        return lost(host, ended.detail);
    } catch (RemoteShellError::NotConnected const &) {
        return {.text = {"There is no connection to %@. Retry makes one.", {withNothingHidden(host)}},
                .actions = {Action::retry}};
    } catch (RemoteShellError::TimedOut const &late) {
        return {.text = {"No answer from %@ within %d s. It may be busy; try again.",
                         {withNothingHidden(host), std::to_string(static_cast<std::int64_t>(late.limit.count()))}},
                .actions = {Action::retry}};
    } catch (FileOperationError::Failed const &failed) {
        if (failed.operation == "list")
            return notListed(failed.path, linesJoined(failed.detail));
        if (failed.detail.contains('\n'))
            return inSeveralLines(failed);
    } catch (BrowserError::NotADirectory const &) {
        return notListed(path, "not a folder");
    } catch (LocalProviderError::CannotOpen const &failed) {
        return notListed(failed.path, reasonOf(failed.errorNumber));
    } catch (...) { // every other failure has a text of its own
    }
    return {.text = PaneStatus::describe(reason), .actions = {Action::retry}};
}

PaneNotice waiting(std::string const &host, HostStatus::Phase phase, std::chrono::seconds soFar)
{
    return {.kind = PaneNotice::Kind::waiting,
            .text = waitingText(phase, withNothingHidden(host), std::to_string(soFar.count())),
            .actions = {Action::giveUp}};
}

} // namespace tw::HostWording
