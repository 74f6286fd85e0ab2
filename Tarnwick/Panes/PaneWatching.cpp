// How a pane keeps up with the folder on show.

#include "TWCore/Async/OnExecutor.h"
#include "Tarnwick/Connections/OpenArchive.h"
#include "Tarnwick/Panes/FolderWatcher.h"
#include "Tarnwick/Panes/PaneController.h"
#include "Tarnwick/Panes/PaneStatus.h"
#include "Tarnwick/Settings/Settings.h"

#include <cmath>
#include <unordered_set>

namespace tw {

void PaneController::makeWatcher()
{
    auto const weak = weak_from_this();
    watcher = std::make_shared<FolderWatcher>(FolderWatcher::Ports{.mainContext = collaborators.mainContext,
                                                                   .clock = collaborators.clock,
                                                                   .visibility =
                                                                       [weak] {
                                                                           auto const self = weak.lock();
                                                                           return self ? self->display->visibility()
                                                                                       : Visibility::hidden;
                                                                       },
                                                                   .onChanged = [weak] { return readBehindRows(weak); },
                                                                   .onPaceChanged =
                                                                       [weak] {
                                                                           auto const self = weak.lock();
                                                                           if (self && self->showsSummary)
                                                                               self->refreshStatus();
                                                                       }});
    refreshObservation = Settings::autoRefresh.observe(collaborators.defaults, [weak] {
        auto const self = weak.lock();
        if (self && self->rows.snapshot())
            self->startWatching();
    });
}

void PaneController::startWatching()
{
    isFolderGone = false;
    bool const isInside = archive && archive->outer();
    if (!Settings::autoRefresh.read(collaborators.defaults) || isInside)
        watcher->stop();
    else if (archive)
        watcher->watch(archive->file().connection, archive->file().folder(), archive->file().holder);
    else
        watcher->watch(connection, pathOnShow(), browser);
}

void PaneController::stopWatching()
{
    watcher->stop();
}

std::optional<int> PaneController::secondsOfWatching() const
{
    auto const &pace = watcher->pace();
    if (connection == localConnection || !pace.hasBackedOff())
        return std::nullopt;
    return static_cast<int>(std::lround(pace.seconds()));
}

void PaneController::checkForChanges()
{
    if (restsOnListing() && !notices.onShow())
        watcher->checkNow();
}

/// What is found to have changed reaches the pane as an update.
Task<void> PaneController::readBehindRows(std::weak_ptr<PaneController> weak)
{
    auto self = weak.lock();
    if (!self)
        co_return;
    auto const source = self->browser;
    auto const path = self->pathOnShow();
    auto inside = self->archive;
    self.reset();
    if (inside)
        co_await OpenArchive::forgetIfChanged(std::exchange(inside, nullptr));
    auto const outcome = co_await outcomeOf(source->revalidate(path));
    self = weak.lock();
    if (self && self->browser == source && self->pathOnShow() == path)
        self->noteReading(outcome.failure);
}

/// The rows stay when their folder has gone, but not as if nothing had happened. Why a host cannot be reached, its
/// strip says.
void PaneController::noteReading(std::exception_ptr const &failure)
{
    auto const isGone = failure && PaneStatus::isAboutThePath(failure);
    if (std::exchange(isFolderGone, isGone) == isGone)
        return;
    if (isGone)
        showStatus(PaneStatus::warning(PaneStatus::describe(failure)));
    else
        refreshStatus();
}

void PaneController::listen(Task<void> loop)
{
    updateLoop.request_stop();
    updateLoop = std::stop_source();
    spawn({collaborators.mainContext, updateLoop.get_token()}, std::move(loop));
}

Task<void> PaneController::subscribe(std::weak_ptr<PaneController> weak, std::shared_ptr<Browser> source)
{
    auto stream = co_await source->updates();
    source.reset();
    co_await listenToUpdates(weak, std::move(stream));
}

Task<void> PaneController::listenToUpdates(std::weak_ptr<PaneController> weak, Updates stream)
{
    auto const context = co_await currentContext();
    for (;;) {
        auto snapshot = co_await stream.next();
        auto self = weak.lock();
        // One that was on its way when the pane went over to another connection is a folder of the one before.
        if (!self || !snapshot || context.stop.stop_requested())
            co_return;
        if (snapshot->path() != self->pathOnShow())
            continue;
        auto const workers = self->collaborators.workers;
        if (snapshot->count() < longListing || !workers) {
            self->applyRefresh(*std::move(snapshot));
            continue;
        }
        auto ordering =
            onExecutor(workers, ordered(*std::move(snapshot), self->rows.viewOptions(), self->rows.folderPlacement()));
        self.reset();
        auto next = co_await std::move(ordering);
        self = weak.lock();
        if (!self || context.stop.stop_requested())
            co_return;
        auto const &onShow = self->rows.snapshot();
        // The pane may have left the folder, or read it anew.
        if (onShow && next.snapshot.path() == onShow->path() && next.snapshot.fetchedAt() >= onShow->fetchedAt())
            self->applyRefresh(std::move(next));
    }
}

Task<OrderedListing> PaneController::ordered(DirectorySnapshot snapshot, ViewOptions options, FolderPlacement placement)
{
    co_return OrderedListing::of(std::move(snapshot), options, placement);
}

void PaneController::applyRefresh(DirectorySnapshot snapshot)
{
    applyRefresh(OrderedListing::of(std::move(snapshot), rows.viewOptions(), rows.folderPlacement()));
}

/// Where the cursor stays: on its name, else on the next one below that is still there, else above.
std::string PaneController::cursorNameAfter(DirectorySnapshot const &next) const
{
    std::string name(cursorName());
    auto const isThere = [&](Entry const &entry) { return next.nameBytes(entry) == name; };
    if (name.empty() || std::ranges::any_of(next.entries(), isThere))
        return name;
    std::unordered_set<std::string_view> left;
    for (auto const &entry : next.entries())
        left.insert(next.nameBytes(entry));
    for (auto const step : {1, -1}) {
        for (auto row = *cursor.row(); rows.entry(row); row += step) {
            if (left.contains(rows.name(row)))
                return std::string(rows.name(row));
        }
    }
    return {};
}

void PaneController::applyRefresh(OrderedListing next)
{
    if (holdsRefreshes) {
        deferredRefresh = std::move(next.snapshot);
        return;
    }
    auto const firstRow = display->firstVisibleRow();
    auto const name = cursorNameAfter(next.snapshot);
    rows.setListing(std::move(next));
    display->reloadRows();
    restoreCursor(name);
    display->scrollToFirstVisibleRow(firstRow);
    if (showsSummary)
        refreshStatus(); // and no message is wiped away, nor what is searched for
}

void PaneController::applyDeferredRefresh()
{
    holdsRefreshes = false;
    if (auto snapshot = std::exchange(deferredRefresh, std::nullopt))
        applyRefresh(*std::move(snapshot));
}

} // namespace tw
