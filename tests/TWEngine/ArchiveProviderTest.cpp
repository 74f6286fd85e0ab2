#include "TWEngine/Archives/ArchiveProvider.h"

#include "TWEngine/Archives/LocalArchiveTools.h"
#include "tests/support/Listings.h"
#include "tests/support/SSHProviderTest.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <sstream>

namespace tw::test {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;
using testing::UnorderedElementsAre;

/// Archives of `folder`, which this machine and a host have, made by real tools.
class ArchiveProviderTest : public SSHProviderTest {
protected:
    using Archive = std::shared_ptr<ArchiveProvider>;

    /// Runs a command line in `folder`.
    void make(std::string const &command) const
    {
        auto const line = "cd '" + folder.path() + "' && (" + command + ") >/dev/null 2>&1 </dev/null";
        ASSERT_EQ(std::system(line.c_str()), 0) << command; // NOLINT(concurrency-mt-unsafe)
    }

    /// A tree with names that are something else for most tools.
    void makeTree() const
    {
        folder.folder("t");
        folder.folder("t/docs");
        folder.folder("t/docs/empty");
        folder.file("t/docs/a b.txt", "content");
        for (auto const *const name : {"*", "[a]", "-r", "@list", "back\\slash", "\xC3\xA4", "x -> y"})
            folder.file(std::string("t/") + name, name);
        make("touch -d '2019-01-31 12:34:56 UTC' 't/docs/a b.txt' && ln -s 'docs/a b.txt' t/link");
    }

    Archive here(std::string const &name)
    {
        return std::make_shared<ArchiveProvider>(
            engine, ArchiveProvider::Archive{TransferEndpoint::local(folder.path(name)), "local"}, sshProgram());
    }

    Archive on(Provider const &provider, std::string const &name)
    {
        return std::make_shared<ArchiveProvider>(
            engine, ArchiveProvider::Archive{TransferEndpoint::remote(provider, folder.path(name)), "host"},
            sshProgram());
    }

    Listings fetch(Archive const &archive, std::string path, int depth = 1)
    {
        return loop.run(archive->fetch(std::move(path), depth, FetchPriority::interactive));
    }

    std::vector<std::string> names(Archive const &archive, std::string const &path)
    {
        return test::names(fetch(archive, path).at(path));
    }

    /// The text of the failure.
    std::string failureOfFetch(Archive const &archive, std::string path = "/")
    {
        return failureOf<Listings>(loop.start(archive->fetch(std::move(path), 1, FetchPriority::interactive)));
    }

    Entry entryOf(Archive const &archive, std::string const &path, std::string_view name)
    {
        auto const listings = fetch(archive, path);
        auto const &snapshot = listings.at(path);
        for (auto const &entry : snapshot.entries()) {
            if (snapshot.nameBytes(entry) == name)
                return entry;
        }
        throw std::logic_error("no " + std::string(name));
    }

