#pragma once

#include "TWCore/Model/Text.h"
#include "Tarnwick/Connections/ConnectionItem.h"
#include "Tarnwick/Panes/PaneNotice.h"
#include "Tarnwick/Panes/PathCompletion.h"
#include "Tarnwick/Panes/Visibility.h"
#include "Tarnwick/Table/PaneModel.h"

#include <optional>
#include <string>
#include <vector>

namespace tw {

struct NameField;

/// What a PaneController needs of a toolkit: it says what to show, and the display shows just that.
///
/// The rows themselves are read from the controller's model when they are painted.
///
/// Threads: main context only.
class PaneDisplay {
public:
    virtual ~PaneDisplay() = default;

    virtual Visibility visibility() const = 0;

    /// The rows were replaced or reordered; the scroll position stays as far as it can.
    virtual void reloadRows() = 0;

    /// The rows are the same, but their marks changed.
    virtual void redrawRows() = 0;

    /// Puts the cursor on a row and scrolls it into view, or takes it away.
    virtual void showCursor(std::optional<int> row) = 0;

    /// The row at the top of the visible part.
    virtual int firstVisibleRow() const = 0;
    virtual void scrollToFirstVisibleRow(int row) = 0;

    /// How many whole rows fit in the visible height.
    virtual int wholeVisibleRows() const = 0;

    /// The name of the connection that the path belongs to: "local", or a host, of which the display hides nothing.
    virtual void showConnection(std::string const &name) = 0;

    /// Opens the menu of connections, on the next turn of the event loop.
    virtual void openConnectionMenu(std::vector<ConnectionItem> items) = 0;

    /// What the menu holds now. One that the user has closed stays closed.
    virtual void updateConnectionMenu(std::vector<ConnectionItem> items) = 0;

    /// For reading only: the names in them may hold any bytes, and the display shows them on one line.
    virtual void showPath(Text const &path) = 0;
    virtual void showStatus(Text const &text) = 0;

    /// Lets the user edit the path.
    virtual void editPath() = 0;

    /// The same with what was typed before, which led nowhere; unless the keyboard is elsewhere by now.
    virtual void returnTyped(std::string const &text) = 0;

    /// For the text that is being typed, if it still is what was to be completed.
    virtual void showCompletion(PathCompletion const &completion) = 0;

    /// The strip between the path and the rows; nothing: there is none.
    virtual void showNotice(std::optional<PaneNotice> const &notice) = 0;

    /// Moves the keyboard from the rows, if they have it, to the strip's first action.
    virtual void offerNotice() = 0;

    enum class Spinner { stopped, spinning };

    virtual void showSpinner(Spinner spinner) = 0;
    virtual void showSortIndicator(SortKey key, bool ascending) = 0;

    /// The keyboard and the commands act on the active pane.
    virtual void showActive(bool active) = 0;
    virtual void takeKeyboardFocus() = 0;

    /// Opens a field over a name, with the keyboard. It closes with `hideNameField`, which gives the keyboard back to
    /// the rows if the field has it. Its bytes are those that it was given, but for what the user has changed.
    virtual void showNameField(NameField const &field) = 0;
    virtual std::string textOfNameField() const = 0;
    virtual void hideNameField() = 0;

    enum class Composition { committed, discarded };

    /// Has an input method end what it composes. What it commits it reports as text that was typed.
    virtual void endComposition(Composition how) = 0;

    virtual void beep() = 0;
};

} // namespace tw
