#pragma once

#include "Tarnwick/Panes/Alarm.h"
#include "Tarnwick/Panes/PaneCursor.h"
#include "Tarnwick/Panes/PaneDisplay.h"
#include "Tarnwick/Table/SearchText.h"

#include <functional>
#include <optional>

namespace tw {

/// Finds a name in the rows of a pane while it is typed, from the cursor on.
///
/// Searching needs the names in another form, see FoldedNames. Those of a long listing are folded by a worker, one
/// listing at a time. What is typed meanwhile is searched for when the names are there.
///
/// Threads: main context only.
/// Lifetime: rows and cursor outlive it.
/// Cancellation: `end` and the destructor call the worker off.
class PaneSearch {
public:
    struct Collaborators {
        std::shared_ptr<Executor> mainContext;
        std::shared_ptr<Clock> clock;
        std::shared_ptr<Executor> workers; ///< null: names are folded at once, however many there are
    };

    struct Events {
        std::function<void(int row)> onFound;
        std::function<void(Text text)> onText; ///< what the status line is to say
        std::function<void()> onNoMatch;
        std::function<void(PaneDisplay::Composition how)> onCompositionEnd;
        std::function<void()> onEnded;
    };

    PaneSearch(Collaborators collaborators, PaneModel &rows, PaneCursor const &cursor, Events events);

    ~PaneSearch() { folding.request_stop(); }

    PaneSearch(PaneSearch const &) = delete;
    PaneSearch &operator=(PaneSearch const &) = delete;

    SearchText const &text() const noexcept { return typed; }

    bool isUnderWay() const noexcept { return !typed.isEmpty(); }

    /// Inserts text that is typed, or that an input method has committed.
    void type(std::string_view text);

    /// Text that an input method composes, as it is now; empty: it has given the text up.
    void compose(std::string text);

    void moveCaret(SearchText::Step step);

    /// Deletes the character before the caret; the search ends with the last one. False: there is none.
    bool deleteBeforeCaret();

    /// Has the input method end what it composes; the text belongs to the search.
    void takeComposition();

    /// Finds now what waits for its worker: the next thing that is done acts on the row that was typed for, or moves
    /// the cursor away from it.
    void settle();

    /// Ends a search; the cursor stays.
    void end();

private:
    /// What a worker has folded; no names if it was called off.
    struct Folded {
        DirectorySnapshot listing;
        std::optional<FoldedNames> names;
    };

    using Taker = std::function<void(Folded)>;

    static Task<Folded> fold(DirectorySnapshot listing, std::stop_token calledOff);
    static Task<void> performFolding(std::weak_ptr<Taker> weak, std::shared_ptr<Executor> workers,
                                     DirectorySnapshot listing, std::stop_token calledOff);

    bool mustWait() const;
    void apply();
    void find();
    void beginFolding();
    void take(Folded folded);
    void leave();

    Collaborators const with;
    PaneModel &rows;
    PaneCursor const &cursor;
    Events const events;
    SearchText typed;
    Alarm expiry;
    bool isWaiting = false; ///< for a worker, with a text that has not been searched for
    bool isFolding = false;
    std::stop_source folding;
    std::shared_ptr<Taker> const taker;
};

} // namespace tw
