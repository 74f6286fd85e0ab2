#pragma once

#include "TWCore/Async/Clock.h"

#include <functional>
#include <memory>

namespace tw {

/// Whether a pane's spinner turns: while anything that the user waits for has been under way for more than a moment.
///
/// Threads: main context only.
/// Lifetime: work may outlive it.
class PaneSpinner {
public:
    /// Something that the user waits for, until the handle goes.
    using Work = std::shared_ptr<void>;

    /// An answer that comes sooner shows no spinner: it would only flicker.
    static constexpr std::chrono::milliseconds delay{120};

    /// `changed` is called when the answer of isSpinning changes.
    PaneSpinner(std::shared_ptr<Executor> mainContext, std::shared_ptr<Clock> clock, std::function<void()> changed);

    [[nodiscard]] Work begin() const;

    /// The same for what is known to take long: the spinner turns at once.
    [[nodiscard]] Work beginLong() const;

    bool isSpinning() const;

private:
    struct State;
    struct Begun;

    static Task<void> ripen(std::weak_ptr<Begun> weak, std::shared_ptr<Clock> clock);

    std::shared_ptr<Executor> const executor;
    std::shared_ptr<Clock> const time;
    std::shared_ptr<State> const state;
};

} // namespace tw
