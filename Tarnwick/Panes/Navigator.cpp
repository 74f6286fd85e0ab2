#include "Tarnwick/Panes/Navigator.h"

#include "TWCore/Async/Outcome.h"
#include "Tarnwick/Connections/OpenArchive.h"

namespace tw {

Navigator::Navigator(std::shared_ptr<Executor> context, std::shared_ptr<Clock> time, Events toTell,
                     PaneSpinner &ofThePane)
    : mainContext(std::move(context)), clock(std::move(time)), events(std::move(toTell)), spinner(ofThePane)
{
}

Navigator::~Navigator()
{
    wish.request_stop();
}

void Navigator::begin(Navigation navigation, Source source)
{
    ++current;
    wish.request_stop();
    wish = std::stop_source();
    rereading = navigation.isReread;
    // A wish behind a late one is late at once: a spinner that stops for a moment would flicker.
    awaited = spinner.isSpinning() ? spinner.beginLong() : spinner.begin();
    spawn({mainContext, wish.get_token()}, perform(weak_from_this(), clock, std::move(navigation), source, current));
}

void Navigator::cancel()
{
    ++current;
    wish.request_stop();
    rereading = false;
    awaited.reset();
}

Task<void> Navigator::perform(std::weak_ptr<Navigator> weak, std::shared_ptr<Clock> clock, Navigation navigation,
                              Source source, std::uint64_t token)
{
    auto const browser = navigation.source;
    Arrival arrival;
    if (source == Source::newToThePane) {
        auto stream = co_await browser->updates();
        arrival.updates.emplace(std::move(stream));
    }
    auto const started = clock->steadyNow();
    if (navigation.isReread && navigation.archive)
        co_await OpenArchive::forget(navigation.archive);
    auto const context = co_await currentContext();
    auto onPart = partTaker(weak, context.executor, navigation, token);
    auto opening = navigation.isReread ? browser->reread(navigation.path, std::move(onPart))
                                       : browser->open(navigation.path, std::move(onPart));
    auto outcome = co_await outcomeOf(std::move(opening));
    arrival.elapsed = clock->steadyNow() - started;

    auto const self = weak.lock();
    if (!self || self->current != token)
        co_return; // the user is elsewhere
    self->rereading = false;
    self->awaited.reset();
    if (outcome.failure) {
        self->events.onFailed(navigation, outcome.failure);
        co_return;
    }
    arrival.result = *std::move(outcome.value);
    self->events.onArrived(navigation, std::move(arrival));
}

PartTaker Navigator::partTaker(std::weak_ptr<Navigator> weak, std::shared_ptr<Executor> mainContext,
                               Navigation navigation, std::uint64_t token)
{
    // The Browser holds this while it fetches, and must not hold itself.
    std::weak_ptr const source = std::exchange(navigation.source, nullptr);
    std::weak_ptr const archive = std::exchange(navigation.archive, nullptr);
    return [weak, mainContext, navigation, source, archive, token](DirectorySnapshot const &part) {
        mainContext->post([weak, navigation, source, archive, token, part] {
            auto const self = weak.lock();
            auto const isWanted = self && self->current == token && self->awaited;
            if (!isWanted || !self->events.onPart)
                return;
            auto wish = navigation;
            wish.source = source.lock();
            wish.archive = archive.lock();
            self->events.onPart(wish, part);
        });
    };
}

} // namespace tw
