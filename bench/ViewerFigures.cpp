// How soon a file is seen, here and on a host, and what paging through it costs.

#include "TWEngine/Browsing/LocalProvider.h"
#include "TWEngine/Viewing/ViewedFile.h"
#include "Tarnwick/Toolkit/Program/QtMainContext.h"
#include "Tarnwick/Toolkit/Viewer/ViewerTextView.h"
#include "Tarnwick/Toolkit/Viewer/ViewerWindow.h"
#include "bench/FarHost.h"
#include "bench/Figure.h"

#include <QApplication>
#include <QKeyEvent>
#include <QPointer>

#include <filesystem>
#include <fstream>

#include <sys/resource.h>

namespace tw::bench {
namespace {

constexpr std::int64_t gibibyte = std::int64_t(1) << 30;
constexpr int runs = 9;

void processUntil(auto const &condition)
{
    while (!condition())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::AllEvents);
}

double residentMebibytes()
{
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) / 1024;
}

/// A text of many languages, and behind it nothing up to `size`, with a last line.
void writeText(std::string const &path, std::int64_t textBytes, std::int64_t size)
{
    std::ofstream file(path, std::ios::binary);
    for (std::int64_t line = 0; file.tellp() < textBytes; ++line)
        file << line << "\tA line of a log, 한글과 日本語 и кириллица, with some words more to fill it\n";
    file.close();
    if (size <= textBytes)
        return;
    std::filesystem::resize_file(path, static_cast<std::uintmax_t>(size));
    std::ofstream(path, std::ios::binary | std::ios::app) << std::string(FileWindow::chunkBytes, '\n') << "the end\n";
}

/// Opens viewers as F3 does.
class ViewerBench {
public:
    ViewerBench(EngineRuntime &runtime, std::shared_ptr<FileSystemReader> from, std::string file)
        : engine(runtime), place(std::move(from)), path(std::move(file))
    {
    }

    /// From the key to the first row.
    double open()
    {
        close();
        auto const size = static_cast<std::int64_t>(std::filesystem::file_size(path));
        return millisecondsOf([&] {
            controller = std::make_shared<ViewerController>(main.context(),
                                                            ViewerSubject{.file = ViewedFile::at(engine, place, path),
                                                                          .decode = {},
                                                                          .label = "here",
                                                                          .path = path,
                                                                          .kind = EntryKind::file,
                                                                          .size = size});
            window = new ViewerWindow(controller, defaults);
            window->QWidget::show();
            processUntil([&] { return !window->text().screen().rows.empty(); });
            window->repaint();
        });
    }

    double jumpToEnd()
    {
        return millisecondsOf([&] {
            press(Qt::Key_End);
            processUntil([&] { return hasLast(); });
            window->repaint();
        });
    }

    double findTheEnd()
    {
        return millisecondsOf([&] {
            controller->find({.typed = "the end"});
            processUntil([&] { return hasLast(); });
            window->repaint();
        });
    }

    void press(int key)
    {
        QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier);
        QCoreApplication::sendEvent(&window->text(), &event);
    }

    bool isAtEnd() const { return window->text().screen().top + window->text().screen().page >= 1 && !isBusy(); }

    bool isBusy() const { return window->text().screen().isBusy; }

    void close()
    {
        if (window)
            window->close();
        processUntil([&] { return !window; });
    }

    QPointer<ViewerWindow> window;

private:
    bool hasLast() const
    {
        auto const &rows = window->text().screen().rows;
        return !rows.empty() && rows.back().text == U"the end";
    }

    EngineRuntime &engine;
    std::shared_ptr<FileSystemReader> const place;
    std::string const path;
    std::shared_ptr<ViewerController> controller;
    MemoryDefaults defaults;
    QtMainContext main;
};

void measureHere(Figures &figures)
{
    test::TemporaryFolder folder;
    EngineRuntime engine;
    auto const place = std::make_shared<LocalProvider>(engine);
    writeText(folder.path("huge"), 1 << 20, 10 * gibibyte);
    writeText(folder.path("warm"), 1000, 0);
    ViewerBench(engine, place, folder.path("warm")).open(); // what the first window of a program costs
    ViewerBench bench(engine, place, folder.path("huge"));
    auto const before = residentMebibytes();
    std::vector<double> times{bench.open()};
    auto const added = residentMebibytes() - before;
    while (times.size() < runs)
        times.push_back(bench.open());
    using enum Figures::Yardstick;
    figures.report("F3 to text, 10 GiB here", median(times), limit, 40, "ms", 1);
    figures.report("the same, memory that was added", added, limit, 15, "MiB", 1);
    bench.close();
}

