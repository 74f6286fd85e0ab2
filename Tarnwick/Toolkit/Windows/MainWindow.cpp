#include "Tarnwick/Toolkit/Windows/MainWindow.h"

#include "Tarnwick/Settings/Settings.h"
#include "Tarnwick/Toolkit/Commands/CommandActions.h"
#include "Tarnwick/Toolkit/Commands/FunctionBar.h"
#include "Tarnwick/Toolkit/Diagnostics/StartLog.h"
#include "Tarnwick/Toolkit/Dialogs/SheetDialogs.h"
#include "Tarnwick/Toolkit/Widgets/PaneSplitter.h"
#include "Tarnwick/Toolkit/Windows/PaneView.h"

#include <QContextMenuEvent>
#include <QEvent>
#include <QMenu>
#include <QMenuBar>
#include <QScreen>
#include <QVBoxLayout>

namespace tw {

namespace {

constexpr QSize usualSize(1180, 720);

/// Two panes of the least width, and little more than a page of rows.
constexpr QSize leastSize(2 * PaneSplitter::leastSide + 1, 300);

} // namespace

MainWindow::MainWindow(MainWindowController &controller, Defaults &defaults, CommandTarget &program)
    : panes(controller),
      commands(controller),
      settings(defaults),
      actions(new CommandActions(*this, CommandScope::mainWindow, program)),
      sheets(std::make_shared<SheetDialogs>(*this)),
      splitter(new PaneSplitter(this))
{
    setWindowTitle(QStringLiteral("Tarnwick"));
    setMinimumSize(leastSize);
    buildPanes();
    buildCommands();
    place();
    panes.attach(*this);
}

void MainWindow::buildPanes()
{
    left = new PaneView(panes.pane(PaneSide::left), settings, icons, splitter);
    right = new PaneView(panes.pane(PaneSide::right), settings, icons, splitter);
    splitter->addPane(left);
    splitter->addPane(right);
    splitter->onDividerDoubleClicked = [this] { splitter->equalize(); };
}

void MainWindow::buildCommands()
{
    actions->onRefused = [this] { panes.activePane().refuse(); };
    actions->fill(*menuBar());
    auto *const all = new QWidget(this);
    auto *const column = new QVBoxLayout(all);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(splitter, 1);
    column->addWidget(new FunctionBar(*actions, all));
    setCentralWidget(all);
    sheets->sheets().setActions(actions->everywhere());
}

void MainWindow::place()
{
    resize(usualSize);
    auto const stored = QByteArray::fromStdString(Settings::windowGeometry.read(settings));
    if (restoreGeometry(QByteArray::fromBase64(stored)))
        return;
    auto const free = screen()->availableGeometry();
    resize(usualSize.boundedTo(free.size()));
    move(free.center() - rect().center());
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
    sheets->sheets().close();
    rememberPlace();
    QMainWindow::closeEvent(event);
}

void MainWindow::changeEvent(QEvent *event)
{
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::ThemeChange) {
        icons.clear();
        update();
    }
}

/// A click beside the panes has no menu; a key has that of the active pane.
void MainWindow::contextMenuEvent(QContextMenuEvent *event)
{
    for (auto const side : {PaneSide::left, PaneSide::right}) {
        auto &view = pane(side);
        if (!view.rect().contains(view.mapFrom(this, event->pos())))
            continue;
        panes.setActive(side);
        panes.activePane().takeKeyboardFocus();
        actions->contextMenu(this)->popup(event->globalPos());
        event->accept();
        return;
    }
}

void MainWindow::equalizePanes()
{
    splitter->equalize();
}

void MainWindow::closeWindow()
{
    close();
}

std::shared_ptr<LoginPrompter> MainWindow::loginPrompter() const
{
    return sheets;
}

std::shared_ptr<Dialogs> MainWindow::dialogs()
{
    return sheets;
}

} // namespace tw
