// How a name is found by typing it.

#include "Tarnwick/Panes/PaneController.h"

namespace tw {

namespace {

/// A search that has rested for this long is over: the next letter begins another.
constexpr std::chrono::seconds searchLasts{3};

} // namespace

bool PaneController::typeToSearch(KeyPress const &key)
{
    auto const isPrintable =
        !key.text.empty() && static_cast<unsigned char>(key.text.front()) >= ' ' && key.text.front() != '\x7F';
    if (key.control || key.alt || key.meta || !isPrintable)
        return false;
    textTyped(key.text);
    return true;
}

bool PaneController::deleteFromSearch()
{
    if (!search.deleteBeforeCaret())
        return false;
    search.isEmpty() ? leaveSearch() : applySearch();
    return true;
}

void PaneController::textTyped(std::string_view text)
{
    wasTouched = true;
    search.compose({});
    search.insert(text);
    applySearch();
}

void PaneController::textComposed(std::string text)
{
    if (text.empty() && search.composing().empty())
        return;
    wasTouched = true;
    search.compose(std::move(text));
    // A text that the person has given up leaves nothing to search for.
    search.isEmpty() ? leaveSearch() : applySearch();
}

void PaneController::takeComposition()
{
    display->endComposition(Composition::committed); // an input method reports what it had by textTyped
    search.commitComposing();
}

void PaneController::applySearch()
{
    searchExpiry.set(searchLasts);
    if (!rows.snapshot())
        return;
    if (search.committed().empty()) {
        showStatus({"search: %@", {search.composing()}});
        return;
    }
    auto const found = rows.findRow(search.committed(), cursor.row().value_or(0));
    if (!found) {
        display->beep();
        showStatus({"search: %@   (no match)", {search.shown()}});
        return;
    }
    cursor.moveTo(*found);
    cursorMoved();
    showStatus({"search: %@", {search.shown()}});
}

void PaneController::endSearch()
{
    if (isSearching())
        leaveSearch();
}

void PaneController::leaveSearch()
{
    searchExpiry.cancel();
    auto const wasComposing = !search.composing().empty();
    search.clear();
    rows.endFinding();
    if (wasComposing)
        display->endComposition(Composition::discarded);
    refreshStatus();
}

} // namespace tw
