#include "Tarnwick/Toolkit/Windows/MainWindow.h"

#include "Tarnwick/Settings/Settings.h"
#include "Tarnwick/Toolkit/Clipboard/QtClipboard.h"
#include "Tarnwick/Toolkit/Commands/CommandActions.h"
#include "Tarnwick/Toolkit/Commands/CommandToolBar.h"
#include "Tarnwick/Toolkit/Commands/FunctionBar.h"
#include "Tarnwick/Toolkit/Commands/ToolBarDialog.h"
#include "Tarnwick/Toolkit/Diagnostics/StartLog.h"
#include "Tarnwick/Toolkit/Dialogs/JobStrip.h"
#include "Tarnwick/Toolkit/Dialogs/SheetDialogs.h"
#include "Tarnwick/Toolkit/Editing/EditStrip.h"
#include "Tarnwick/Toolkit/Preview/PreviewPanel.h"
#include "Tarnwick/Toolkit/Table/ColumnsDialog.h"
#include "Tarnwick/Toolkit/Table/PaneTableView.h"
#include "Tarnwick/Toolkit/Viewer/ViewerWindow.h"
#include "Tarnwick/Toolkit/Widgets/PaneSplitter.h"
#include "Tarnwick/Toolkit/Windows/DragOut.h"
#include "Tarnwick/Toolkit/Windows/OpenWithMenu.h"
#include "Tarnwick/Toolkit/Windows/PaneContainerView.h"
#include "Tarnwick/Toolkit/Windows/PaneView.h"
#include "Tarnwick/Toolkit/Windows/WindowList.h"

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QEvent>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QScreen>
#include <QVBoxLayout>

