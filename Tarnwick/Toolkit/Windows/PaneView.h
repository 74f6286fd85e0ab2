#pragma once

#include "Tarnwick/Panes/PaneController.h"
#include "Tarnwick/Toolkit/Table/PaneIcons.h"
#include "Tarnwick/Toolkit/Table/PaneTableModel.h"

#include <QWidget>

#include <array>
#include <functional>

namespace tw {

class ConnectionButton;
class ElidedLabel;
class NoticeStrip;
class PaneTableView;
class PathField;

/// One pane on screen: the connection and the path, the strip of notices, the table and the status line.
///
/// Lifetime: `defaults` and `icons` outlive it.
class PaneView final : public QWidget, private PaneDisplay {
public:
    PaneView(std::shared_ptr<PaneController> pane, Defaults &defaults, PaneIcons &icons, QWidget *parent = nullptr);
    ~PaneView() override;

    /// Shows another pane instead.
    void showPane(std::shared_ptr<PaneController> pane);

    PaneTableView &table() const { return *rowTable; }

    PathField &pathField() const { return *path; }

    ConnectionButton &connectionButton() const { return *connection; }

    NoticeStrip &noticeStrip() const { return *notices; }

    ElidedLabel &statusLine() const { return *status; }

    /// In place of the status line, as long as something is dragged over the pane; empty: not any more.
    void showDropWords(Text const &words);

    /// The mouse draws a row, or all that are marked.
    std::function<void()> onDragWanted;

    /// The rows have been replaced.
    std::function<void()> onRowsReloaded;

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    Visibility visibility() const override;
    void reloadRows() override;
    void redrawRows() override;
    void showCursor(std::optional<int> row) override;
    int firstVisibleRow() const override;
    void scrollToFirstVisibleRow(int row) override;
    int wholeVisibleRows() const override;
    void showConnection(std::string const &name) override;
    void openConnectionMenu(std::vector<ConnectionItem> items) override;
    void updateConnectionMenu(std::vector<ConnectionItem> items) override;
    void showPath(Text const &shown) override;
    void showStatus(Text const &text) override;
    void editPath() override;
    void returnTyped(std::string const &text) override;
    void showCompletion(PathCompletion const &completion) override;
    void showNotice(std::optional<PaneNotice> const &notice) override;
    void offerNotice() override;
    void showSpinner(Spinner spinner) override;
    void showSortIndicator(SortKey key, bool ascending) override;
    void showActive(bool active) override;
    void takeKeyboardFocus() override;
    void showNameField(NameField const &field) override;
    std::string textOfNameField() const override;
    void hideNameField() override;
    void endComposition(Composition how) override;
    void beep() override;

    void layOut();
    void connectTable();
    void connectPathField();
    void connectButton();
    void connectNotices();
    void watchMouse();
    bool goWithMouse(Qt::MouseButton button);
    void actOnNotice(PaneNotice::Action action);
    void notePainted();
    void adoptFontSize();
    void adoptColumns();

    std::shared_ptr<PaneController> controller;
    Defaults &settings;
    std::array<Defaults::Subscription, 2> observations;
    PaneTableModel rows;
    ConnectionButton *const connection;
    PathField *const path;
    NoticeStrip *const notices;
    PaneTableView *const rowTable;
    ElidedLabel *const status;
    QString statusText;
    QString dropWords; ///< over the status text
    bool isActive = false;
    std::string paintedPath; ///< of the listing that was last seen on screen
};

} // namespace tw
