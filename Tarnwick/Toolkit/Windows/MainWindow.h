#pragma once

#include "Tarnwick/Toolkit/Table/PaneIcons.h"
#include "Tarnwick/Window/MainWindowController.h"

#include <QMainWindow>

namespace tw {

class PaneSplitter;
class PaneView;

/// The window: two panes side by side, and the keys of the commands.
///
/// Lifetime: `controller` and `defaults` outlive it.
class MainWindow final : public QMainWindow, private MainDisplay {
public:
    MainWindow(MainWindowController &controller, Defaults &defaults);

    PaneView &pane(PaneSide side) const { return side == PaneSide::left ? *left : *right; }

    PaneSplitter &divider() const { return *splitter; }

    /// The user wants to know what this program is.
    std::function<void()> onAbout = [] {};

    /// The user wants the program to end, whatever windows it has.
    std::function<void()> onQuit = [] {};

protected:
    void showEvent(QShowEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void equalizePanes() override;
    void closeWindow() override;

    void buildPanes();
    void buildCommands();
    void addCommand(QString const &title, QList<QKeySequence> const &keys, void (MainWindowController::*command)());
    QAction *addAction(QString const &title, QList<QKeySequence> const &keys, std::function<void()> run);
    void place();
    void placeDivider();
    void rememberPlace();

    MainWindowController &commands;
    Defaults &settings;
    PaneIcons icons;
    PaneSplitter *const splitter;
    PaneView *left = nullptr;
    PaneView *right = nullptr;
    bool isDividerPlaced = false;
};

} // namespace tw
