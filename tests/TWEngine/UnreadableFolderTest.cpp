#include "TWCore/Model/FileOperationError.h"
#include "TWEngine/Browsing/Browser.h"
#include "tests/hosts/LoginScripts.h"
#include "tests/support/RecordingStore.h"
#include "tests/support/SSHProviderTest.h"

namespace tw::test {
namespace {

using testing::IsEmpty;

/// Folders of a host that cannot be listed, for a user to whom permissions apply.
class UnreadableFolderTest : public SSHProviderTest {
protected:
    UnreadableFolderTest()
    {
        reach({.loginScript = loginWithoutPrivileges()});
        for (auto const *const name : {"tree/locked", "tree/empty", "tree/open"})
            folder.folder(name);
        folder.file("tree/locked/file");
        folder.file("tree/open/file");
        folder.file("file");
        folder.link("to a file", "file");
        folder.link("loop", "loop");
        setMode("tree/locked", 0);
        provider = makeProvider();
    }

    ~UnreadableFolderTest() override { setMode("tree/locked", 0700); }

    void setMode(std::string const &name, mode_t mode) const { ASSERT_EQ(::chmod(folder.path(name).c_str(), mode), 0); }

    std::string refusalOf(std::string const &name, FetchPriority priority)
    {
        try {
            loop.run(provider->fetch(folder.path(name), 1, priority));
        } catch (FileOperationError::Failed const &failure) {
            EXPECT_EQ(failure.operation, "list");
            EXPECT_EQ(failure.path, folder.path(name));
            return failure.detail;
        }
        return "it was listed";
    }

    std::shared_ptr<Browser> makeBrowser()
    {
        auto browser = std::make_shared<Browser>(
            provider, Browser::Collaborators{.strand = engine.makeStrand(), .clock = engine.clock(), .store = store},
            Browser::Config{.ttl = std::chrono::hours(1)});
        loop.run(browser->connect());
        return browser;
    }

    void waitFor(std::shared_ptr<Browser> const &browser, std::string const &name)
    {
        loop.runUntil([&] {
            loop.run(engine.clock()->sleep(std::chrono::milliseconds(1)));
            return loop.run(browser->cached(folder.path(name))).has_value();
        });
    }

    Provider provider;
    std::shared_ptr<RecordingStore> store = std::make_shared<RecordingStore>();
};

TEST_F(UnreadableFolderTest, isAnErrorWithItsReason)
{
    loop.run(provider->connect());
    for (auto const priority : {FetchPriority::interactive, FetchPriority::background}) {
        EXPECT_EQ(refusalOf("tree/locked", priority), "permission denied");
        EXPECT_EQ(refusalOf("none", priority), "no such folder");
        EXPECT_EQ(refusalOf("to a file", priority), "not a folder");
        EXPECT_EQ(refusalOf("loop", priority), "too many links");
        EXPECT_EQ(refusalOf("tree/empty", priority), "it was listed");
    }
}

TEST_F(UnreadableFolderTest, isAskedAboutWhenItIsOpenedAfterAScanFromAbove)
{
    auto const browser = makeBrowser();
    loop.run(browser->open(folder.path("tree")));
    waitFor(browser, "tree/open");
    EXPECT_EQ(failureOf(loop.start(browser->open(folder.path("tree/locked")))),
              "list failed on " + folder.path("tree/locked") + ": permission denied");
    EXPECT_EQ(loop.run(browser->cached(folder.path("tree/locked"))), std::nullopt);
    loop.run(browser->shutdown());
}

TEST_F(UnreadableFolderTest, anEmptyFolderStaysEmptyAndIsRemembered)
{
    auto const browser = makeBrowser();
    loop.run(browser->open(folder.path("tree")));
    waitFor(browser, "tree/open");
    auto const first = loop.run(browser->open(folder.path("tree/empty")));
    EXPECT_TRUE(first.wasCold);
    EXPECT_THAT(first.snapshot.entries(), IsEmpty());
    auto const second = loop.run(browser->open(folder.path("tree/empty")));
    EXPECT_FALSE(second.wasCold);
    EXPECT_THAT(second.snapshot.entries(), IsEmpty());
    loop.run(browser->shutdown());
}

TEST_F(UnreadableFolderTest, nothingEmptyIsStoredOverWhatIsKept)
{
    auto const browser = makeBrowser();
    loop.run(browser->open(folder.path("tree/open")));
    setMode("tree/open", 0);
    loop.run(browser->invalidateAll());
    EXPECT_NE(failureOf(loop.start(browser->reread(folder.path("tree/open")))), "it succeeded");
    loop.run(browser->shutdown());
    setMode("tree/open", 0700);
    EXPECT_FALSE(store->saves.empty());
    for (auto const &saved : store->saves) {
        for (auto const &[path, snapshot] : saved)
            EXPECT_GT(snapshot.count(), 0U) << path;
    }
}

} // namespace
} // namespace tw::test
