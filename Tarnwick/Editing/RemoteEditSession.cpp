#include "Tarnwick/Editing/RemoteEditSession.h"

#include "TWEngine/Browsing/Browser.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "Tarnwick/Panes/PaneStatus.h"

#include <ctime>
#include <utility>

namespace tw {

namespace {

using Kind = EditCommand::Outcome::Kind;
using Question = EditState::Question;

constexpr std::chrono::seconds tickInterval{1};

constexpr auto lastLink = FileLanes::LastLink::keep;
constexpr auto priority = WorkPriority::interactive;

/// In the time zone of this machine.
std::string timeText(Timestamp time, char const *format)
{
    auto const seconds = std::chrono::system_clock::to_time_t(time);
    std::tm parts{};
    std::string text(32, '\0');
    if (!::localtime_r(&seconds, &parts))
        return {};
    text.resize(std::strftime(text.data(), text.size(), format, &parts));
    return text;
}

std::string folderOf(std::string const &path)
{
    return path.substr(0, path.rfind('/'));
}

Task<std::optional<EditStaging::Stamp>> stampOf(EngineRuntime *engine, std::string path)
{
    return engine->files().run(path, lastLink, priority,
                               [path](std::string const & /*place*/) { return EditStaging::stampOf(path); });
}

void inBackground(EngineRuntime &engine, std::function<void()> work)
{
    engine.workers().executor(WorkPriority::background)->post([work = std::move(work)] {
        try {
            work();
        } catch (std::exception const &) {
            // Best effort: the record is needed only after a crash, and a copy that stays goes at the next start.
        }
    });
}

} // namespace

RemoteEditSession::RemoteEditSession(Ports ports, EditedFile::Fetched file, Origin origin)
    : with(std::move(ports)),
      copy(std::move(file.copy)),
      watch(origin == Origin::fetched ? copy.record.uploaded : std::nullopt),
      seen(copy.record.uploaded),
      shown{.connection = copy.record.connection, .path = copy.record.path},
      timer(with.mainContext, with.clock, [this] { tick(); })
{
    shown.status = origin == Origin::fetched ? Text("watching for saves…")
                                             : Text("saved here before the program ended, and not uploaded");
    showWay(file.way);
}

RemoteEditSession::~RemoteEditSession()
{
    events.request_stop();
}

void RemoteEditSession::begin()
{
    spawn({with.mainContext, events.get_token()}, listen(weak_from_this(), &with.engine, folderOf(copy.path)));
}

bool RemoteEditSession::isOf(std::string const &connection, std::string const &path) const
{
    return copy.record.connection == connection && copy.record.path == path;
}

/// An event makes the next look come at once; without events the timer brings it. The first look comes when the events
/// do, so that no save falls between the two.
Task<void> RemoteEditSession::listen(Weak weak, EngineRuntime *engine, std::string folder)
{
    auto const events =
        co_await engine->files().run(folder, lastLink, priority, [engine, folder](std::string const & /*place*/) {
            return engine->directoryEvents().watch(folder);
        });
    for (auto isThere = events != nullptr;;) {
        if (auto const self = weak.lock())
            self->tick();
        else
            co_return;
        if (!isThere)
            co_return;
        auto const event = co_await events->next();
        isThere = event != FolderWatch::Event::gone;
    }
}

void RemoteEditSession::tick()
{
    looksOnceMore = isLooking;
    if (!isLooking && !events.stop_requested()) {
        isLooking = true;
        spawn({with.mainContext, events.get_token()}, look(weak_from_this(), &with.engine, copy));
    }
}

RemoteEditSession::Found RemoteEditSession::findNow(EditStaging::Copy const &copy)
{
    // In this order: what an editor saved before its end is seen with the end.
    auto const ended = EditStaging::endedEditors(copy);
    return {.stamp = EditStaging::stampOf(copy.path), .endedEditors = ended};
}

Task<void> RemoteEditSession::look(Weak weak, EngineRuntime *engine, EditStaging::Copy copy)
{
    auto const found = co_await engine->files().run(copy.path, lastLink, priority,
                                                    [copy](std::string const & /*place*/) { return findNow(copy); });
    if (auto const self = weak.lock())
        self->ticked(found);
}

void RemoteEditSession::ticked(Found const &found)
{
    auto const &stamp = found.stamp;
    isLooking = false;
    if (events.stop_requested())
        return;
    timer.set(tickInterval);
    if (std::exchange(looksOnceMore, false))
        tick();
    auto const now = with.clock->steadyNow();
    // What changes during an upload is seen by the first look after it.
    if (shown.isUploading)
        return;
    if (stamp)
        seen = stamp;
    if (startedEditors > 0 && found.endedEditors >= startedEditors && found.endedEditors > knownEnds) {
        knownEnds = found.endedEditors;
        return editorsEnded();
    }
    // What it finds may have been uploaded already: by the button, or for an editor that has ended.
    auto const finding = watch.tick(stamp, now);
    // Events of other files beside the copy make it look too, and must not put off the upload.
    if (auto const rest = watch.untilSettled(now))
        timer.set(*rest);
    switch (finding) {
    case SaveWatch::Finding::nothing:
        break;
    case SaveWatch::Finding::changed:
        if (shown.question == Question::none && stamp != copy.record.uploaded)
            say("changed — waiting for the save to settle…");
        break;
    case SaveWatch::Finding::settled:
        if (stamp != copy.record.uploaded)
            startUpload(copy);
    }
}

void RemoteEditSession::editorsEnded()
{
    if (!isUnsaved())
        return finish();
    isLeaving = true;
    startUpload(copy);
}

void RemoteEditSession::uploadNow()
{
    startUpload(copy);
}

void RemoteEditSession::overwrite()
{
    auto sent = copy;
    sent.record.version = versionThere; // the one that the user was asked about, and no later one
    startUpload(std::move(sent));
}

void RemoteEditSession::saveBeside()
{
    auto sent = copy;
    sent.record.path += " (conflict " + timeText(with.clock->now(), "%Y-%m-%d %H.%M.%S") + ")";
    sent.record.version.clear();
    startUpload(std::move(sent));
}

void RemoteEditSession::startUpload(EditStaging::Copy sent)
{
    if (shown.isUploading)
        return;
    shown.isUploading = true;
    shown.question = Question::none;
    say("uploading…");
    spawn({with.mainContext, {}}, upload(weak_from_this(), with, std::move(sent)));
}

Task<RemoteEditSession::Result> RemoteEditSession::put(Ports ports, EditStaging::Copy sent,
                                                       std::shared_ptr<std::shared_ptr<Browser>> host)
{
    auto reached = co_await ports.host(sent.record.connection);
    *host = std::move(reached);
    auto const path = sent.record.path;
    std::shared_ptr<void const> claim;
    if (ports.claim) {
        auto held = co_await ports.claim(*host, path);
        claim = std::move(held);
    }
    auto const outcome = co_await outcomeOf(EditedFile::put(&ports.engine, (*host)->providerRef(), sent));
    // Also after a failure, as the write may have been done.
    auto const folder = path.rfind('/') == 0 ? std::string("/") : folderOf(path);
    co_await outcomeOf((*host)->wroteInto(folder, {path.substr(path.rfind('/') + 1)}));
    if (outcome.failure)
        std::rethrow_exception(outcome.failure);
    co_return *outcome.value;
}

Task<void> RemoteEditSession::upload(Weak weak, Ports ports, EditStaging::Copy sent)
{
    auto const host = std::make_shared<std::shared_ptr<Browser>>();
    auto outcome = co_await outcomeOf(put(ports, sent, host));
    auto const self = weak.lock();
    if (!self)
        co_return;
    auto const path = sent.record.path;
    self->ended(std::move(sent), std::move(outcome));
    if (*host && self->onUploaded)
        self->onUploaded(*host, path);
}

void RemoteEditSession::ended(EditStaging::Copy sent, Outcome<Result> outcome)
{
    shown.isUploading = false;
    auto const isLast = std::exchange(isLeaving, false);
    if (shown.question == Question::leaving)
        shown.question = Question::none;
    if (outcome.failure)
        return failed(PaneStatus::describe(outcome.failure));
    auto const &result = *outcome.value;
    if (!result.stamp)
        return say("changed — waiting for the save to settle…");
    switch (result.outcome.kind) {
    case Kind::failed:
        return failed(result.outcome.words);
    case Kind::changed:
        versionThere = result.outcome.state.version;
        return ask(Question::conflict,
                   {versionThere.empty() ? "⚠︎ it was deleted on %@ meanwhile" : "⚠︎ it was changed on %@ meanwhile",
                    {copy.record.connection}});
    case Kind::replaced:
    case Kind::same:
        arrived(std::move(sent), result);
    }
    if (isLast && !isUnsaved())
        finish();
}

void RemoteEditSession::arrived(EditStaging::Copy sent, Result const &result)
{
    auto const &there = result.outcome.state;
    copy.record = std::move(sent.record);
    copy.record.version = there.version;
    copy.record.mode = there.mode;
    copy.record.uploaded = result.stamp;
    seen = result.stamp;
    shown.path = copy.record.path;
    inBackground(with.engine, [kept = copy] { EditStaging::keep(kept); });
    showWay(there.way);
    say({"saved to %@ at %@", {copy.record.connection, timeText(with.clock->now(), "%H:%M:%S")}});
}

void RemoteEditSession::failed(Text reason)
{
    say({"⚠︎ upload failed: %@", {std::move(reason)}});
}

void RemoteEditSession::done()
{
    spawn({with.mainContext, {}}, lookBeforeLeaving(weak_from_this(), &with.engine, copy.path));
}

Task<void> RemoteEditSession::lookBeforeLeaving(Weak weak, EngineRuntime *engine, std::string path)
{
    auto const stamp = co_await stampOf(engine, std::move(path));
    auto const self = weak.lock();
    if (!self)
        co_return;
    if (stamp)
        self->seen = stamp;
    if (self->isUnsaved())
        self->askBeforeLeaving();
    else
        self->finish();
}

void RemoteEditSession::askBeforeLeaving()
{
    if (shown.question != Question::leaving)
        beforeLeaving = shown;
    isLeaving = true;
    ask(Question::leaving, {"what you saved is not on %@ yet", {copy.record.connection}});
}

void RemoteEditSession::stay()
{
    isLeaving = false;
    ask(beforeLeaving.question, beforeLeaving.status);
}

void RemoteEditSession::finish()
{
    events.request_stop();
    timer.cancel();
    inBackground(with.engine, [gone = copy] { EditStaging::remove(gone); });
    if (auto const report = std::exchange(onFinished, nullptr))
        report();
}

void RemoteEditSession::leaveForNextStart()
{
    events.request_stop();
    timer.cancel();
    inBackground(with.engine, [left = copy] {
        if (EditStaging::stampOf(left.path) == left.record.uploaded)
            EditStaging::remove(left);
    });
}

void RemoteEditSession::ask(EditState::Question question, Text status)
{
    shown.question = question;
    say(std::move(status));
}

void RemoteEditSession::say(Text status)
{
    shown.status = std::move(status);
    changed();
}

void RemoteEditSession::showWay(EditCommand::Way way)
{
    auto const isDangerous = way == EditCommand::Way::copy;
    shown.note = isDangerous ? Text("saves are written into the file itself: if the host stops meanwhile, the file is "
                                    "incomplete there")
                             : Text();
}

void RemoteEditSession::changed() const
{
    if (onChanged)
        onChanged();
}

} // namespace tw