/// Page Down, held over a text.
void measurePaging(Figures &figures)
{
    test::TemporaryFolder folder;
    EngineRuntime engine;
    writeText(folder.path("log"), 32 << 20, 0);
    ViewerBench bench(engine, std::make_shared<LocalProvider>(engine), folder.path("log"));
    bench.open();
    auto const before = residentMebibytes();
    std::vector<double> frames;
    while (!bench.isAtEnd()) {
        frames.push_back(busyMillisecondsOf([&] {
            bench.press(Qt::Key_PageDown);
            bench.window->repaint();
        }));
        auto const reading = busyMillisecondsOf([] { QCoreApplication::processEvents(); });
        frames.back() = std::max(frames.back(), reading);
        processUntil([&] { return !bench.isBusy(); });
    }
    using enum Figures::Yardstick;
    figures.report("a page of 32 MiB of text, usual", median(frames), limit, 16, "ms", 1);
    figures.report("a page of 32 MiB of text, longest", *std::ranges::max_element(frames), limit, 16, "ms", 1);
    figures.report("paging through 32 MiB, memory that was added", residentMebibytes() - before, limit, 64, "MiB", 1);
    bench.close();
}

constexpr std::int64_t searchedBytes = 2 * gibibyte;
constexpr double largestSearchHere = 1.5;

double grepTime(std::string const &command)
{
    return millisecondsOf([&] {
        if (std::system(command.c_str()) != 0)
            throw std::runtime_error("failed: " + command);
    });
}

/// A text that is only at the end, beside grep in a file that is in memory for both.
void measureSearch(Figures &figures)
{
    constexpr auto roundTrip = std::chrono::milliseconds(50);
    test::TemporaryFolder folder;
    auto const path = folder.path("log");
    writeText(path, searchedBytes, searchedBytes + 1);
    auto const grep = "grep -c 'the end' " + path + " >/dev/null";

    using enum Figures::Yardstick;
    {
        EngineRuntime engine;
        ViewerBench bench(engine, std::make_shared<LocalProvider>(engine), path);
        auto const medians = takeTurns(
            3,
            [&] {
                bench.open();
                return bench.findTheEnd();
            },
            [&] { return grepTime(grep); });
        figures.report("search through 2 GiB here, beside grep -c", medians.subject, peer, medians.peer, "ms",
                       largestSearchHere);
        bench.close();
    }

    FarHost far(roundTrip);
    auto const provider = far.provider();
    far.loop.run(provider->connect());
    ViewerBench bench(far.engine, provider, path);
    auto const medians = takeTurns(
        3,
        [&] {
            bench.open();
            processUntil([&] { return !bench.isBusy(); });
            return bench.findTheEnd();
        },
        [&] { return grepTime(grep); });
    figures.report("search through 2 GiB 50 ms away, beside grep -c there and two round trips", medians.subject, limit,
                   medians.peer + 2 * static_cast<double>(roundTrip.count()), "ms", 1);
    bench.close();
    far.loop.run(provider->disconnect());
}

struct FarFigure {
    char const *name;
    std::chrono::milliseconds roundTrip;
    bool isEnd;
};

void measureThere(Figures &figures, FarFigure const &what)
{
    FarHost far(what.roundTrip);
    test::TemporaryFolder folder;
    auto const provider = far.provider();
    far.loop.run(provider->connect());
    writeText(folder.path("huge"), 1 << 20, 50 * gibibyte);
    ViewerBench bench(far.engine, provider, folder.path("huge"));
    std::vector<double> times;
    while (times.size() < runs) {
        auto const opened = bench.open();
        processUntil([&] { return !bench.isBusy(); });
        times.push_back(what.isEnd ? bench.jumpToEnd() : opened);
        processUntil([&] { return !bench.isBusy(); });
    }
    constexpr double allowance = 20;
    figures.report(what.name, median(times), Figures::Yardstick::limit,
                   static_cast<double>(what.roundTrip.count()) + allowance, "ms", 1);
    bench.close();
    far.loop.run(provider->disconnect());
}

} // namespace
} // namespace tw::bench

int main(int argc, char **argv)
{
    using namespace std::chrono_literals;
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    tw::bench::Figures figures;
    tw::bench::measureHere(figures);
    tw::bench::measurePaging(figures);
    tw::bench::measureSearch(figures);
    tw::bench::measureThere(figures, {"F3 to text, 50 ms away", 50ms, false});
    tw::bench::measureThere(figures, {"End in 50 GiB, 150 ms away", 150ms, true});
    return figures.exitCode();
}
