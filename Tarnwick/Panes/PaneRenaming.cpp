// How a name is edited in its row.

#include "Tarnwick/Panes/PaneController.h"
#include "Tarnwick/Panes/PaneStatus.h"
#include "Tarnwick/Table/NewName.h"

namespace tw {

void PaneController::beginRename()
{
    if (isRenaming())
        return;
    search.settle();
    auto const *const entry = cursor.row() ? rows.entry(*cursor.row()) : nullptr;
    if (!entry) {
        display->beep();
        return;
    }
    endTyping();
    renaming.emplace(std::string(cursorName()), Fmt::IsDirectory{entry->isDirectory()});
    holdRefreshes();
    display->takeKeyboardFocus();
    display->showNameField({.row = *cursor.row(), .text = renaming->original(), .base = renaming->base()});
}

void PaneController::scheduleRename(int row, std::chrono::milliseconds delay)
{
    pendingRename.cancel();
    if (row != cursor.row() || !rows.entry(row))
        return;
    nameToEdit = cursorName();
    pendingRename.set(delay);
}

void PaneController::beginScheduledRename()
{
    if (cursorName() == nameToEdit)
        beginRename();
}

void PaneController::confirmName()
{
    if (!isRenaming())
        return;
    auto const name = renaming->newName(display->textOfNameField());
    auto const objection = name ? objectionToNewName(*name) : std::nullopt;
    if (objection) {
        display->beep();
        showStatus(PaneStatus::warning(Text::ofWords(*objection)));
        return;
    }
    endRename(NameEnd::committed);
}

void PaneController::endRename(NameEnd how)
{
    auto const edit = std::exchange(renaming, std::nullopt);
    if (!edit)
        return;
    auto const name = how == NameEnd::committed ? edit->newName(display->textOfNameField()) : std::nullopt;
    display->hideNameField();
    if (name && callbacks.onRenameRequested)
        callbacks.onRenameRequested(edit->original(), *name);
    applyDeferredRefresh();
}

void PaneController::endTyping()
{
    pendingRename.cancel();
    endRename(NameEnd::committed);
    search.end();
}

} // namespace tw
