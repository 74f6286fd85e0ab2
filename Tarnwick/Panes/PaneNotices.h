#pragma once

#include "TWCore/Async/Clock.h"
#include "Tarnwick/Panes/HostWait.h"
#include "Tarnwick/Panes/PaneNotice.h"
#include "Tarnwick/Panes/PaneSpec.h"

#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace tw {

/// What the strip of one pane says: what the pane waits for, else the last failure.
///
/// Threads: main context only.
class PaneNotices {
public:
    /// A place that the pane did not get to.
    struct Failure {
        PaneSpec place;
        std::exception_ptr reason;
        std::function<void()> retry; ///< sets out for the place again
    };

    /// `changed` is called when `onShow` answers something else.
    PaneNotices(std::shared_ptr<Executor> mainContext, std::shared_ptr<Clock> clock, std::function<void()> changed);

    /// Nothing: the pane has no strip.
    std::optional<PaneNotice> const &onShow() const noexcept { return shown; }

    /// Shows a failure until `clear`. Cancellation is no failure, and shows nothing.
    void fail(Failure what);

    /// The failure that is on show, or was before what the pane waits for; null if there is none.
    Failure const *failure() const noexcept { return failed ? &*failed : nullptr; }

    /// Takes the failure away.
    void clear();

    /// The pane waits for an answer of a host. A second call for the same provider goes on with the wait.
    void waitFor(std::string const &host, std::shared_ptr<FileSystemProvider> const &provider);

    /// The pane waits for no host.
    void stopWaiting();

private:
    void update();

    std::shared_ptr<Executor> const executor;
    std::shared_ptr<Clock> const time;
    std::function<void()> const tellPane;
    std::optional<Failure> failed;
    PaneNotice failureNotice;
    std::string awaitedHost;
    std::unique_ptr<HostWait> wait; ///< null: the pane waits for no host
    std::optional<PaneNotice> shown;
};

} // namespace tw
