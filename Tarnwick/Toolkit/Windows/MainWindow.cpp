#include "Tarnwick/Toolkit/Windows/MainWindow.h"

#include "Tarnwick/Settings/Settings.h"
#include "Tarnwick/Toolkit/Program/StartLog.h"
#include "Tarnwick/Toolkit/Widgets/PaneSplitter.h"
#include "Tarnwick/Toolkit/Windows/PaneView.h"

#include <QAction>
#include <QEvent>
#include <QScreen>

namespace tw {

namespace {

constexpr QSize usualSize(1180, 720);

/// Two panes of the least width, and little more than a page of rows.
constexpr QSize leastSize(2 * PaneSplitter::leastSide + 1, 300);

} // namespace

MainWindow::MainWindow(MainWindowController &controller, Defaults &defaults)
    : commands(controller), settings(defaults), splitter(new PaneSplitter(this))
{
    setWindowTitle(QStringLiteral("Tarnwick"));
    setMinimumSize(leastSize);
    setContextMenuPolicy(Qt::NoContextMenu);
    buildPanes();
    buildCommands();
    place();
    commands.attach(*this);
}

void MainWindow::buildPanes()
{
    left = new PaneView(commands.pane(PaneSide::left), settings, icons, splitter);
    right = new PaneView(commands.pane(PaneSide::right), settings, icons, splitter);
    splitter->addPane(left);
    splitter->addPane(right);
    splitter->onDividerDoubleClicked = [this] { commands.cmdEqualizePanes(); };
    setCentralWidget(splitter);
}

void MainWindow::buildCommands()
{
    using Commands = MainWindowController;
    addCommand(QStringLiteral("Refresh"), {Qt::CTRL | Qt::Key_R}, &Commands::cmdRefresh);
    // The second is what the first becomes on keyboards on which Shift makes another sign of the full stop.
    addCommand(QStringLiteral("Show Hidden Files"),
               {Qt::CTRL | Qt::SHIFT | Qt::Key_Period, Qt::CTRL | Qt::SHIFT | Qt::Key_Greater},
               &Commands::cmdToggleHidden);
    addCommand(QStringLiteral("Connect…"), {Qt::CTRL | Qt::Key_K}, &Commands::cmdConnect);
    addCommand(QStringLiteral("Equal Panes"), {Qt::CTRL | Qt::Key_Backslash}, &Commands::cmdEqualizePanes);
    addCommand(QStringLiteral("Close Window"), {Qt::CTRL | Qt::Key_W}, &Commands::cmdCloseWindow);
    addAction(QStringLiteral("About Tarnwick"), {Qt::Key_F1}, [this] { onAbout(); });
    // In every window of the program, since it is about the program.
    addAction(QStringLiteral("Quit Tarnwick"), {Qt::CTRL | Qt::Key_Q}, [this] {
        onQuit();
    })->setShortcutContext(Qt::ApplicationShortcut);
}

void MainWindow::addCommand(QString const &title, QList<QKeySequence> const &keys,
                            void (MainWindowController::*command)())
{
    addAction(title, keys, [this, command] { (commands.*command)(); });
}

QAction *MainWindow::addAction(QString const &title, QList<QKeySequence> const &keys, std::function<void()> run)
{
    auto *const action = new QAction(title, this);
    action->setShortcuts(keys);
    connect(action, &QAction::triggered, this, std::move(run));
    QMainWindow::addAction(action);
    return action;
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

void MainWindow::equalizePanes()
{
    splitter->equalize();
}

void MainWindow::closeWindow()
{
    close();
}

} // namespace tw
