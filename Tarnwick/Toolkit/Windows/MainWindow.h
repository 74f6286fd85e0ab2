#pragma once

#include "Tarnwick/Toolkit/Table/PaneIcons.h"
#include "Tarnwick/Toolkit/Windows/QuitQuestion.h"
#include "Tarnwick/Window/MainWindowCommands.h"
#include "Tarnwick/Window/MainWindowController.h"

#include <QMainWindow>
#include <QPointer>

#include <functional>
#include <memory>
#include <string>

namespace tw {

class CommandActions;
class DragOut;
class EditStrip;
class LoginPrompter;
class PaneContainerView;
class PaneSplitter;
class PaneView;
class PreviewPanel;
class QtClipboard;
class SheetDialogs;
class JobList;
class JobStrip;
class ViewerWindow;

/// The window: two panes side by side, and the menus, buttons and keys of the commands.
///
/// Lifetime: `controller`, `defaults` and `program`, which performs the commands of the whole program, outlive it.
class MainWindow final : public QMainWindow, public CommandTarget, private MainDisplay {
public:
    MainWindow(MainWindowController &controller, Defaults &defaults, CommandTarget &program);
    ~MainWindow() override;

    MainWindow(MainWindow const &) = delete;
    MainWindow &operator=(MainWindow const &) = delete;

    PaneContainerView &side(PaneSide side) const { return side == PaneSide::left ? *left : *right; }

    /// The pane of a side that is on show.
    PaneView &pane(PaneSide side) const;

    /// The viewers that are open, the newest last.
    std::vector<ViewerWindow *> openViewers() const;

    PaneSplitter &divider() const { return *splitter; }

    /// Asks over this window.
    std::shared_ptr<LoginPrompter> loginPrompter() const;

    /// Work that was begun in this window.
    std::shared_ptr<JobList> const &works() const noexcept { return workList; }

    JobStrip &jobStrip() const { return *strip; }

    /// Null if files of hosts cannot be edited.
    EditStrip *editStrip() const { return editing.get(); }

    /// Null if the controller has no previews.
    PreviewPanel *previewPanel() const { return panel; }

    /// Goes on with `quit` at once, or once the user agrees that it ends the work under way. Asked again meanwhile, it
    /// changes nothing.
    void askToQuit(std::function<void()> quit);

    /// From now on the window closes without a question.
    void letClose() { quitting.letClose(); }

    /// Files that are dragged out of this window.
    DragOut &drag() const { return *dragging; }

    std::optional<CommandState> stateOf(Command command) const override;
    void perform(Command command) override;

protected:
    void showEvent(QShowEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    void changeEvent(QEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;

private:
    void equalizePanes() override;
    void closeWindow() override;
    void minimizeWindow() override;
    void customizeToolBar() override;
    bool hasBackgroundWork() const override;
    void goToBackgroundWork() override;
    void customizeColumns() override;
    void copyText(std::string const &text) override;
    void openViewer(std::shared_ptr<ViewerController> viewer) override;
    std::shared_ptr<Clipboard> clipboard() override;
    std::shared_ptr<Dialogs> dialogs() override;
    bool performInTextField(Command command);

    void openMenuBar();
    void fillOpenWithMenu(QMenu &menu) const;
    void openContextMenu(PaneSide side, QContextMenuEvent const &event);
    void buildPanes();
    void buildCommands();
    void buildToolBar();
    void place();
    void placeDivider();
    void rememberPlace();

    MainWindowController &panes;
    MainWindowCommands commands;
    Defaults &settings;
    CommandActions *const actions;
    std::shared_ptr<JobList> const workList;
    std::shared_ptr<SheetDialogs> const sheets;
    std::shared_ptr<QtClipboard> const clips;
    PaneIcons icons;
    QuitQuestion quitting;
    std::unique_ptr<DragOut> const dragging;
    PaneSplitter *const splitter;
    JobStrip *strip = nullptr;
    std::unique_ptr<EditStrip> editing; ///< may be a window of its own
    PaneContainerView *left = nullptr;
    PaneContainerView *right = nullptr;
    PreviewPanel *panel = nullptr; ///< lies over one of the two
    bool isDividerPlaced = false;
    std::vector<QPointer<QWidget>> viewers; ///< windows of their own; null when they are closed
};

} // namespace tw
