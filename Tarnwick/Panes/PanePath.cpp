// What a pane does with the paths of its field.

#include "TWCore/Async/Outcome.h"
#include "TWCore/Model/DisplayText.h"
#include "TWCore/Provider/CommandHost.h"
#include "Tarnwick/Connections/Connections.h"
#include "Tarnwick/Panes/PaneController.h"
#include "Tarnwick/Panes/PaneStatus.h"

#include <cstdlib>

namespace tw {

namespace {

std::optional<std::string> environmentVariable(std::string const &name)
{
    auto const *const value = std::getenv(name.c_str());
    return value ? std::optional<std::string>(value) : std::nullopt;
}

/// The field shows a sign for each byte that is no text. A text that goes on behind the path that was shown means that
/// path, with its bytes.
std::string withBytesOf(std::string const &path, std::string_view text)
{
    auto const shown = onOneLine(path);
    auto const goesOn = shown != path && text.starts_with(shown);
    return goesOn ? path + std::string(text.substr(shown.size())) : std::string(text);
}

Task<KnownConnection> itself(KnownConnection known)
{
    co_return known;
}

/// The names in a folder, which may be given from the home folder of its host. Of a host that is not up, what is
/// remembered: a key that completes begins no connection.
Task<DirectorySnapshot> namesToComplete(Task<KnownConnection> finding, std::string folder)
{
    auto const from = co_await std::move(finding);
    if (!from.browser)
        co_return DirectorySnapshot();
    if (!from.isUp) {
        auto const kept = co_await from.browser->remembered(folder);
        co_return kept.value_or(DirectorySnapshot());
    }
    if (!folder.starts_with('/')) {
        auto const host = from.browser->host();
        if (!host)
            co_return DirectorySnapshot();
        auto const home = co_await host->defaultDirectory();
        folder = fromHome(folder, home);
    }
    auto const opened = co_await from.browser->open(folder);
    co_return opened.snapshot;
}

} // namespace

TypedPath::Context PaneController::typedContext(std::string home) const
{
    return {.folder = pathOnShow(),
            .home = std::move(home),
            .localHome = PaneSpec::localHome().path,
            .isLocal = connection == localConnection,
            .variable = environmentVariable};
}

void PaneController::goToTyped(std::string text)
{
    wasTouched = false;
    auto const host = browser->host();
    if (host && beginsAtHome(text))
        spawn({collaborators.mainContext, {}},
              performTyped(weak_from_this(), host, std::move(text), navigator->token()));
    else
        followTyped(text, PaneSpec::localHome().path);
}

/// Only the host knows where its home folder is.
Task<void> PaneController::performTyped(std::weak_ptr<PaneController> weak, std::shared_ptr<CommandHost> host,
                                        std::string text, std::uint64_t token)
{
    auto const home = co_await outcomeOf(host->defaultDirectory());
    auto const self = weak.lock();
    if (!self || self->navigator->token() != token)
        co_return; // the user is elsewhere
    if (!home.failure) {
        self->followTyped(text, *home.value);
        co_return;
    }
    self->typedWish = text;
    self->showFailure(
        {.place = {self->connection, self->requested, true}, .reason = home.failure, .retry = [weak, text] {
             if (auto const pane = weak.lock())
                 pane->goToTyped(text);
         }});
}

void PaneController::followTyped(std::string const &text, std::string home)
{
    auto typed = typedPath(withBytesOf(requested, text), typedContext(std::move(home)));
    if (!typed)
        return;
    if (!typed->problem.isEmpty()) {
        showStatus(PaneStatus::warning(typed->problem));
        display->returnTyped(text);
        return;
    }
    auto const isHere = typed->connection.empty() || typed->connection == connection;
    if (isHere && !typed->path.starts_with('/')) {
        goToTyped(typed->path.empty() ? "~" : std::move(typed->path));
        return;
    }
    if (isHere)
        navigate(std::move(typed->path));
    else if (connections)
        open({.connection = typed->connection,
              .path = typed->path.empty() ? "/" : typed->path,
              .pathWasExplicit = !typed->path.empty()},
             *connections);
    typedWish = text;
}

void PaneController::completePath(std::string text)
{
    completing.request_stop();
    completing = std::stop_source();
    spawn({collaborators.mainContext, completing.get_token()},
          performCompletion(weak_from_this(), browser, std::move(text)));
}

Task<void> PaneController::performCompletion(std::weak_ptr<PaneController> weak, std::shared_ptr<Browser> source,
                                             std::string text)
{
    auto const context = co_await currentContext();
    auto home = PaneSpec::localHome().path;
    auto const host = source->host();
    if (host && beginsAtHome(text)) {
        auto const outcome = co_await outcomeOf(host->defaultDirectory());
        home = outcome.value.value_or("/");
    }
    auto self = weak.lock();
    if (!self || context.stop.stop_requested())
        co_return;
    auto const place = self->placeToComplete(text, home);
    if (!place) {
        self->display->beep();
        co_return;
    }
    auto finding = self->connectionToComplete(*place, source);
    auto const work = self->beginWork();
    self.reset();
    auto const names = co_await outcomeOf(namesToComplete(std::move(finding), place->path));
    self = weak.lock();
    if (!self || context.stop.stop_requested())
        co_return;
    PathCompletion const completion(text, names.value.value_or(DirectorySnapshot()));
    if (completion.isEmpty())
        self->display->beep();
    else
        self->display->showCompletion(completion);
}

/// The folder in which a text that is typed goes on; nothing if the text leads nowhere.
std::optional<TypedPath> PaneController::placeToComplete(std::string const &text, std::string home) const
{
    auto const head = PathCompletion::headOf(text);
    if (head.empty())
        return TypedPath{.path = pathOnShow()};
    auto const typed = typedPath(withBytesOf(requested, head), typedContext(std::move(home)));
    return typed && typed->problem.isEmpty() ? typed : std::nullopt;
}

Task<KnownConnection> PaneController::connectionToComplete(TypedPath const &place, std::shared_ptr<Browser> own) const
{
    if (place.connection.empty() || place.connection == connection)
        return itself({std::move(own), true});
    if (!connections)
        return itself({});
    if (place.connection == localConnection)
        return itself({connections->local(), true});
    return connections->known(place.connection);
}

void PaneController::goToPart(int components)
{
    if (heading != browser) {
        display->beep(); // on the way to another connection, whose path is not known yet
        return;
    }
    auto const path = requested;
    std::size_t end = 0;
    for (auto part = 0; part < components && end != std::string::npos; ++part)
        end = path.find('/', end + 1);
    if (end == std::string::npos) {
        navigate(path);
        return;
    }
    auto const next = path.substr(end + 1, path.find('/', end + 1) - end - 1);
    navigate(end == 0 ? "/" : path.substr(0, end), next);
}

} // namespace tw
