#pragma once

#include "TWCore/Async/Clock.h"
#include "TWCore/Provider/FileSystemProvider.h"
#include "TWCore/Provider/HostStatus.h"
#include "Tarnwick/Panes/PaneSpinner.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace tw {

/// What a pane that waits for a host can say of it, from the begin of the wait to the destructor.
///
/// Nothing ticks while there is nothing to say, and nothing more often than once a second.
///
/// Threads: main context only.
/// Lifetime: its own tasks hold its state weakly; a stopped wait calls nothing any more.
class HostWait {
public:
    /// Most waits end sooner. A strip that comes and goes within a moment would only move the rows. With the time until
    /// the spinner turns it is a second.
    static constexpr std::chrono::milliseconds patience = std::chrono::seconds(1) - PaneSpinner::delay;

    /// What the strip says.
    struct News {
        HostStatus::Phase phase;
        std::chrono::seconds soFar; ///< in this phase; in `silent`: since the host was last heard
    };

    /// `changed` is called when `news` answers something else. A provider without HostAccess has no news.
    HostWait(std::shared_ptr<Executor> mainContext, std::shared_ptr<Clock> clock,
             std::shared_ptr<FileSystemProvider> provider, std::function<void()> changed);
    ~HostWait();

    HostWait(HostWait const &) = delete;
    HostWait &operator=(HostWait const &) = delete;

    bool isFor(std::shared_ptr<FileSystemProvider> const &other) const noexcept { return provider == other; }

    /// Nothing during the patience, unless the host is silent, and in a phase that needs no words.
    std::optional<News> news() const;

private:
    struct State;

    static Task<void> follow(std::weak_ptr<State> weak, std::shared_ptr<FileSystemProvider> provider);
    static Task<void> ripen(std::weak_ptr<State> weak, std::shared_ptr<Clock> clock);
    static Task<void> tick(std::weak_ptr<State> weak, std::shared_ptr<Clock> clock);

    std::shared_ptr<FileSystemProvider> const provider;
    std::shared_ptr<State> const state;
};

} // namespace tw
