#include "TWEngine/Runtime/DirectoryEvents.h"

#include "TWEngine/Browsing/LocalProvider.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "tests/hosts/TestMount.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestLoop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <filesystem>
#include <fstream>

#include <sys/inotify.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

/// Whether this user has used up the watches of the system. Only the system itself can set that limit.
std::atomic<bool> hasNoMoreWatches = false;

} // namespace

/// In the place of the C library's.
extern "C" int inotify_add_watch(int descriptor, char const *path, std::uint32_t events) noexcept
{
    if (!hasNoMoreWatches)
        return static_cast<int>(::syscall(SYS_inotify_add_watch, descriptor, path, events));
    errno = ENOSPC;
    return -1;
}

namespace tw::test {
namespace {

namespace fs = std::filesystem;
using Event = FolderWatch::Event;
using Watch = std::shared_ptr<FolderWatch>;

class DirectoryEventsTest : public ::testing::Test {
protected:
    Watch watch(std::string const &path) { return loop.run(provider->watchFolder(path)); }

    Event next(Watch const &watch) { return loop.run(watch->next()); }

    TemporaryFolder const folder;
    EngineRuntime engine;
    TestLoop loop;
    std::shared_ptr<LocalProvider> provider = std::make_shared<LocalProvider>(engine);
};

TEST_F(DirectoryEventsTest, whatChangesInAFolderIsAnEvent)
{
    struct Case {
        char const *what;
        std::function<void(std::string const &file, std::string const &other)> change;
    };

    Case const cases[] = {
        {"a new file", [](auto const &file, auto const &) { std::ofstream(file) << "1"; }},
        {"a file that was written", [](auto const &file, auto const &) { std::ofstream(file, std::ios::app) << "2"; }},
        {"its rights", [](auto const &file, auto const &) { fs::permissions(file, fs::perms::owner_read); }},
        {"its name", [](auto const &file, auto const &other) { fs::rename(file, other); }},
        {"its end", [](auto const &, auto const &other) { fs::remove(other); }},
    };
    for (auto const &each : cases) {
        auto const watched = watch(folder.path());
        each.change(folder.path("file"), folder.path("other"));
        EXPECT_EQ(next(watched), Event::changed) << each.what;
    }
}

TEST_F(DirectoryEventsTest, manyChangesAreOneEvent)
{
    auto const watched = watch(folder.folder("watched"));
    for (int number = 0; number < 1000; ++number)
        folder.file("watched/file" + std::to_string(number));
    auto const other = watch(folder.folder("other"));
    folder.file("other/last");
    next(other); // the kernel's queue is in order, so that all before has come
    next(watched);
    auto const more = loop.start(watched->next());
    loop.drain();
    EXPECT_FALSE(more.isDone());
    more.stop();
    loop.runUntil([&] { return more.isDone(); });
}

TEST_F(DirectoryEventsTest, aFolderThatIsDeletedOrMovedIsGone)
{
    auto const deleted = watch(folder.folder("deleted"));
    fs::remove(folder.path("deleted"));
    EXPECT_EQ(next(deleted), Event::gone);
    auto const moved = watch(folder.folder("moved"));
    fs::rename(folder.path("moved"), folder.path("elsewhere"));
    EXPECT_EQ(next(moved), Event::gone);
    EXPECT_EQ(next(moved), Event::gone) << "and nothing else comes";
}

TEST_F(DirectoryEventsTest, aFolderThatIsUnmountedIsGoneAndTheOneBelowItIsAnother)
{
    auto mount = TestMount::slow(folder.folder("mount"), 1, std::chrono::microseconds(0));
    auto const mounted = watch(mount.path());
    ASSERT_NE(mounted, nullptr);
    mount.end();
    EXPECT_EQ(next(mounted), Event::gone);
    auto const below = watch(folder.path("mount"));
    folder.file("mount/file");
    EXPECT_EQ(next(below), Event::changed);
}

TEST_F(DirectoryEventsTest, twoWatchesOfOneFolderEndByThemselves)
{
    auto const path = folder.folder("watched");
    auto first = watch(path);
    auto const second = watch(folder.link("link", path));
    folder.file("watched/a");
    EXPECT_EQ(next(first), Event::changed);
    EXPECT_EQ(next(second), Event::changed);
    first.reset();
    folder.file("watched/b");
    EXPECT_EQ(next(second), Event::changed);
}

TEST_F(DirectoryEventsTest, whatIsNotThereHasNoEvents)
{
    EXPECT_EQ(watch(folder.path("none")), nullptr);
}

TEST_F(DirectoryEventsTest, aFileReportsWhatIsWrittenToItWhileItStaysOpen)
{
    auto const path = folder.file("file");
    auto const watched = watch(path);
    ASSERT_NE(watched, nullptr);
    std::ofstream file(path, std::ios::app);
    file << "text" << std::flush;
    EXPECT_EQ(next(watched), Event::changed);
    std::filesystem::rename(path, folder.path("elsewhere"));
    EXPECT_EQ(next(watched), Event::gone);
}

/// No file can be opened as long as it exists.
class NoMoreDescriptors {
public:
    NoMoreDescriptors()
    {
        ::getrlimit(RLIMIT_NOFILE, &before);
        auto const none = rlimit{.rlim_cur = 0, .rlim_max = before.rlim_max};
        ::setrlimit(RLIMIT_NOFILE, &none);
    }

    ~NoMoreDescriptors() { ::setrlimit(RLIMIT_NOFILE, &before); }

    NoMoreDescriptors(NoMoreDescriptors const &) = delete;
    NoMoreDescriptors &operator=(NoMoreDescriptors const &) = delete;

private:
    rlimit before{};
};

TEST_F(DirectoryEventsTest, aLimitThatIsUsedUpIsReportedOnceAndEndsNothingForGood)
{
    std::vector<std::string> lines;
    auto const &events = engine.directoryEvents();
    events.reportLimits([&](std::string_view line) { lines.emplace_back(line); });
    {
        NoMoreDescriptors const limit;
        EXPECT_EQ(events.watch(folder.path()), nullptr);
        EXPECT_EQ(events.watch(folder.path()), nullptr);
    }
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_THAT(lines[0], testing::HasSubstr("max_user_instances"));
    auto const first = events.watch(folder.path());
    EXPECT_NE(first, nullptr);

    hasNoMoreWatches = true;
    EXPECT_EQ(watch(folder.folder("second")), nullptr);
    EXPECT_EQ(watch(folder.path("second")), nullptr);
    hasNoMoreWatches = false;
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_THAT(lines[1], testing::HasSubstr("max_user_watches"));
    folder.file("file");
    EXPECT_EQ(next(first), Event::changed) << "the folders that are watched go on";
    EXPECT_NE(watch(folder.path("second")), nullptr);
}

} // namespace
} // namespace tw::test
