#pragma once

#include "Tarnwick/Connections/ConnectionItem.h"
#include "Tarnwick/Panes/PaneNotice.h"
#include "Tarnwick/Table/KeyPress.h"

#include <chrono>
#include <string>
#include <string_view>

namespace tw {

/// What the view of a pane reports: keys, clicks, and what is typed into its fields. The counterpart of PaneDisplay.
///
/// Threads: main context only.
class PaneInput {
public:
    virtual ~PaneInput() = default;

    /// Handles a key. False: the pane has no use for the key, and the caller may pass it on. A key that types a text
    /// searches the folder for it.
    virtual bool handleKey(KeyPress const &key) = 0;

    /// Text that an input method has committed.
    virtual void textTyped(std::string_view text) = 0;

    /// Text that an input method composes, as it is now; empty: the text was given up.
    virtual void textComposed(std::string text) = 0;

    virtual void rowClicked(int row, ClickModifiers held) = 0;
    virtual void rowDoubleClicked(int row) = 0;

    /// The menu of a row is wanted: the cursor goes there. The marks stay.
    virtual void moveCursorTo(int row) = 0;

    /// A second click on the name under the cursor: the field opens unless something else is done within `delay`, in
    /// which the click may prove to be half of a double click.
    virtual void scheduleRename(int row, std::chrono::milliseconds delay) = 0;

    enum class NameEnd { committed, cancelled };

    /// The field of the name has lost the keyboard, or the edit is called off. The operation refuses a name that cannot
    /// be.
    virtual void endRename(NameEnd how) = 0;

    /// Return in the field of the name. A name that cannot be stays to be corrected.
    virtual void confirmName() = 0;

    /// Goes where a typed path leads, see TypedPath. A text that leads nowhere goes back to the field, and the status
    /// line or the strip says why.
    virtual void goToTyped(std::string text) = 0;

    /// Has a typed path completed, from a listing that is cached if there is one. No connection begins for it. A later
    /// call supersedes it.
    virtual void completePath(std::string text) = 0;

    /// Goes to the folder above that so many components of the path lead to. The cursor is on the next component.
    virtual void goToPart(int components) = 0;

    /// An action was chosen in the strip.
    virtual void noticeActionChosen(PaneNotice::Action action) = 0;

    /// The view got the keyboard.
    virtual void activated() = 0;

    virtual void connectionMenuWanted() = 0;
    virtual void connectionPicked(ConnectionItem const &item) = 0;
};

} // namespace tw
