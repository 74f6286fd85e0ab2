// What a large folder costs: to sort, to prepare for sorting, to hold in memory, and to show names of.

#include "TWCore/Model/Collation.h"
#include "TWCore/Model/DisplayText.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "TWEngine/Runtime/MainContext.h"
#include "Tarnwick/Panes/PaneSearch.h"
#include "bench/Figure.h"

#include <clocale>
#include <cstring>
#include <random>
#include <semaphore>

#include <malloc.h>

namespace tw::bench {

namespace {

constexpr std::size_t rowCount = 100'000;
constexpr int runs = 15;

/// Sorting the names as a program would that has a string for each, with the very same order.
constexpr double largestSortRatio = 0.75;

/// Where all names part late, the peer compares eight bytes at a time too, and there is less to gain.
constexpr double largestCameraSortRatio = 0.9;

/// A look at every byte, as the fastest function of the C library for that takes it.
constexpr double largestScanRatio = 2.0;

/// A letter of a search by typing, so that the next of a person who types fast finds the program idle.
constexpr double searchMilliseconds = 5.0;

/// Marking by a mask: less than two pictures of a screen of 60 Hz.
constexpr double maskMilliseconds = 30.0;

/// The allocator's own bytes, and the listing's few beside its rows and names.
constexpr double largestMemoryRatio = 1.10;

/// Repairing the names only. Names of ASCII characters need no more than a look at their bytes.
constexpr double largestPlainNameRatio = 0.8;
constexpr double largestNameRatio = 1.8;

std::vector<std::string> randomNames()
{
    constexpr std::string_view alphabet = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-. ";
    std::mt19937 random(1);
    std::uniform_int_distribution<std::size_t> letter(0, alphabet.size() - 1);
    std::uniform_int_distribution<std::size_t> length(6, 28);
    std::vector<std::string> names(rowCount);
    for (auto &name : names) {
        name = "x"; // not hidden
        name.resize(length(random));
        std::generate(name.begin() + 1, name.end(), [&] { return alphabet[letter(random)]; });
    }
    return names;
}

/// The folder of a camera, with one name that begins otherwise.
std::vector<std::string> cameraNames()
{
    std::vector<std::string> names{"Thumbs.db"};
    for (std::size_t i = 1; i < rowCount; ++i) {
        char name[64];
        std::snprintf(name, sizeof name, "IMG_2024%02zu%02zu_%06zu.jpg", 1 + i % 12, 1 + i % 28, i);
        names.emplace_back(name);
    }
    std::ranges::shuffle(names, std::mt19937(2));
    return names;
}

/// The sources of a program: many names that begin alike, with "_" where others have letters. In lower case, where that
/// is an order that `std::sort` survives.
std::vector<std::string> sourceNames()
{
    constexpr std::string_view parts[] = {"file", "_list", "view", "_test", "model", "data", "-old", "2", "_impl"};
    std::mt19937 random(3);
    std::uniform_int_distribution<std::size_t> part(0, std::size(parts) - 1);
    std::vector<std::string> names;
    for (std::size_t i = 0; i < rowCount; ++i) {
        std::string name = "src";
        for (int j = 0; j < 4; ++j)
            name += parts[part(random)];
        names.push_back(name + std::to_string(i) + ".cpp");
    }
    std::ranges::shuffle(names, random);
    return names;
}

DirectorySnapshot listingOf(std::vector<std::string> const &names)
{
    std::string storage;
    std::vector<Entry> entries;
    for (auto const &name : names) {
        entries.push_back({.nameOffset = static_cast<std::uint32_t>(storage.size()),
                           .nameLength = static_cast<std::uint32_t>(name.size()),
                           .kind = EntryKind::file});
        storage += name;
    }
    storage.shrink_to_fit();
    return {"/", std::make_shared<std::string const>(std::move(storage)), std::move(entries), {}, false};
}

void measureSort(Figures &figures, std::string const &subject, std::vector<std::string> const &names,
                 double largestRatio)
{
    PaneModel model;
    model.setSnapshot(listingOf(names));
    // No name is hidden, so that this changes nothing but has the rows sorted again.
    auto const sortAgain = [&] {
        auto options = model.viewOptions();
        options.showHidden = !options.showHidden;
        model.setViewOptions(options);
    };
    auto const medians = takeTurns(
        runs, [&] { return millisecondsOf(sortAgain); },
        [&] {
            auto strings = names;
            return millisecondsOf([&] {
                std::ranges::sort(strings, [](std::string const &a, std::string const &b) {
                    return DirectorySnapshot::ordered(a, b);
                });
            });
        });
    figures.report("order of 100,000 rows by name, " + subject, medians.subject, Figures::Yardstick::peer, medians.peer,
                   "ms", largestRatio);
}

void measureCollation(Figures &figures, DirectorySnapshot const &snapshot)
{
    constexpr int scansARun = 20;
    auto const &storage = *snapshot.storage();
    auto const medians = takeTurns(
        runs,
        [&] {
            return millisecondsOf([&] {
                for (int i = 0; i < scansARun; ++i)
                    keep(Collation(snapshot).isTrivial());
            });
        },
        [&] {
            return millisecondsOf([&] {
                for (int i = 0; i < scansARun; ++i)
                    keep(std::memchr(storage.data(), 0x80, storage.size()));
            });
        });
    figures.report("collation of 100,000 ASCII names", medians.subject / scansARun, Figures::Yardstick::peer,
                   medians.peer / scansARun, "ms", largestScanRatio);
}

double heapBytes()
{
    auto const info = mallinfo2();
    return static_cast<double>(info.uordblks + info.hblkhd);
}

void measureMemory(Figures &figures, std::vector<std::string> const &names)
{
    auto const before = heapBytes();
    auto const snapshot = listingOf(names);
    auto const held = heapBytes() - before;
    auto const payload = static_cast<double>(snapshot.count() * sizeof(Entry) + snapshot.storage()->size());
    constexpr double mebibyte = 1024.0 * 1024.0;
    figures.report("memory of a held listing of 100,000 rows", held / mebibyte, Figures::Yardstick::limit,
                   payload / mebibyte, "MiB", largestMemoryRatio);
}

/// What the cells of a table do for each name that they paint.
void measureNames(Figures &figures, std::string const &subject, std::vector<std::string> const &names,
                  double largestRatio)
{
    auto const timeOfAll = [&](auto const &shown) {
        return millisecondsOf([&] {
            for (auto const &name : names)
                keep(shown(name));
        });
    };
    auto const medians = takeTurns(runs, [&] { return timeOfAll(onOneLine); }, [&] { return timeOfAll(repaired); });
    figures.report("100,000 " + subject + " as they are shown", medians.subject, Figures::Yardstick::peer, medians.peer,
                   "ms", largestRatio);
}

/// The same with letters of two bytes.
std::vector<std::string> accented(std::vector<std::string> names)
{
    for (auto &name : names)
        name = "\xC3\xA9t\xC3\xA9 " + name;
    return names;
}

/// What a letter that leads to no match costs the main context, which is the most: every name is looked through. The
/// first letter has the names folded on another thread, and is searched for when they come back.
void measureSearch(Figures &figures, std::string const &subject, std::vector<std::string> const &names)
{
    EngineRuntime runtime;
    std::counting_semaphore<> woken{0};
    auto const context = std::make_shared<MainContext>([&] { woken.release(); });
    PaneModel model;
    model.setSnapshot(listingOf(names));
    PaneCursor cursor(model);
    std::optional<Text> answer;
    PaneSearch search({context, runtime.clock(), runtime.workers().executor(WorkPriority::interactive)}, model, cursor,
                      {.onFound = [](int) {},
                       .onText = [&](Text text) { answer = std::move(text); },
                       .onNoMatch = [] {},
                       .onCompositionEnd = [](PaneDisplay::Composition) {},
                       .onEnded = [] {}});
    auto const letter = [&](std::string_view typed) {
        auto busy = busyMillisecondsOf([&] { search.type(typed); });
        while (!answer->english().ends_with("(no match)")) {
            woken.acquire();
            busy += busyMillisecondsOf([&] { context->runPending(); });
        }
        return busy;
    };
    auto const medians = takeTurns(
        runs,
        [&] {
            search.end();
            return letter("e-+");
        },
        [&] { return letter("-"); });
    search.end();
    context->close();
    auto const report = [&](std::string const &which, double measured) {
        figures.report(which + " letter of a search without a match, 100,000 " + subject, measured,
                       Figures::Yardstick::limit, searchMilliseconds, "ms", 1.0);
    };
    report("first", medians.subject);
    report("next", medians.peer);
}

void measureMasks(Figures &figures, std::vector<std::string> const &names)
{
    PaneModel model;
    model.setSnapshot(listingOf(names));
    for (auto const *const mask : {"*.*", "*.txt;*.md;*.jpg", "*[a-f]?"}) {
        std::vector<double> times;
        for (int run = 0; run < runs; ++run) {
            model.markAll(PaneModel::Marks::remove);
            times.push_back(millisecondsOf([&] { model.markMatching(mask, PaneModel::Marks::insert); }));
        }
        figures.report("mask " + std::string(mask) + " over 100,000 rows", median(std::move(times)),
                       Figures::Yardstick::limit, maskMilliseconds, "ms", 1.0);
    }
}

int measureAll()
{
    std::setlocale(LC_ALL, "C.UTF-8"); // as in the program: masks are matched by characters
    Figures figures;
    auto const names = randomNames();
    measureSort(figures, "random names", names, largestSortRatio);
    measureSort(figures, "names of a camera", cameraNames(), largestCameraSortRatio);
    measureSort(figures, "names of sources", sourceNames(), largestSortRatio);
    measureCollation(figures, listingOf(names));
    measureMemory(figures, names);
    measureNames(figures, "names of ASCII characters", names, largestPlainNameRatio);
    measureNames(figures, "names with other letters", accented(names), largestNameRatio);
    measureSearch(figures, "names of ASCII characters", names);
    measureSearch(figures, "names with other letters", accented(names));
    measureMasks(figures, names);
    return figures.exitCode();
}

} // namespace

} // namespace tw::bench

int main()
{
    return tw::bench::measureAll();
}
