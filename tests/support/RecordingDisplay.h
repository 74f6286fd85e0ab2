#pragma once

#include "TWCore/Model/DisplayText.h"
#include "Tarnwick/Panes/PaneDisplay.h"
#include "Tarnwick/Table/NameField.h"

#include <string>

namespace tw::test {

/// A display that records what it is to show.
class RecordingDisplay final : public PaneDisplay {
public:
    Visibility watched = Visibility::visible;
    std::optional<int> cursorRow;
    int firstRow = 0;
    int wholeRows = 10;
    int reloads = 0;
    int redraws = 0;
    int beeps = 0;
    std::string connection;
    std::vector<ConnectionItem> menu; ///< of connections, as it was shown last
    int menuOpenings = 0;
    std::string path;
    int pathEdits = 0;     ///< how often the path was to be edited
    std::string typed;     ///< what went back to the path field
    std::string completed; ///< the last completion of a path
    std::string status;
    std::optional<PaneNotice> notice; ///< what the strip shows
    int noticeOffers = 0;             ///< how often its first action got the keyboard
    bool isSpinning = false;
    SortKey sortKey = SortKey::name;
    bool ascending = true;
    bool isActive = false;
    bool hasFocus = false;
    std::vector<Composition> compositionEnds;
    std::optional<NameField> nameField; ///< with the text that is typed into it

    Visibility visibility() const override { return watched; }

    void reloadRows() override { ++reloads; }

    void redrawRows() override { ++redraws; }

    void showCursor(std::optional<int> row) override { cursorRow = row; }

    int firstVisibleRow() const override { return firstRow; }

    void scrollToFirstVisibleRow(int row) override { firstRow = row; }

    int wholeVisibleRows() const override { return wholeRows; }

    void showConnection(std::string const &name) override { connection = withNothingHidden(name); }

    void openConnectionMenu(std::vector<ConnectionItem> items) override
    {
        ++menuOpenings;
        menu = std::move(items);
    }

    void updateConnectionMenu(std::vector<ConnectionItem> items) override { menu = std::move(items); }

    void showPath(Text const &text) override { path = onOneLine(text.english()); }

    void showStatus(Text const &text) override { status = onOneLine(text.english()); }

    void editPath() override { ++pathEdits; }

    void returnTyped(std::string const &text) override { typed = text; }

    void showCompletion(PathCompletion const &completion) override { completed = completion.text(); }

    void showNotice(std::optional<PaneNotice> const &shown) override { notice = shown; }

    void offerNotice() override { ++noticeOffers; }

    /// The words in the strip; empty without one.
    std::string noticeText() const { return notice ? onOneLine(notice->text.english()) : std::string(); }

    void showSpinner(Spinner spinner) override { isSpinning = spinner == Spinner::spinning; }

    void showSortIndicator(SortKey key, bool isAscending) override
    {
        sortKey = key;
        ascending = isAscending;
    }

    void showActive(bool active) override { isActive = active; }

    void takeKeyboardFocus() override { hasFocus = true; }

    void showNameField(NameField const &field) override { nameField = field; }

    std::string textOfNameField() const override { return nameField ? nameField->text : std::string(); }

    void hideNameField() override { nameField.reset(); }

    void endComposition(Composition how) override { compositionEnds.push_back(how); }

    void beep() override { ++beeps; }
};

} // namespace tw::test
