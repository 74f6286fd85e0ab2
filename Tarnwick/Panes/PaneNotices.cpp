#include "Tarnwick/Panes/PaneNotices.h"

#include "TWCore/Async/Cancelled.h"
#include "TWCore/Async/FailureKind.h"
#include "Tarnwick/Panes/HostWording.h"

namespace tw {

PaneNotices::PaneNotices(std::shared_ptr<Executor> mainContext, std::shared_ptr<Clock> clock,
                         std::function<void()> changed)
    : executor(std::move(mainContext)), time(std::move(clock)), tellPane(std::move(changed))
{
}

void PaneNotices::fail(Failure what)
{
    if (failureIs<Cancelled>(what.reason))
        return;
    failureNotice = HostWording::failure(what.reason, what.place.connection, what.place.path);
    failed = std::move(what);
    update();
}

void PaneNotices::clear()
{
    failed.reset();
    update();
}

void PaneNotices::waitFor(std::string const &host, std::shared_ptr<FileSystemProvider> const &provider)
{
    if (wait && wait->isFor(provider))
        return;
    awaitedHost = host;
    wait = std::make_unique<HostWait>(executor, time, provider, [this] { update(); });
    update();
}

void PaneNotices::stopWaiting()
{
    wait.reset();
    update();
}

void PaneNotices::update()
{
    auto const news = wait ? wait->news() : std::nullopt;
    auto next = news     ? std::optional(HostWording::waiting(awaitedHost, news->phase, news->soFar))
                : failed ? std::optional(failureNotice)
                         : std::nullopt;
    if (next == shown)
        return;
    shown = std::move(next);
    tellPane();
}

} // namespace tw