namespace tw {

namespace {

constexpr QSize usualSize(1180, 720);

/// What a window manager puts around a window, at most. It is not known before the window is shown.
constexpr QSize roomForFrame(16, 48);

/// In the menu of the back button.
constexpr std::size_t mostVisitsInMenu = 15;

/// Two panes of the least width, and little more than a page of rows.
constexpr QSize leastSize(2 * PaneSplitter::leastSide + 1, 300);

ContextSubject subjectAt(PaneController const &pane, std::optional<int> row)
{
    auto const *const entry = row ? pane.model().entry(*row) : nullptr;
    using Row = ContextSubject::Row;
    return {.row = !entry                 ? Row::none
                   : entry->isDirectory() ? Row::folder
                                          : Row::file,
            .isLocal = pane.connectionName() == localConnection,
            .marked = pane.model().markedSummary().count};
}

std::optional<int> rowAt(PaneTableView const &table, QPoint onScreen)
{
    auto const place = table.viewport()->mapFromGlobal(onScreen);
    auto const row = table.viewport()->rect().contains(place) ? table.rowAt(place.y()) : -1;
    return row >= 0 ? std::optional(row) : std::nullopt;
}

/// On screen, below the beginning of the cursor's row; at the top of an empty table.
QPoint belowCursor(PaneTableView const &table)
{
    auto const &view = *table.viewport();
    auto const row = table.visualRect(table.currentIndex()) & view.rect();
    return view.mapToGlobal(row.isEmpty() ? QPoint() : row.bottomLeft());
}

} // namespace

MainWindow::MainWindow(MainWindowController &controller, Defaults &defaults, CommandTarget &program)
    : panes(controller),
      commands(controller),
      settings(defaults),
      actions(new CommandActions(*this, CommandScope::mainWindow, program)),
      workList(std::make_shared<JobList>()),
      sheets(std::make_shared<SheetDialogs>(*this, workList)),
      clips(std::make_shared<QtClipboard>()),
      quitting(
          workList, [this] { return panes.edits() ? panes.edits()->unsaved() : std::vector<std::string>(); },
          sheets->sheets(), *this),
      dragging(std::make_unique<DragOut>()),
      splitter(new PaneSplitter(this))
{
    setWindowTitle(QStringLiteral("Tarnwick"));
    setMinimumSize(leastSize);
    buildPanes();
    buildCommands();
    place();
    panes.attach(*this);
}

MainWindow::~MainWindow()
{
    clips->onOfferGone = nullptr; // somebody may still read the clipboard
    for (auto const &viewer : viewers)
        delete viewer.data();
}

void MainWindow::buildPanes()
{
    left = new PaneContainerView(panes.container(PaneSide::left), settings, icons, splitter);
    right = new PaneContainerView(panes.container(PaneSide::right), settings, icons, splitter);
    splitter->addPane(left);
    splitter->addPane(right);
    for (auto const each : {PaneSide::left, PaneSide::right}) {
        side(each).acceptDrops(panes.drops(each));
        pane(each).onDragWanted = [this, each] { dragging->run(panes, each, pane(each)); };
    }
    splitter->onDividerDoubleClicked = [this] { splitter->equalize(); };
    if (panes.preview())
        panel = new PreviewPanel(panes.preview(), [this](PaneSide which) { return &side(which); });
}

PaneView &MainWindow::pane(PaneSide which) const
{
    return side(which).pane();
}

void MainWindow::buildCommands()
{
    actions->onRefused = [this] { panes.activePane().refuse(); };
    actions->onOpenWithMenu = [this](QMenu &menu) { fillOpenWithMenu(menu); };
    actions->onWindowMenu = [this](QMenu &menu) {
        auto const others = openViewers();
        WindowList::fill(menu, *this, {others.begin(), others.end()});
    };
    actions->fill(*menuBar());
    buildToolBar();
    auto *const all = new QWidget(this);
    auto *const column = new QVBoxLayout(all);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(splitter, 1);
    strip = new JobStrip(workList, all);
    strip->onLeave = [this] { panes.activePane().takeKeyboardFocus(); };
    if (panes.edits()) {
        editing = std::make_unique<EditStrip>(panes.edits(), EditStrip::usualPlace(), all);
        editing->onLeave = [this] {
            activateWindow();
            panes.activePane().takeKeyboardFocus();
        };
        if (!editing->isWindow())
            column->addWidget(editing.get());
    }
    column->addWidget(strip);
    column->addWidget(new FunctionBar(*actions, all));
    setCentralWidget(all);
    sheets->sheets().setActions(actions->everywhere());
}

void MainWindow::buildToolBar()
{
    auto *const bar = new CommandToolBar(*actions, settings, this);
    bar->recentVisits = [this] { return panes.activePane().recentVisits(mostVisitsInMenu); };
    bar->onVisitPicked = [this](PaneHistory::Visit const &visit) { panes.activePane().goToVisit(visit); };
    addToolBar(bar);
}

void MainWindow::place()
{
    resize(usualSize);
    auto const stored = QByteArray::fromStdString(Settings::windowGeometry.read(settings));
    if (restoreGeometry(QByteArray::fromBase64(stored)))
        return;
    auto const free = screen()->availableGeometry();
    resize(usualSize.boundedTo(free.size() - roomForFrame));
    move(free.center() - QRect({}, size() + roomForFrame).center());
}

void MainWindow::placeDivider()
{
    if (auto const share = Settings::leftShare.read(settings))
        splitter->setLeftShare(*share);
    else
        splitter->equalize();
}

void MainWindow::rememberPlace()
{
    Settings::windowGeometry.write(settings, saveGeometry().toBase64().toStdString());
    Settings::leftShare.write(settings, splitter->leftShare());
}

void MainWindow::showEvent(QShowEvent *event)
{
    QMainWindow::showEvent(event);
    if (isDividerPlaced)
        return;
    // Only now is the splitter as wide as it will be.
    isDividerPlaced = true;
    placeDivider();
    StartLog::note(QStringLiteral("window shown"));
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    if (dragging->isRunning()) {
        event->ignore();
        dragging->endBefore([this] { close(); });
        return;
    }
    if (quitting.isNeeded()) {
        event->ignore();
        askToQuit([this] { close(); });
        return;
    }
    workList->cancelAll();
    sheets->sheets().close();
    rememberPlace();
    QMainWindow::closeEvent(event);
}

void MainWindow::askToQuit(std::function<void()> quit)
{
    quitting.ask(std::move(quit));
}

void MainWindow::changeEvent(QEvent *event)
{
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::ThemeChange) {
        icons.clear();
        update();
    }
}

void MainWindow::contextMenuEvent(QContextMenuEvent *event)
{
    // A click beside the panes has no menu; a key has that of the active pane.
    if (event->reason() == QContextMenuEvent::Keyboard)
        return openContextMenu(panes.activeSide(), *event);
    for (auto const side : {PaneSide::left, PaneSide::right}) {
        auto const &view = pane(side);
        if (view.rect().contains(view.mapFrom(this, event->pos())))
            return openContextMenu(side, *event);
    }
}

void MainWindow::fillOpenWithMenu(QMenu &menu) const
{
    panes.listApplicationsAtCursor([this, open = QPointer(&menu)](std::vector<Application> const &applications) {
        if (open)
            OpenWithMenu::fill(*open, applications,
                               [this](std::string const &chosen) { panes.openAtCursorWith(chosen); });
    });
}

