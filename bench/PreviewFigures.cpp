// How soon a preview is there: of one photograph, and behind a cursor that is held down over hundreds.

#include "TWEngine/Browsing/LocalProvider.h"
#include "TWEngine/Preview/PictureDecoder.h"
#include "Tarnwick/Preview/FilePreviews.h"
#include "Tarnwick/Toolkit/Preview/PictureView.h"
#include "Tarnwick/Toolkit/Preview/PreviewPanel.h"
#include "Tarnwick/Toolkit/Widgets/ElidedLabel.h"
#include "bench/BenchWindow.h"
#include "bench/Figure.h"
#include "tests/support/TemporaryFolder.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QImage>
#include <QImageWriter>

#include <filesystem>
#include <random>

#include <sys/resource.h>

namespace tw::bench {
namespace {

constexpr int pictures = 500;

/// As a keyboard repeats a key.
constexpr int millisecondsBetweenKeys = 33;

/// A photograph of twelve million pixels with enough grain for four mebibytes.
void writePhotograph(std::string const &path, int quality = 75)
{
    QImage image(4000, 3000, QImage::Format_RGB32);
    std::mt19937 random(1); // NOLINT: the same picture each time
    for (int y = 0; y < image.height(); ++y) {
        auto *const row = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < image.width(); ++x) {
            auto const grain = static_cast<int>(random() % 48);
            row[x] = qRgb((x / 16 + grain) & 255, (y / 12 + grain) & 255, ((x + y) / 20 + grain) & 255);
        }
    }
    QImageWriter writer(QString::fromStdString(path), "jpeg");
    writer.setQuality(quality);
    writer.write(image);
}

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

class PreviewBench {
public:
    explicit PreviewBench(std::string const &folder)
    {
        auto &controller = bench.controller;
        controller.start({.left = PaneSpec{"local", folder, true}, .right = {}});
        processUntil([&] { return pane().model().snapshot() && pane().pathOnShow() == folder; });
    }

    PaneController &pane() { return bench.leftPane(); }

    PreviewPanel &panel() { return *bench.window.previewPanel(); }

    bool shows(std::string_view name) { return panel().picture() && panel().nameLine().text().toStdString() == name; }

    bool showsSharp(std::string_view name) { return shows(name) && !panel().picture()->isStandIn(); }

    struct Times {
        double first; ///< from the key to the first picture
        double sharp;
    };

    Times open()
    {
        Times times{};
        times.first = millisecondsOf([&] {
            bench.controller.cmdPreview();
            processUntil([&] { return shows(pane().cursorName()); });
        });
        times.sharp =
            times.first + millisecondsOf([&] { processUntil([&] { return showsSharp(pane().cursorName()); }); });
        return times;
    }

    void close() { bench.controller.cmdPreview(); }

    BenchWindow bench;
};

void measureOne(Figures &figures)
{
    test::TemporaryFolder folder;
    writePhotograph(folder.path("a.jpg"));
    PreviewBench bench(folder.path());
    bench.pane().moveCursorTo(1);
    std::vector<double> first;
    std::vector<double> sharp;
    for (int run = 0; run < 9; ++run) {
        auto const times = bench.open();
        first.push_back(times.first);
        sharp.push_back(times.sharp);
        bench.close();
    }
    figures.report("preview of a JPEG of 12 million pixels, first picture", median(first), Figures::Yardstick::limit,
                   100, "ms", 1);
    figures.report("the same, as sharp as it gets", median(sharp), Figures::Yardstick::limit, 300, "ms", 1);
}

/// What a held key does, and what is on show meanwhile.
void measureHeld(Figures &figures)
{
    test::TemporaryFolder folder;
    writePhotograph(folder.path("000.jpg"), 20);
    for (int number = 1; number < pictures; ++number) {
        auto const digits = std::to_string(1000 + number).substr(1);
        std::filesystem::create_hard_link(folder.path("000.jpg"), folder.path(digits + ".jpg"));
    }
    PreviewBench bench(folder.path());
    bench.pane().moveCursorTo(1);
    bench.open();
    std::vector<qint64> reached(pictures + 2); // when the cursor came to each row
    QElapsedTimer clock;
    clock.start();
    qint64 longestBehind = 0;
    auto const observe = [&] {
        auto const row = bench.pane().model().rowForName(bench.panel().nameLine().text().toStdString());
        auto const at = *bench.pane().cursorRow();
        // Since when the cursor has been on the row behind the one on show.
        if (row && *row < at)
            longestBehind = std::max(longestBehind, clock.elapsed() - reached[static_cast<std::size_t>(*row + 1)]);
    };
    auto const before = residentMebibytes();
    for (int row = 2; row <= pictures; ++row) {
        auto const next = clock.elapsed() + millisecondsBetweenKeys;
        bench.pane().handleKey({.key = Key::down, .text = {}});
        reached[static_cast<std::size_t>(row)] = clock.elapsed();
        while (clock.elapsed() < next) {
            QCoreApplication::processEvents(QEventLoop::AllEvents, 2);
            observe();
        }
    }
    auto const last = std::string(bench.pane().cursorName());
    auto const afterRelease = millisecondsOf([&] { processUntil([&] { return bench.showsSharp(last); }); });
    using enum Figures::Yardstick;
    figures.report("held cursor over 500 pictures: longest behind", static_cast<double>(longestBehind), limit, 150,
                   "ms", 1);
    figures.report("held cursor: the right picture after release", afterRelease, limit, 200, "ms", 1);
    figures.report("held cursor: memory that was added", residentMebibytes() - before, limit, 32, "MiB", 1);
}

} // namespace
} // namespace tw::bench

int main(int argc, char **argv)
{
    QApplication const application(argc, argv);
    tw::bench::Figures figures;
    tw::bench::measureOne(figures);
    tw::bench::measureHeld(figures);
    return figures.exitCode();
}
