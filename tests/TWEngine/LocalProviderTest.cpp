#include "TWEngine/Browsing/LocalProvider.h"

#include "TWCore/Model/ReadError.h"
#include "TWCore/Provider/FileSystemWriter.h"
#include "TWEngine/Browsing/LocalListing.h"
#include "TWEngine/Browsing/LocalProviderError.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "tests/support/Listings.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestLoop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <thread>

#include <fcntl.h>
#include <sys/fsuid.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace tw::test {
namespace {

using ::testing::ElementsAre;
using ::testing::UnorderedElementsAreArray;

class LocalProviderTest : public ::testing::Test {
protected:
    Listings fetch(std::string path, int depth = 1)
    {
        return loop.run(provider.fetch(std::move(path), depth, FetchPriority::interactive));
    }

    DirectorySnapshot snapshot(std::string const &path)
    {
        auto const listings = fetch(path);
        EXPECT_EQ(listings.size(), 1U);
        return listings.begin()->second;
    }

    Entry onlyEntry(std::string const &path)
    {
        auto const shown = snapshot(path);
        EXPECT_EQ(shown.count(), 1U);
        return shown.entries()[0];
    }

    TemporaryFolder folder;
    EngineRuntime runtime;
    TestLoop loop;
    LocalProvider provider{runtime};
    HelperThreads::Budget helpers{0};
};

TEST_F(LocalProviderTest, saysWhoItIs)
{
    EXPECT_EQ(provider.identifier(), "local");
    EXPECT_EQ(provider.displayName(), "This Mac");
    EXPECT_EQ(provider.maxUsefulDepth(), 1);
    EXPECT_FALSE(provider.persistentCacheIdentity());
    FileSystemProvider &asProvider = provider;
    EXPECT_TRUE(dynamic_cast<FileSystemReader *>(&asProvider));
    EXPECT_TRUE(dynamic_cast<FileSystemWriter *>(&asProvider));
    EXPECT_TRUE(provider.deleteIsReversible());
    loop.run(provider.connect());
    loop.run(provider.disconnect());
}

TEST_F(LocalProviderTest, anEmptyFolderIsAListingWithoutEntries)
{
    auto const shown = snapshot(folder.path());
    EXPECT_EQ(shown.count(), 0U);
    EXPECT_FALSE(shown.truncated());
}

TEST_F(LocalProviderTest, anEntryCarriesSizeTimeModeAndKind)
{
    auto const path = folder.file("data.bin", "12345");
    timespec const times[2] = {{.tv_sec = 1'000'000'000, .tv_nsec = 0}, {.tv_sec = 1'234'567'890, .tv_nsec = 999}};
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
    ASSERT_EQ(chmod(path.c_str(), 04751), 0);

    auto const entry = onlyEntry(folder.path());
    EXPECT_EQ(entry.size, 5);
    EXPECT_EQ(entry.mtime, 1'234'567'890);
    EXPECT_EQ(entry.mode, 04751);
    EXPECT_EQ(entry.kind, EntryKind::file);
}

TEST_F(LocalProviderTest, aTimeBefore1970IsNegative)
{
    auto const path = folder.file("old");
    timespec const times[2] = {{.tv_sec = -100, .tv_nsec = 0}, {.tv_sec = -100, .tv_nsec = 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
    EXPECT_EQ(onlyEntry(folder.path()).mtime, -100);
}

TEST_F(LocalProviderTest, eachKindOfFileIsTold)
{
    folder.file("file");
    folder.folder("folder");
    folder.link("link", "folder");
    ASSERT_EQ(mkfifo(folder.path("pipe").c_str(), 0600), 0);
    auto const listener = socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    std::strncpy(address.sun_path, folder.path("socket").c_str(), sizeof address.sun_path - 1);
    ASSERT_EQ(bind(listener, reinterpret_cast<sockaddr const *>(&address), sizeof address), 0);
    close(listener);

    std::map<std::string, EntryKind> kinds;
    auto const shown = snapshot(folder.path());
    for (auto const &entry : shown.entries())
        kinds.emplace(shown.nameBytes(entry), entry.kind);
    EXPECT_EQ(kinds, (std::map<std::string, EntryKind>{{"file", EntryKind::file},
                                                       {"folder", EntryKind::directory},
                                                       {"link", EntryKind::symlink},
                                                       {"pipe", EntryKind::fifo},
                                                       {"socket", EntryKind::socket}}));
}

TEST_F(LocalProviderTest, devicesAreTold)
{
    auto const shown = snapshot("/dev");
    for (auto const &entry : shown.entries()) {
        if (shown.nameBytes(entry) == "null") {
            EXPECT_EQ(entry.kind, EntryKind::charDev);
            return;
        }
    }
    FAIL() << "/dev without null";
}

TEST_F(LocalProviderTest, aBrokenLinkIsALink)
{
    folder.link("broken", "nowhere at all");
    EXPECT_EQ(onlyEntry(folder.path()).kind, EntryKind::symlink);
}

TEST_F(LocalProviderTest, trailingSlashesAreNotPartOfTheKey)
{
    auto const listings = fetch(folder.path() + "///");
    ASSERT_EQ(listings.size(), 1U);
    EXPECT_EQ(listings.begin()->first, folder.path());
    EXPECT_EQ(listings.begin()->second.path(), folder.path());
}

TEST_F(LocalProviderTest, aDepthOfThreeListsOneFolder)
{
    folder.folder("a/b/c");
    auto const listings = fetch(folder.path(), 3);
    ASSERT_EQ(listings.size(), 1U);
    EXPECT_FALSE(listings.begin()->second.truncated());
}

TEST_F(LocalProviderTest, theRootIsListedUnderItsOwnName)
{
    EXPECT_EQ(snapshot("/").path(), "/");
}

TEST_F(LocalProviderTest, hostileNamesAreKeptToTheByte)
{
    std::vector<std::string> const hostile{
        std::string(255, 'n'),
        "line\nend",
        "tab\there",
        "quote\"s'`",
        "$(reboot)",
        "-rf",
        " leading",
        "trailing ",
        "back\\slash",
        "\xff\xfe\x80 raw",
        "e\xcc\x81",
        "\xc3\xa9",
        "*?[a]",
        ".hidden",
        "...",
        "\x01\x1b[31m\x7f",
        "{a,b};&|<>!",
        "~",
    };
    for (auto const &name : hostile)
        folder.file(name);
    EXPECT_THAT(names(snapshot(folder.path())), UnorderedElementsAreArray(hostile));
}

TEST_F(LocalProviderTest, aListingHoldsNoMoreThanItsNamesAndRows)
{
    for (int index = 0; index < 1000; ++index)
        folder.file("entry number " + std::to_string(index));
    auto const shown = snapshot(folder.path());
    EXPECT_EQ(shown.count(), 1000U);
    EXPECT_EQ(shown.storage()->capacity(), shown.storage()->size());
}

std::string failureOf(TestLoop &loop, Task<Listings> task, int &number)
{
    try {
        loop.run(std::move(task));
    } catch (LocalProviderError::CannotOpen const &error) {
        number = error.errorNumber;
        return error.what();
    }
    return "no failure";
}

TEST_F(LocalProviderTest, aMissingFolderIsToldWithPathAndReason)
{
    int number = 0;
    auto const path = folder.path("missing");
    EXPECT_EQ(failureOf(loop, provider.fetch(path, 1, FetchPriority::interactive), number),
              path + ": No such file or directory");
    EXPECT_EQ(number, ENOENT);
}

TEST_F(LocalProviderTest, aFileIsNoFolder)
{
    int number = 0;
    auto const path = folder.file("file");
    EXPECT_EQ(failureOf(loop, provider.fetch(path, 1, FetchPriority::background), number), path + ": Not a directory");
    EXPECT_EQ(number, ENOTDIR);
}

TEST_F(LocalProviderTest, aLinkLoopIsToldAsSuch)
{
    int number = 0;
    auto const path = folder.link("loop", "loop");
    EXPECT_EQ(failureOf(loop, provider.fetch(path, 1, FetchPriority::interactive), number),
              path + ": Too many levels of symbolic links");
    EXPECT_EQ(number, ELOOP);
    EXPECT_EQ(onlyEntry(folder.path()).kind, EntryKind::symlink);
}

TEST_F(LocalProviderTest, aPathWithANulByteReachesNoOtherFolder)
{
    int number = 0;
    auto const path = folder.path() + std::string("\0/missing", 9);
    failureOf(loop, provider.fetch(path, 1, FetchPriority::interactive), number);
    EXPECT_EQ(number, ENOENT);
}

/// Makes the calling thread an ordinary user to the file system for as long as it lives, if it is root's.
class OrdinaryUser {
public:
    OrdinaryUser() : before(static_cast<uid_t>(setfsuid(geteuid() == 0 ? nobody : geteuid()))) {}

    ~OrdinaryUser() { setfsuid(before); }

private:
    static constexpr uid_t nobody = 65534;
    uid_t const before;
};

TEST_F(LocalProviderTest, aFolderThatMayNotBeReadSaysSo)
{
    auto const path = folder.folder("locked");
    ASSERT_EQ(chmod(folder.path().c_str(), 0755), 0);
    ASSERT_EQ(chmod(path.c_str(), 0), 0);
    OrdinaryUser const user;
    try {
        readLocalDirectory(path, {}, helpers, {});
        FAIL() << "a folder without permissions was read";
    } catch (LocalProviderError::CannotOpen const &error) {
        EXPECT_EQ(error.errorNumber, EACCES);
        EXPECT_EQ(error.what(), path + ": Permission denied");
    }
}

TEST_F(LocalProviderTest, aFolderThatChangesWhileItIsReadIsStillListed)
{
    for (int index = 0; index < 300; ++index)
        folder.file("stays" + std::to_string(index));
    std::atomic<bool> stop = false;
    std::thread churn([&] {
        for (int round = 0; !stop; ++round) {
            auto const path = folder.file("comes and goes " + std::to_string(round % 50));
            std::filesystem::remove(path);
        }
    });
    for (int round = 0; round < 50; ++round) {
        auto const listed = names(snapshot(folder.path()));
        EXPECT_EQ(std::ranges::count_if(listed, [](auto const &name) { return name.starts_with("stays"); }), 300);
    }
    stop = true;
    churn.join();
}

TEST_F(LocalProviderTest, manyFetchesAtOnceLeaveNoDescriptorBehind)
{
    auto const openDescriptors = [] { return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}); };
    folder.file("a");
    snapshot(folder.path());
    auto const before = openDescriptors();
    std::vector<Started<Listings>> running;
    for (int index = 0; index < 100; ++index) {
        auto const path = index % 3 == 0 ? folder.path("missing") : folder.path();
        running.push_back(loop.start(provider.fetch(path, 1, FetchPriority::background)));
    }
    loop.runUntil([&] { return std::ranges::all_of(running, [](auto const &each) { return each.isDone(); }); });
    EXPECT_EQ(openDescriptors(), before);
}

TEST_F(LocalProviderTest, aChunkIsReadFromItsOffset)
{
    auto const path = folder.file("data", std::string("0123\0"
                                                      "56789",
                                                      10));
    EXPECT_EQ(loop.run(provider.readChunk(path, 3, 4)), std::string("3\0"
                                                                    "56",
                                                                    4));
    EXPECT_EQ(loop.run(provider.readChunk(path, 8, 100)), "89");
    EXPECT_EQ(loop.run(provider.readChunk(path, 10, 5)), "");
    EXPECT_EQ(loop.run(provider.readChunk(path, 1000, 5)), "");
    EXPECT_EQ(loop.run(provider.readChunk(path, -7, 2)), "01");
    EXPECT_EQ(loop.run(provider.readChunk(path, 0, 0)), "");
}

TEST_F(LocalProviderTest, aChunkLargerThanTheBufferGrowsIsWhole)
{
    std::string content(3'500'000, 'x');
    content.back() = 'y';
    auto const path = folder.file("large", content);
    EXPECT_EQ(loop.run(provider.readChunk(path, 0, 1U << 30U)), content);
}

template <class T>
std::string readFailure(TestLoop &loop, Task<T> task)
{
    try {
        loop.run(std::move(task));
    } catch (ReadError::NotReadable const &error) {
        return error.what();
    }
    return "no failure";
}

TEST_F(LocalProviderTest, readingWhatCannotBeReadSaysWhy)
{
    auto const missing = folder.path("missing");
    EXPECT_EQ(readFailure(loop, provider.readChunk(missing, 0, 1)),
              "cannot read " + missing + ": No such file or directory");
    EXPECT_EQ(readFailure(loop, provider.readChunk(folder.path(), 0, 1)),
              "cannot read " + folder.path() + ": Is a directory");
    EXPECT_EQ(readFailure(loop, provider.fileSize(missing)), "cannot read " + missing + ": No such file or directory");
    EXPECT_EQ(readFailure(loop, provider.download(missing, folder.path("copy"))),
              "cannot read " + missing + ": No such file or directory");
}

TEST_F(LocalProviderTest, aPipeWithoutAWriterDoesNotHoldAWorkerForEver)
{
    auto const path = folder.path("pipe");
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    EXPECT_EQ(readFailure(loop, provider.readChunk(path, 0, 1)), "cannot read " + path + ": Illegal seek");
}

TEST_F(LocalProviderTest, theSizeOfALinkIsItsOwn)
{
    folder.file("target", std::string(1000, 'x'));
    auto const link = folder.link("link", "target");
    EXPECT_EQ(loop.run(provider.fileSize(folder.path("target"))), 1000);
    EXPECT_EQ(loop.run(provider.fileSize(link)), 6);
}

TEST_F(LocalProviderTest, aDownloadReplacesWhatIsThere)
{
    auto const source = folder.file("source", "new");
    auto const file = folder.file("target", "old and longer");
    loop.run(provider.download(source, file));
    EXPECT_EQ(contentOf(file), "new");

    folder.folder("full/of/things");
    loop.run(provider.download(source, folder.path("full")));
    EXPECT_EQ(contentOf(folder.path("full")), "new");
}

TEST_F(LocalProviderTest, aDownloadOntoItselfLeavesTheFileAlone)
{
    auto const path = folder.file("data", "precious");
    loop.run(provider.download(path, path));
    EXPECT_EQ(contentOf(path), "precious");
    // Another spelling of the same file: removing the target first would remove the source.
    loop.run(provider.download(path, folder.path("./data")));
    EXPECT_EQ(contentOf(path), "precious");
    loop.run(provider.download(path, folder.link("link", "data")));
    EXPECT_EQ(contentOf(path), "precious");
}

TEST_F(LocalProviderTest, aFailedDownloadLeavesTheTargetAndNoLitter)
{
    auto const target = folder.file("target", "kept");
    readFailure(loop, provider.download(folder.path("missing"), target));
    EXPECT_EQ(contentOf(target), "kept");
    EXPECT_THAT(names(snapshot(folder.path())), ElementsAre("target"));
}

TEST_F(LocalProviderTest, aDownloadToNowhereSaysWhatCouldNotBeCopied)
{
    auto const source = folder.file("source", "x");
    EXPECT_EQ(readFailure(loop, provider.download(source, folder.path("none/target"))),
              "cannot read " + source + ": No such file or directory");
}

TEST_F(LocalProviderTest, aFolderIsNotCopiedIntoItself)
{
    auto const source = folder.folder("source/inner");
    folder.link("way in", "source/inner");
    for (auto const *const target : {"source/copy", "source/inner/copy", "way in/copy", "source/../source/copy"})
        EXPECT_EQ(readFailure(loop, provider.download(folder.path("source"), folder.path(target))),
                  "cannot read " + folder.path("source") + ": a folder cannot be copied into itself");
    EXPECT_THAT(names(snapshot(folder.path("source"))), ElementsAre("inner"));
    // Its name may begin like that of the folder.
    loop.run(provider.download(folder.path("source"), folder.path("source copy")));
    EXPECT_THAT(names(snapshot(folder.path("source copy"))), ElementsAre("inner"));
}

TEST_F(LocalProviderTest, aPathWithANulIsNoOtherFile)
{
    auto const file = folder.file("file", "precious");
    auto const path = file + '\0' + "x";
    auto const source = folder.file("source", "new");
    for (auto const &failure :
         {readFailure(loop, provider.readChunk(path, 0, 1)), readFailure(loop, provider.fileSize(path)),
          readFailure(loop, provider.download(path, folder.path("copy")))})
        EXPECT_EQ(failure, "cannot read " + file) << "a text for the user ends at its NUL";
    EXPECT_EQ(readFailure(loop, provider.download(source, path)),
              "cannot read " + source + ": No such file or directory");
    EXPECT_THROW(loop.run(provider.upload(source, path)), PlatformError);
    EXPECT_EQ(contentOf(file), "precious");
    EXPECT_THAT(names(snapshot(folder.path())), ::testing::UnorderedElementsAre("file", "source"));
}

TEST_F(LocalProviderTest, aNameAsLongAsNamesCanBeIsDownloaded)
{
    auto const source = folder.file("source", "x");
    auto const target = folder.path(std::string(255, 'n'));
    loop.run(provider.download(source, target));
    EXPECT_EQ(contentOf(target), "x");
}

TEST_F(LocalProviderTest, anUploadIntoAFileKeepsItTheSameFile)
{
    auto const source = folder.file("source", "short");
    auto const target = folder.file("target", "something longer");
    ASSERT_EQ(chmod(target.c_str(), 0640), 0);
    std::filesystem::create_hard_link(target, folder.path("other name"));
    loop.run(provider.upload(source, target));
    EXPECT_EQ(contentOf(folder.path("other name")), "short");
    struct stat status;
    ASSERT_EQ(stat(target.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0640U);
}

TEST_F(LocalProviderTest, anUploadMakesAFileThatIsNotThere)
{
    auto const source = folder.file("source", "new");
    loop.run(provider.upload(source, folder.path("made")));
    EXPECT_EQ(contentOf(folder.path("made")), "new");
}

TEST_F(LocalProviderTest, anUploadOntoItselfLeavesTheFileAlone)
{
    auto const path = folder.file("data", "precious");
    loop.run(provider.upload(path, path));
    loop.run(provider.upload(path, folder.path("./data")));
    EXPECT_EQ(contentOf(path), "precious");
}

TEST_F(LocalProviderTest, aFailedUploadPassesTheSystemsErrorUp)
{
    auto const failure = [&](std::string const &from, std::string const &to) {
        try {
            loop.run(provider.upload(from, to));
        } catch (PlatformError const &error) {
            EXPECT_STREQ(error.what(), systemText(error.errorNumber).c_str());
            return error.errorNumber;
        }
        return 0;
    };
    auto const source = folder.file("source", "x");
    EXPECT_EQ(failure(folder.path("missing"), folder.path("target")), ENOENT);
    EXPECT_EQ(failure(source, folder.path("no such folder/target")), ENOENT);
    EXPECT_EQ(failure(source, folder.folder("folder")), EISDIR);
    EXPECT_EQ(failure(source, "/dev/full"), ENOSPC);
}

} // namespace
} // namespace tw::test
