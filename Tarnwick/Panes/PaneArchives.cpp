// How a pane gets into an archive and out of it.

#include "TWCore/Archives/ReadableArchive.h"
#include "TWCore/Async/Outcome.h"
#include "Tarnwick/Connections/Connections.h"
#include "Tarnwick/Connections/OpenArchive.h"
#include "Tarnwick/Panes/PaneController.h"
#include "Tarnwick/Panes/PaneStatus.h"

namespace tw {

/// False: the file is no archive, or one that cannot be entered.
bool PaneController::enterArchive(std::string const &path)
{
    ArchiveFile file{.holder = browser, .connection = connection, .path = path};
    return readableArchive(file.name()) && enterArchive(std::move(file), archive, "/");
}

bool PaneController::enterArchive(ArchiveFile file, std::shared_ptr<OpenArchive const> outer, std::string inner)
{
    auto inside = collaborators.openArchive ? collaborators.openArchive(file) : nullptr;
    if (!inside)
        return false;
    wasTouched = false;
    leaveHostArrival();
    auto const name = file.name();
    auto const entered =
        std::make_shared<OpenArchive const>(collaborators.mainContext, std::move(file), inside, std::move(outer));
    spawn({collaborators.mainContext, {}}, OpenArchive::noteFile(entered));
    startNavigation({.path = std::move(inner),
                     .source = std::move(inside),
                     .connection = entered->connection(),
                     .archive = entered});
    showStatus({"reading %@…", {name}});
    return true;
}

void PaneController::leaveArchive()
{
    if (!archive)
        return;
    wasTouched = false;
    leaveHostArrival();
    auto const &file = archive->file();
    startNavigation({.path = file.folder(),
                     .select = file.name(),
                     .source = file.holder,
                     .connection = file.connection,
                     .archive = archive->outer()});
}

void PaneController::reloadArchive(std::string select)
{
    if (!archive || heading != browser)
        return;
    if (select.empty())
        select = cursorName().empty() ? ".." : cursorName();
    startNavigation({.path = requested, .select = std::move(select), .marks = MarksAfter::kept, .isReread = true});
    wasTouched = true; // an operation wants it, not a person who looks at this pane
}

void PaneController::adoptPlace(Navigation const &navigation)
{
    browser = navigation.source;
    connection = navigation.connection;
    archive = navigation.archive;
    rows.setAlwaysShowParentRow(archive != nullptr);
    applyCut();
}

void PaneController::shareArchive(PaneController const &other)
{
    archive = headingArchive = other.archive;
    rows.setAlwaysShowParentRow(archive != nullptr);
    showConnection(connection);
}

/// The archive that a visit was in, with the machine that holds the archive. Of one inside another, the outer one.
PaneHistory::Visit PaneController::visitOf(std::string connection, std::string path,
                                           std::shared_ptr<OpenArchive const> const &archive)
{
    PaneHistory::Visit visit{.connection = std::move(connection), .path = std::move(path)};
    if (archive) {
        auto const &file = archive->outermost();
        visit.archive = {.connection = file.connection, .path = file.path, .isOutermost = archive->outer() == nullptr};
    }
    return visit;
}

/// Goes back to a place in an archive that the pane has left, and which is listed anew for it.
void PaneController::replayArchive(PaneHistory::Visit const &visit)
{
    auto const &where = visit.archive;
    auto inner = where.isOutermost ? visit.path : "/";
    auto const &here = archive ? archive->outermost().connection : connection;
    if (where.connection == here)
        enterArchive({archive ? archive->outermost().holder : browser, where.connection, where.path}, nullptr, inner);
    else if (connections && where.connection == localConnection)
        enterArchive({connections->local(), where.connection, where.path}, nullptr, inner);
    else if (connections)
        spawn({collaborators.mainContext, {}},
              returnToArchive(weak_from_this(), connections->ssh(where.connection), visit, navigator->token()));
}

Task<void> PaneController::returnToArchive(std::weak_ptr<PaneController> weak,
                                           Task<std::shared_ptr<Browser>> connecting, PaneHistory::Visit visit,
                                           std::uint64_t token)
{
    auto const host = co_await outcomeOf(std::move(connecting));
    auto const self = weak.lock();
    if (!self || self->navigator->token() != token)
        co_return; // the user is elsewhere
    auto const &where = visit.archive;
    if (host.value)
        self->enterArchive({*host.value, where.connection, where.path}, nullptr, where.isOutermost ? visit.path : "/");
    else
        self->showStatus(PaneStatus::warning(PaneStatus::describe(host.failure)));
}

/// The folder that the archive lies in: an archive cannot be opened as a connection.
PaneSpec PaneController::placeOf(OpenArchive const &of)
{
    auto const &file = of.outermost();
    return {.connection = file.connection, .path = file.folder(), .pathWasExplicit = true, .cursor = file.name()};
}

PaneSpec PaneController::placeToRemember() const
{
    return headingArchive ? placeOf(*headingArchive) : place();
}

PaneSpec PaneController::placeForDisplay() const
{
    auto shown = place();
    if (shown.connection == shownConnection)
        shown.connection = titleOfConnection();
    return shown;
}

std::string PaneController::titleOfConnection() const
{
    return headingArchive ? headingArchive->title() : shownConnection;
}

} // namespace tw
