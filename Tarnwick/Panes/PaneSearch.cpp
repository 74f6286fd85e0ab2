#include "Tarnwick/Panes/PaneSearch.h"

#include "TWCore/Async/OnExecutor.h"

namespace tw {

namespace {

/// A search that has rested for this long is over: the next letter begins another.
constexpr std::chrono::seconds searchLasts{3};

/// So many names are folded within two milliseconds in any alphabet, which nobody notices after a key.
constexpr std::size_t namesFoldedAtOnce = 2000;

} // namespace

PaneSearch::PaneSearch(Collaborators collaborators, PaneModel &model, PaneCursor const &of, Events toTell)
    : with(std::move(collaborators)),
      rows(model),
      cursor(of),
      events(std::move(toTell)),
      expiry(with.mainContext, with.clock, [this] { end(); }),
      taker(std::make_shared<Taker>([this](Folded folded) { take(std::move(folded)); }))
{
}

void PaneSearch::type(std::string_view text)
{
    typed.compose({});
    typed.insert(text);
    apply();
}

void PaneSearch::compose(std::string text)
{
    if (text.empty() && typed.composing().empty())
        return;
    typed.compose(std::move(text));
    // A text that the person has given up leaves nothing to search for.
    typed.isEmpty() ? leave() : apply();
}

void PaneSearch::moveCaret(SearchText::Step step)
{
    typed.moveCaret(step);
    apply();
}

bool PaneSearch::deleteBeforeCaret()
{
    if (!typed.deleteBeforeCaret())
        return false;
    typed.isEmpty() ? leave() : apply();
    return true;
}

void PaneSearch::takeComposition()
{
    // An input method reports what it had as typed text.
    events.onCompositionEnd(PaneDisplay::Composition::committed);
    typed.commitComposing();
}

void PaneSearch::settle()
{
    if (isWaiting)
        find();
}

void PaneSearch::end()
{
    if (isUnderWay())
        leave();
}

void PaneSearch::apply()
{
    expiry.set(searchLasts);
    isWaiting = false;
    if (!rows.snapshot())
        return;
    if (typed.committed().empty()) {
        events.onText({"search: %@", {typed.composing()}});
    } else if (mustWait()) {
        isWaiting = true;
        events.onText({"search: %@", {typed.shown()}});
        beginFolding();
    } else {
        find();
    }
}

bool PaneSearch::mustWait() const
{
    return with.workers && !rows.hasFoldedNames() && rows.snapshot()->count() > namesFoldedAtOnce;
}

void PaneSearch::find()
{
    isWaiting = false;
    folding.request_stop();
    auto const found = rows.findRow(typed.committed(), cursor.row().value_or(0));
    if (!found) {
        events.onNoMatch();
        events.onText({"search: %@   (no match)", {typed.shown()}});
        return;
    }
    events.onFound(*found);
    events.onText({"search: %@", {typed.shown()}});
}

void PaneSearch::leave()
{
    expiry.cancel();
    folding.request_stop();
    isWaiting = false;
    auto const wasComposing = !typed.composing().empty();
    typed.clear();
    rows.endFinding();
    if (wasComposing)
        events.onCompositionEnd(PaneDisplay::Composition::discarded);
    events.onEnded();
}

void PaneSearch::beginFolding()
{
    if (isFolding)
        return; // `take` looks for what is wanted then
    isFolding = true;
    folding = std::stop_source();
    spawn({with.mainContext, {}}, performFolding(taker, with.workers, *rows.snapshot(), folding.get_token()));
}

void PaneSearch::take(Folded folded)
{
    isFolding = false;
    if (!isWaiting)
        return;
    if (folded.names)
        rows.takeFoldedNames(folded.listing, *std::move(folded.names));
    if (rows.hasFoldedNames())
        find();
    else
        apply(); // another listing is on show by now, or another search has begun
}

Task<PaneSearch::Folded> PaneSearch::fold(DirectorySnapshot listing, std::stop_token calledOff)
{
    auto names = FoldedNames::of(listing, calledOff);
    co_return Folded{std::move(listing), std::move(names)};
}

/// Comes back also when it is called off, so that the next listing is not folded beside this one.
Task<void> PaneSearch::performFolding(std::weak_ptr<Taker> weak, std::shared_ptr<Executor> workers,
                                      DirectorySnapshot listing, std::stop_token calledOff)
{
    auto folded = co_await onExecutor(std::move(workers), fold(std::move(listing), std::move(calledOff)));
    if (auto const taker = weak.lock())
        (*taker)(std::move(folded));
}

} // namespace tw
