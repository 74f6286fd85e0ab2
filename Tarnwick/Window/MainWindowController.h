#pragma once

#include "Tarnwick/Connections/Connections.h"
#include "Tarnwick/Editing/EditSessions.h"
#include "Tarnwick/Operations/CopiedPath.h"
#include "Tarnwick/Operations/OpenFile.h"
#include "Tarnwick/Operations/OperationContext.h"
#include "Tarnwick/Operations/TransferJob.h"
#include "Tarnwick/Panes/PaneController.h"
#include "Tarnwick/Panes/PaneSpec.h"
#include "Tarnwick/Preview/PreviewController.h"
#include "Tarnwick/Session/SessionMemory.h"
#include "Tarnwick/Settings/PaneSide.h"
#include "Tarnwick/Viewer/ViewerController.h"
#include "Tarnwick/Window/DropHover.h"
#include "Tarnwick/Window/MainDisplay.h"
#include "Tarnwick/Window/PaneContainer.h"
#include "Tarnwick/Window/WindowServices.h"

#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tw {

/// The point where a command, however it was given, meets the pane that it acts on.
///
/// Threads: main context only.
/// Lifetime: outlives its display and the panes' views; the connections outlive it.
class MainWindowController {
public:
    /// `memory` may be null: nothing is remembered.
    MainWindowController(PaneController::Collaborators collaborators, Connections &connections,
                         std::shared_ptr<SessionMemory> memory = nullptr, WindowServices services = {});

    /// Opens the tabs of both sides: what the command line asked for, else what was open last time, else the home
    /// directory.
    void start(PaneSpec::Sides const &sides);

    void attach(MainDisplay &display);

    /// What previews are read with from now on. Before, there are none.
    void usePreviews(std::shared_ptr<PreviewLoader> loader);

    /// The file at a path of a place, as a viewer reads it.
    using FileToView =
        std::function<std::shared_ptr<ViewedFile>(std::shared_ptr<FileSystemReader> place, std::string path)>;

    /// What viewers read files and decode images with from now on. Before, there are none.
    void useViewers(FileToView opening, PictureReading::Decode decode)
    {
        fileToView = std::move(opening);
        decodePicture = std::move(decode);
    }

    /// Null before `usePreviews`.
    std::shared_ptr<PreviewController> const &preview() const noexcept { return previews; }

    PaneContainer &container(PaneSide side) const;

    /// The pane of a side that is on show.
    std::shared_ptr<PaneController> const &pane(PaneSide side) const { return container(side).activePane(); }

    /// What is dragged over a side.
    DropHover &drops(PaneSide side) const;

    /// What makes copies of the operands for other programs. Null: they are files of this machine.
    std::shared_ptr<DragFetch> fetchForDrag(PaneSide side) const;

    PaneSide activeSide() const noexcept { return active; }

    PaneController &activePane() const { return *pane(active); }

    void setActive(PaneSide side);

    /// Puts a pane on a connection and a path: on the place where the connection was left, if no path was asked for.
    /// The pane's strip says why a host cannot be reached.
    void open(PaneSpec destination, std::shared_ptr<PaneController> const &pane);

    /// Opens a place in a new tab, which shows: of the active side, if none is named.
    void openInNewTab(PaneSpec const &place, std::optional<PaneSide> side);

    /// Has everything that is to be remembered in the settings.
    void rememberAll();

    /// The machine has slept: folders of hosts that are on show are read again, others when they are shown.
    void revalidateAfterWake();

    /// The program has come to the front: the folders on show may have been changed by another one meanwhile.
    void checkForChanges();

    /// Lists the connections to choose from beside a pane, which becomes the active one.
    ///
    /// The menu is there at once with the hosts that were known last, so that the keys that follow are its own and a
    /// slow disk holds up nothing, and is completed when the file has been read anew.
    void openConnectionMenu(PaneSide side);

    /// What was chosen from that menu.
    void pickConnection(ConnectionItem const &item, PaneSide side);

    /// Starts an operation on what the active pane shows. A pane that shows nothing yet has nothing to work on.
    void start(Operation operation);

    /// The file under the cursor of the active pane; nothing for a folder and the parent row.
    std::optional<FileToOpen> fileAtCursor() const;

    /// Asks what to open the file under the cursor with.
    void cmdOpenWith();

    /// False in a program that opens nothing.
    bool canEdit() const { return services.opening.applications != nullptr; }

    /// Opens the file under the cursor in an editor; what is saved there goes back to where the file lies.
    void cmdEdit();

