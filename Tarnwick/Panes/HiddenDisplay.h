#pragma once

#include "Tarnwick/Panes/PaneDisplay.h"
#include "Tarnwick/Table/NameField.h"

namespace tw {

/// What a pane shows on while it has no view, so that no call has to ask. It keeps the scroll position for the next
/// one.
class HiddenDisplay final : public PaneDisplay {
public:
    Visibility visibility() const override { return Visibility::hidden; }

    void reloadRows() override {}

    void redrawRows() override {}

    void showCursor(std::optional<int> /*row*/) override {}

    int firstVisibleRow() const override { return firstRow; }

    void scrollToFirstVisibleRow(int row) override { firstRow = row; }

    int wholeVisibleRows() const override { return 1; }

    void showConnection(std::string const & /*name*/) override {}

    void openConnectionMenu(std::vector<ConnectionItem> /*items*/) override {}

    void updateConnectionMenu(std::vector<ConnectionItem> /*items*/) override {}

    void showPath(Text const & /*path*/) override {}

    void showStatus(Text const & /*text*/) override {}

    void editPath() override {}

    void returnTyped(std::string const & /*text*/) override {}

    void showCompletion(PathCompletion const & /*completion*/) override {}

    void showNotice(std::optional<PaneNotice> const & /*notice*/) override {}

    void offerNotice() override {}

    void showSpinner(Spinner /*spinner*/) override {}

    void showSortIndicator(SortKey /*key*/, bool /*ascending*/) override {}

    void showActive(bool /*active*/) override {}

    void takeKeyboardFocus() override {}

    void showNameField(NameField const & /*field*/) override {}

    std::string textOfNameField() const override { return {}; }

    void hideNameField() override {}

    void endComposition(Composition /*how*/) override {}

    void beep() override {}

private:
    int firstRow = 0;
};

} // namespace tw