void MainWindow::openContextMenu(PaneSide side, QContextMenuEvent const &event)
{
    panes.setActive(side);
    panes.activePane().takeKeyboardFocus();
    auto const &table = pane(side).table();
    auto const isByKey = event.reason() == QContextMenuEvent::Keyboard;
    auto const row = isByKey ? panes.activePane().cursorRow() : rowAt(table, event.globalPos());
    if (row)
        panes.activePane().moveCursorTo(*row);
    auto const where = isByKey ? belowCursor(table) : event.globalPos();
    actions->contextMenu(subjectAt(panes.activePane(), row), this)->popup(where);
}

std::optional<CommandState> MainWindow::stateOf(Command command) const
{
    auto const isOfText = command == Command::clipboardCut || command == Command::clipboardCopy;
    if (command == Command::contextMenu || (isOfText && qobject_cast<QLineEdit *>(focusWidget())))
        return CommandState{};
    if (command == Command::openMenuBar)
        return CommandState{.isEnabled = menuBar()->isVisible()}; // a desktop may show it elsewhere
    return commands.stateOf(command);
}

void MainWindow::perform(Command command)
{
    if (command == Command::openMenuBar)
        return openMenuBar();
    if (performInTextField(command))
        return;
    if (command != Command::contextMenu)
        return commands.perform(command);
    // Of what has the keyboard: a text field has a menu of its own.
    auto *const focused = focusWidget() ? focusWidget() : this;
    auto const middle = focused->rect().center();
    QContextMenuEvent wish(QContextMenuEvent::Keyboard, middle, focused->mapToGlobal(middle));
    QApplication::sendEvent(focused, &wish);
}

void MainWindow::openMenuBar()
{
    auto *const first = menuBar()->actions().front();
    menuBar()->setActiveAction(first);
    first->menu()->setActiveAction(first->menu()->actions().front());
}

/// A text field has the keys of the clipboard itself; here it gets the items of the menu.
bool MainWindow::performInTextField(Command command)
{
    auto *const field = qobject_cast<QLineEdit *>(focusWidget());
    if (!field)
        return false;
    if (command == Command::clipboardCut)
        field->cut();
    else if (command == Command::clipboardCopy)
        field->copy();
    else if (command == Command::clipboardPaste)
        field->paste();
    else
        return false;
    return true;
}

void MainWindow::equalizePanes()
{
    splitter->equalize();
}

void MainWindow::closeWindow()
{
    close();
}

void MainWindow::customizeToolBar()
{
    auto *const dialog = new ToolBarDialog(ToolBarLayout::stored(Settings::toolBar.read(settings)), this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->onAccepted = [this](ToolBarLayout const &layout) { Settings::toolBar.write(settings, layout.text()); };
    dialog->open();
}

void MainWindow::customizeColumns()
{
    auto *const dialog = new ColumnsDialog(Settings::columns.read(settings), this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->onAccepted = [this](std::string const &choices) { Settings::columns.write(settings, choices); };
    dialog->open();
}

bool MainWindow::hasBackgroundWork() const
{
    return !workList->inBackground().empty() || (editing && !editing->isHidden());
}

void MainWindow::goToBackgroundWork()
{
    if (!strip->takeKeyboard() && editing)
        editing->takeKeyboard();
}

void MainWindow::minimizeWindow()
{
    showMinimized();
}

void MainWindow::copyText(std::string const &text)
{
    QApplication::clipboard()->setText(QString::fromStdString(text));
}

void MainWindow::openViewer(std::shared_ptr<ViewerController> viewer)
{
    std::erase(viewers, nullptr);
    auto *const shown = new ViewerWindow(std::move(viewer), settings);
    shown->addActions(actions->everywhere());
    viewers.emplace_back(shown);
    shown->QWidget::show();
    shown->activateWindow();
}

std::vector<ViewerWindow *> MainWindow::openViewers() const
{
    std::vector<ViewerWindow *> open;
    for (auto const &each : viewers) {
        if (each)
            open.push_back(static_cast<ViewerWindow *>(each.data()));
    }
    return open;
}

std::shared_ptr<LoginPrompter> MainWindow::loginPrompter() const
{
    return sheets;
}

std::shared_ptr<Clipboard> MainWindow::clipboard()
{
    return clips;
}

std::shared_ptr<Dialogs> MainWindow::dialogs()
{
    return sheets;
}

} // namespace tw
