#pragma once

#include "TWCore/Async/Clock.h"
#include "Tarnwick/Panes/Navigation.h"
#include "Tarnwick/Panes/PaneSpinner.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

namespace tw {

/// Gets the folders that a pane wants to show. Of several wishes only the newest arrives: each wish raises a token, and
/// an answer with an older token is dropped.
///
/// Threads: main context only.
/// Lifetime: shared; its own tasks hold it weakly, so a pane that is closed is not kept alive by its own question.
/// Cancellation: a wish that is superseded or given up stops its call into the Browser. So does the destructor.
class Navigator : public std::enable_shared_from_this<Navigator> {
public:
    using Updates = UpdateStream<DirectorySnapshot>;

    struct Arrival {
        OpenResult result;
        /// The changed listings of a connection that is new to the pane, from before its folder was opened: what is
        /// read again behind a stale answer may be there before the pane is.
        std::optional<Updates> updates;
        std::chrono::duration<double> elapsed{};
    };

    struct Events {
        std::function<void(Navigation const &, Arrival)> onArrived;
        std::function<void(Navigation const &, std::exception_ptr const &)> onFailed;
        /// A part of a long listing has come, and the rest is on its way. May be empty.
        std::function<void(Navigation const &, DirectorySnapshot)> onPart = {};
    };

    /// `spinner` outlives the navigator, and turns while the newest wish is late.
    Navigator(std::shared_ptr<Executor> mainContext, std::shared_ptr<Clock> clock, Events events, PaneSpinner &spinner);
    ~Navigator();

    enum class Source { known, newToThePane };

    /// Asks for a folder. Gives up the wish before.
    void begin(Navigation navigation, Source source);

    /// Gives up the wish that is under way.
    void cancel();

    bool isUnderWay() const noexcept { return awaited != nullptr; }

    /// Whether the newest wish is under way, and is to read a folder anew.
    bool isRereading() const noexcept { return rereading; }

    /// Changes with each wish, so that a task that waited for something else can see whether the user went on.
    std::uint64_t token() const noexcept { return current; }

private:
    static PartTaker partTaker(std::weak_ptr<Navigator> weak, std::shared_ptr<Executor> mainContext,
                               Navigation navigation, std::uint64_t token);
    static Task<void> perform(std::weak_ptr<Navigator> weak, std::shared_ptr<Clock> clock, Navigation navigation,
                              Source source, std::uint64_t token);

    std::shared_ptr<Executor> const mainContext;
    std::shared_ptr<Clock> const clock;
    Events const events;
    std::uint64_t current = 0;
    std::stop_source wish; ///< stops the newest wish
    bool rereading = false;
    PaneSpinner &spinner;
    PaneSpinner::Work awaited; ///< the newest wish while it is under way, or null
};

} // namespace tw