    /// The user's own editor in a terminal takes the place of the application.
    bool editsInTerminal() const;
    void cmdToggleEditInTerminal();

    /// Those files of hosts; null: they cannot be edited.
    std::shared_ptr<EditSessions> const &edits() const noexcept { return services.opening.edits; }

    /// Opens the file under the cursor with an application.
    void openAtCursorWith(std::string application);

    /// What the menu over the file under the cursor offers. `found` is called when it is known, and not if nothing is.
    void listApplicationsAtCursor(std::function<void(std::vector<Application>)> found) const;

    void cmdConnect();
    void cmdRefresh();
    void cmdBack();
    void cmdForward();
    void cmdEditPath();
    void cmdSwapPanes();
    void cmdEqualizePanes();
    void cmdCustomizeToolBar();
    bool hasBackgroundWork() const;
    void cmdBackgroundWork();
    void cmdCustomizeColumns();
    void cmdToggleHidden();
    bool refreshesItself() const;
    void cmdToggleAutoRefresh();
    void cmdNewTab();

    /// The last tab of a side takes the window with it.
    void cmdCloseTab();
    void cmdCloseOtherTabs();
    void cmdNextTab();
    void cmdPreviousTab();

    /// Counted from 1. A number without a tab changes nothing.
    void selectTabByNumber(int number);
    void cmdMarkAll();
    void cmdUnmarkAll();
    void cmdInvertMarks();
    void cmdRename();

    /// Puts the operands of the active pane on the clipboard. They stay where they are until they are pasted, and look
    /// like it if they were cut.
    void cmdClipboardCut();
    void cmdClipboardCopy();

    /// Into the folder of the active pane.
    void cmdClipboardPaste();
    void cmdMinimizeWindow();

    /// On a file, or on what may be one.
    bool canView() const;

    /// Opens a viewer on the file under the cursor. The status line says why there is none.
    void cmdView();
    bool canPreview() const;
    void cmdPreview();

    /// The other pane goes to the path of the active one, on the connection that it has.
    void cmdTargetIsSource();

    /// Of the rows, in both panes; kept within the bounds of the setting.
    void cmdChangeTextSize(double by);
    void cmdUsualTextSize();

    /// Puts the paths of the marked files, else of the one under the cursor, on the clipboard, one a line.
    void copyPaths(CopiedPath::Style style);

private:
    /// Nothing before the first reading.
    using KnownHosts = std::optional<std::vector<std::string>>;

    using WeakPanes = std::array<std::weak_ptr<PaneController>, 2>;

    void putOnClipboard(TransferKind kind);
    void showCut(std::shared_ptr<CutFiles const> files);
    std::unique_ptr<PaneContainer> makeContainer(PaneSide side);
    void wire(PaneController &pane, PaneSide side);
    void restore(PaneSide side, std::optional<PaneSpec> const &override);
    void rememberSides();
    void followPreview();
    PaneSide sideOfPreview() const;
    std::unique_ptr<DropHover> makeDrops(PaneSide side);
    void accept(DropHover::Drop const &drop);
    static Task<void> delivering(OperationContext context, DropHover::Drop const &drop);
    void openFile(std::shared_ptr<PaneController> const &pane, std::string const &path);
    void view(PaneController &pane, Operands const &where, FileToOpen const &file) const;
    void rereadAfterUploads();
    OperationContext contextOf(std::shared_ptr<PaneController> const &pane) const;
    void readHosts();
    static Task<void> completeMenus(Task<std::vector<std::string>> reading, std::shared_ptr<KnownHosts> known,
                                    WeakPanes panes);

    PaneController::Collaborators collaborators;
    Connections &sources;
    std::shared_ptr<SessionMemory> const memory;
    WindowServices const services;
    std::shared_ptr<CutFiles const> cut; ///< null: none
    /// The saved hosts between two openings of a menu, shared with the tasks that read them.
    std::shared_ptr<KnownHosts> const knownHosts = std::make_shared<KnownHosts>();
    std::array<std::unique_ptr<PaneContainer>, 2> containers; ///< both exist, but for the time of construction
    std::array<std::unique_ptr<DropHover>, 2> hovers;         ///< likewise; of the containers
    PaneSide active = PaneSide::left;
    bool hasStarted = false; ///< before, there is nothing to remember
    MainDisplay *window = nullptr;
    FileToView fileToView;
    PictureReading::Decode decodePicture;
    std::shared_ptr<PreviewController> previews;
};

} // namespace tw