    /// Every name of the tree comes out with its own content, and nothing else with it.
    void expectContents(Archive const &archive, std::vector<std::string> const &fileNames)
    {
        for (auto const &name : fileNames) {
            EXPECT_EQ(loop.run(archive->readChunk("/" + name, 0, 100)), name);
            auto const copy = local.path("copy");
            loop.run(archive->download("/" + name, copy));
            EXPECT_EQ(contentOf(copy), name);
        }
    }
};

TEST_F(ArchiveProviderTest, archivesOfThisMachineAreFoldersWithSizesAndDates)
{
    makeTree();
    make("tar -czf a.tar.gz -C t . && tar -cf a.tar -C t -- $(cd t && echo docs) && tar -cJf a.tar.xz -C t ./docs && "
         "(cd t && bsdtar --format zip -cf ../a.zip ./docs ./* && 7zz a ../a.7z .)");
    for (auto const *const name : {"a.tar.gz", "a.tar", "a.tar.xz", "a.zip", "a.7z"}) {
        auto const archive = here(name);
        EXPECT_EQ(names(archive, "/docs"), (std::vector<std::string>{"a b.txt", "empty"})) << name;
        auto const entry = entryOf(archive, "/docs", "a b.txt");
        EXPECT_EQ(entry.size, 7) << name;
        auto const isDayOnly = name == std::string_view("a.zip") || name == std::string_view("a.tar.xz");
        EXPECT_EQ(entry.mtime, isDayOnly ? 1'548'892'800 : 1'548'938'096) << name;
        EXPECT_TRUE(entryOf(archive, "/docs", "empty").isDirectory()) << name;
    }
    EXPECT_THAT(names(here("a.tar.gz"), "/"),
                UnorderedElementsAre("*", "-r", "@list", "[a]", "back\\slash", "docs", "link", "x -> y", "\xC3\xA4"));
}

TEST_F(ArchiveProviderTest, aMemberIsReadUnderItsOwnNameOnly)
{
    makeTree();
    make("tar -czf a.tar.gz -C t . && (cd t && bsdtar --format zip -cf ../a.zip ./docs ./* && 7zz a ../a.7z .)");
    std::vector<std::string> const tricky{"*", "[a]", "-r", "@list", "x -> y", "\xC3\xA4"};
    expectContents(here("a.tar.gz"), tricky);
    expectContents(here("a.tar.gz"), {"back\\slash"});
    expectContents(here("a.zip"), tricky);
    expectContents(here("a.7z"), tricky);
    EXPECT_EQ(loop.run(here("a.zip")->readChunk("/docs/a b.txt", 3, 2)), "te");
    EXPECT_EQ(loop.run(here("a.7z")->readChunk("/docs/a b.txt", 3, 100)), "tent");
    EXPECT_EQ(loop.run(here("a.7z")->fileSize("/docs/a b.txt")), 7);
}

TEST_F(ArchiveProviderTest, anArchiveOfAHostIsListedByOneCommandThere)
{
    makeTree();
    make("tar -czf a.tar.gz -C t . && (cd t && 7zz a ../a.7z .)");
    reach();
    auto const provider = connected();
    std::vector<decltype(on(provider, ""))> archives;
    for (auto const *const name : {"a.tar.gz", "a.7z"}) {
        auto const archive = archives.emplace_back(on(provider, name));
        EXPECT_EQ(names(archive, "/docs"), (std::vector<std::string>{"a b.txt", "empty"})) << name;
        EXPECT_EQ(entryOf(archive, "/docs", "a b.txt").size, 7) << name;
        expectContents(archive, {"*", "[a]", "-r", "@list", "\xC3\xA4"});
        EXPECT_EQ(loop.run(archive->readChunk("/docs/a b.txt", 3, 2)), "te") << name;
    }
    host->stop();
    for (auto const &archive : archives)
        EXPECT_EQ(fetch(archive, "/docs", 3).size(), 2U) << "a folder is served from memory";
}

TEST_F(ArchiveProviderTest, aHardLinkHasTheContentOfItsTarget)
{
    make("mkdir -p t/d && printf content > t/a && ln t/a t/d/b && ln t/a t/c && tar -cf a.tar -C t ./a ./c ./d && "
         "xz -k a.tar");
    reach();
    auto const provider = connected();
    for (auto const &archive : {here("a.tar"), here("a.tar.xz"), on(provider, "a.tar")}) {
        EXPECT_EQ(loop.run(archive->readChunk("/d/b", 0, 100)), "content");
        EXPECT_EQ(loop.run(archive->fileSize("/d/b")), 7);
        using Paths = std::vector<std::string>;
        EXPECT_EQ(loop.run(archive->contentsOutside({"/d"})), Paths{"/a"});
        EXPECT_EQ(loop.run(archive->contentsOutside({"/"})), Paths{});
        EXPECT_EQ(loop.run(archive->contentsOutside({"/a", "/c"})), Paths{"/a"});
        EXPECT_EQ(loop.run(archive->bytesOf({"/d", "/a"})), 14);
    }
}

TEST_F(ArchiveProviderTest, aFetchGoesDownSoManyLevels)
{
    make("mkdir -p t/a/b/c && touch t/a/b/c/f && tar -cf a.tar -C t a/b/c/f");
    auto const archive = here("a.tar");
    EXPECT_EQ(fetch(archive, "/").size(), 1U);
    EXPECT_EQ(fetch(archive, "/", 3).size(), 3U);
    EXPECT_EQ(fetch(archive, "a/", 64).size(), 3U);
    EXPECT_EQ(names(archive, "/a/b/c"), std::vector<std::string>{"f"});
    EXPECT_EQ(failureOfFetch(archive, "/no/such"), "list failed on /no/such: not in a.tar");
}

TEST_F(ArchiveProviderTest, anEmptyArchiveIsAnEmptyFolder)
{
    make("tar -czf a.tar.gz -T /dev/null && tar -cf a.tar -T /dev/null");
    EXPECT_TRUE(names(here("a.tar.gz"), "/").empty());
    EXPECT_TRUE(names(here("a.tar"), "/").empty());
}

TEST_F(ArchiveProviderTest, aChangedArchiveIsSeenAfterADisconnect)
{
    make("mkdir t && touch t/old t/new && tar -cf a.tar -C t old");
    auto const archive = here("a.tar");
    EXPECT_EQ(names(archive, "/"), std::vector<std::string>{"old"});
    make("tar -cf a.tar -C t new");
    EXPECT_EQ(names(archive, "/"), std::vector<std::string>{"old"});
    loop.run(archive->disconnect());
    EXPECT_EQ(names(archive, "/"), std::vector<std::string>{"new"});
}

TEST_F(ArchiveProviderTest, anArchiveInsideAnotherOneIsReadFromACopy)
{
    makeTree();
    make("tar -czf inner.tar.gz -C t docs && tar -cf outer.tar inner.tar.gz && rm inner.tar.gz");
    auto const outer = here("outer.tar");
    auto const copy = local.path("inner.tar.gz");
    auto const bring = [outer, copy]() -> Task<std::string> {
        return [](Archive from, std::string path) -> Task<std::string> {
            co_await from->download("/inner.tar.gz", path);
            co_return path;
        }(outer, copy);
    };
    auto const inner = std::make_shared<ArchiveProvider>(
        engine, ArchiveProvider::Archive{TransferEndpoint::local("/inner.tar.gz"), "outer", bring}, sshProgram());
    EXPECT_EQ(names(inner, "/docs"), (std::vector<std::string>{"a b.txt", "empty"}));
    EXPECT_EQ(loop.run(inner->readChunk("/docs/a b.txt", 0, 100)), "content");
    EXPECT_EQ(loop.run(inner->file()).path(), copy);
}

TEST_F(ArchiveProviderTest, whatCannotBeListedSaysWhyAndIsTriedAgain)
{
    makeTree();
    make("7zz a -psecret -mhe=on hidden.7z t && printf 'no archive' > broken.tar.gz");
    EXPECT_THAT(failureOfFetch(here("missing.tar")),
                AllOf(StartsWith("list archive failed on "), HasSubstr("No such")));
    EXPECT_THAT(failureOfFetch(here("hidden.7z")), EndsWith("hidden.7z: it is encrypted"));
    EXPECT_EQ(failureOfFetch(here("t/docs")), "not supported: docs is not an archive this can open");
    auto const broken = here("broken.tar.gz");
    EXPECT_THAT(failureOfFetch(broken), HasSubstr("not in gzip format"));
    make("tar -czf broken.tar.gz -C t docs");
    EXPECT_EQ(names(broken, "/"), std::vector<std::string>{"docs"});

    reach();
    auto const provider = connected();
    EXPECT_THAT(failureOfFetch(on(provider, "missing.tar")), HasSubstr("No such"));
    make("head -c 100000 /dev/urandom >t/noise && tar -czf whole.tgz -C t docs noise && head -c 50000 whole.tgz "
         ">cut.tgz");
    EXPECT_EQ(names(on(provider, "cut.tgz"), "/docs").size(), 2U) << "a host lists up to the damage";
}

TEST_F(ArchiveProviderTest, aListingThatIsNotWantedEndsItsTool)
{
    ASSERT_EQ(::mkfifo(folder.path("endless.tar").c_str(), 0600), 0);
    auto const archive = here("endless.tar");
    auto const before = childrenOfOurs();
    auto const listing = loop.start(archive->fetch("/", 1, FetchPriority::interactive));
    // It waits for somebody to write into the pipe.
    loop.run(LocalArchiveTools::ofThisMachine(engine));
    while (childrenOfOurs() == before)
        loop.run(engine.clock()->sleep(std::chrono::milliseconds(1)));
    listing.stop();
    finish(listing);
    EXPECT_TRUE(listing.failed());
    while (childrenOfOurs() != before)
        loop.run(engine.clock()->sleep(std::chrono::milliseconds(1)));
}

TEST_F(ArchiveProviderTest, aListingOnAHostThatIsNotWantedFreesTheSession)
{
    ASSERT_EQ(::mkfifo(folder.path("endless.tar").c_str(), 0600), 0);
    reach();
    auto const provider = connected();
    auto const archive = on(provider, "endless.tar");
    auto const listing = loop.start(archive->fetch("/", 1, FetchPriority::interactive));
    loop.run(provider->runCommand(
        {.text = "until ps -eo args | grep -q \"[t]ar --quoting.*" + folder.path() + "\"; do sleep 0.01; done"}));
    listing.stop();
    finish(listing);
    EXPECT_EQ(run(provider, "echo free", CommandSession::work), "free\n");
}

} // namespace
} // namespace tw::test
