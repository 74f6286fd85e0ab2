#include "tests/ui/WindowTest.h"

#include "TWEngine/Transfer/TransferEngine.h"
#include "Tarnwick/Preview/FilePreviews.h"
#include "Tarnwick/Settings/Settings.h"
#include "Tarnwick/Toolkit/Notices/NoticeStrip.h"
#include "Tarnwick/Toolkit/Widgets/ElidedLabel.h"
#include "Tarnwick/Toolkit/Widgets/WrappedText.h"
#include "Tarnwick/Transfers/JobList.h"
#include "tests/ui/QtLoop.h"

#include <QApplication>
#include <QSignalSpy>
#include <QTest>

namespace tw::test {

WindowTest::WindowTest()
{
    Settings::autoRefresh.write(defaults, false); // rows change when a test has them changed
}

WindowTest::~WindowTest()
{
    close();
    auto isDone = false;
    auto const shutDown = [](ConnectionRegistry *registry, bool *done) -> Task<void> {
        co_await registry->giveUpAttempts();
        co_await registry->shutdownAll();
        *done = true;
    };
    spawn({mainContext.context(), {}}, shutDown(&connections, &isDone));
    processUntil([&] { return isDone; });
    // Others who waited for the same are behind it in the queue.
    while (mainContext.context()->runPending() > 0) {
    }
}

void WindowTest::open()
{
    controller = std::make_unique<MainWindowController>(
        PaneController::Collaborators{mainContext.context(), runtime.clock(), defaults}, connections, nullptr,
        WindowServices{.transfers = [this] { return std::make_shared<TransferEngine>(runtime, TransferTools::find()); },
                       .opening = opening});
    controller->usePreviews(std::make_shared<FilePreviews>(runtime, [this] { return scratch.path(); }));
    controller->useViewers([this](auto place, auto path) { return ViewedFile::at(runtime, std::move(place), path); },
                           PictureReading::decoder(runtime));
    window = std::make_unique<MainWindow>(*controller, defaults, program);
    window->show();
    window->activateWindow();
    controller->start({.left = PaneSpec{"local", left.path(), true}, .right = PaneSpec{"local", right.path(), true}});
    waitForPath(PaneSide::left, left.path());
    waitForPath(PaneSide::right, right.path());
    processUntil([this] { return table(PaneSide::left).hasFocus(); });
}

void WindowTest::close()
{
    if (window) {
        // What waits for a thread when the threads end is never freed.
        window->works()->cancelAll();
        processUntil([this] { return window->works()->underWay().empty(); });
        window->close();
    }
    window.reset();
    controller.reset();
}

void WindowTest::press(Qt::Key key, Qt::KeyboardModifiers modifiers)
{
    QTest::keyClick(QApplication::focusWidget(), key, modifiers);
    processPosted();
}

void WindowTest::waitForPath(PaneSide side, std::string const &path)
{
    processUntil([&] { return pane(side).model().snapshot() && pane(side).pathOnShow() == path; });
}

void WindowTest::waitForReload(PaneSide side, std::function<void()> const &trigger)
{
    QSignalSpy const reloads(table(side).model(), &QAbstractItemModel::modelReset);
    trigger();
    processUntil([&] { return reloads.count() > 0; });
}

std::string WindowTest::cursorName()
{
    return std::string(active().cursorName());
}

std::string WindowTest::status(PaneSide side)
{
    return window->pane(side).statusLine().text().toStdString();
}

std::string WindowTest::notice(PaneSide side)
{
    auto const &strip = window->pane(side).noticeStrip();
    return strip.isHidden() ? std::string() : strip.text().text().toStdString();
}

std::vector<std::string> WindowTest::shownNames(PaneSide side)
{
    std::vector<std::string> names;
    auto const &model = pane(side).model();
    for (int row = 0; row < model.rowCount(); ++row)
        names.emplace_back(model.entry(row) ? model.name(row) : "..");
    return names;
}

QPoint WindowTest::middleOf(int row, PaneColumn column)
{
    auto &view = table(PaneSide::left);
    return view.visualRect(view.model()->index(row, static_cast<int>(column))).center();
}

} // namespace tw::test
