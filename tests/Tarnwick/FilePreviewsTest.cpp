#include "Tarnwick/Preview/FilePreviews.h"

#include "TWCore/Model/ReadError.h"
#include "TWCore/Provider/FileSystemReader.h"
#include "TWEngine/Browsing/LocalProvider.h"
#include "tests/support/ChildProcessTest.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestLoop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <map>

#include <sys/stat.h>
#include <unistd.h>

namespace tw::test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

/// A host with files in memory, which notes what it is asked for.
class FakeReader final : public FileSystemReader {
public:
    std::string identifier() const override { return "box"; }

    std::string displayName() const override { return "box"; }

    int maxUsefulDepth() const override { return 1; }

    Task<Listings> fetch(std::string, int, FetchPriority) override { co_return Listings(); }

    Task<std::string> readChunk(std::string path, std::int64_t offset, std::size_t length) override
    {
        requests.push_back((offset == 0 ? "read " : "look beyond ") + path);
        require(path);
        auto const &content = files.at(path);
        if (offset == 0)
            co_return content.substr(0, length);
        co_return hasGrown ? std::string(length, 'x') : std::string();
    }

    Task<std::int64_t> fileSize(std::string path) override
    {
        co_return static_cast<std::int64_t>(files.at(path).size());
    }

    Task<void> download(std::string path, std::string localPath) override
    {
        requests.push_back("download " + path);
        require(path);
        std::ofstream(localPath, std::ios::binary) << files.at(path);
        co_return;
    }

    Task<void> upload(std::string, std::string) override { co_return; }

    std::map<std::string, std::string> files;
    std::vector<std::string> requests;
    bool hasGrown = false; ///< beyond any limit

private:
    void require(std::string const &path) const
    {
        if (!files.contains(path))
            throw ReadError::NotReadable(path, "No such file or directory");
    }
};

class FilePreviewsTest : public ::testing::Test {
protected:
    std::shared_ptr<Browser> browserOf(std::shared_ptr<FileSystemProvider> provider)
    {
        return std::make_shared<Browser>(
            std::move(provider), Browser::Collaborators{runtime.makeStrand(), runtime.clock()}, Browser::Config{});
    }

    PreviewSubject subject(std::shared_ptr<Browser> browser, std::string path, std::int64_t size = 0)
    {
        auto name = path.substr(path.rfind('/') + 1);
        return {.browser = std::move(browser),
                .connection = "local",
                .path = std::move(path),
                .name = std::move(name),
                .kind = EntryKind::file,
                .size = size};
    }

    PreviewSubject there(std::string const &path, std::int64_t size)
    {
        auto file = subject(box, path, size);
        file.connection = "box";
        file.isRemote = true;
        return file;
    }

    void load(PreviewSubject file)
    {
        shown.clear();
        loop.run(previews->load(std::move(file), {.width = 64, .height = 48},
                                [this](PreviewContent content) { shown.push_back(std::move(content)); }));
    }

    void loadHere(std::string const &path) { load(subject(local, path)); }

    void loadThere(std::string const &path, std::string content)
    {
        auto const size = static_cast<std::int64_t>(content.size());
        host->files[path] = std::move(content);
        load(there(path, size));
    }

    /// What was shown last.
    std::string facts() const { return shown.back().facts.english(); }

    std::string words() const
    {
        auto const *const text = std::get_if<Text>(&shown.back().body);
        return text ? text->english() : std::string();
    }

    std::string writing() const
    {
        auto const *const text = std::get_if<PreviewContent::Writing>(&shown.back().body);
        return text ? text->text : std::string();
    }

    std::shared_ptr<Picture const> picture() const
    {
        auto const *const one = std::get_if<std::shared_ptr<Picture const>>(&shown.back().body);
        return one ? *one : nullptr;
    }

    /// A picture in one colour, which any program can write.
    static std::string pixmap(int width, int height)
    {
        auto const pixels = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
        return "P6\n" + std::to_string(width) + " " + std::to_string(height) + "\n255\n" + std::string(pixels * 3, 'x');
    }

    TemporaryFolder folder;
    TemporaryFolder scratch;
    EngineRuntime runtime;
    TestLoop loop;
    std::shared_ptr<FakeReader> host = std::make_shared<FakeReader>();
    std::shared_ptr<Browser> box = browserOf(host);
    std::shared_ptr<Browser> local = browserOf(std::make_shared<LocalProvider>(runtime));
    std::shared_ptr<FilePreviews> previews = std::make_shared<FilePreviews>(runtime, [this] { return scratch.path(); });
    std::vector<PreviewContent> shown;
};

TEST_F(FilePreviewsTest, aTextIsShownWithItsEncoding)
{
    loadHere(folder.file("a.txt", "gr\xc3\xbc\xc3\x9f\n"));
    EXPECT_EQ(writing(), "grüß\n");
    EXPECT_THAT(facts(), HasSubstr("UTF-8"));
}

TEST_F(FilePreviewsTest, oneLineOfAGibibyteShowsItsBeginning)
{
    auto const path = folder.file("line", std::string(300 * 1024, 'x'));
    ASSERT_EQ(::truncate(path.c_str(), 1LL << 30), 0); // the rest takes no room
    loadHere(path);
    EXPECT_THAT(writing(), StartsWith("xxx"));
    EXPECT_LT(writing().size(), 10'000U);
    EXPECT_THAT(facts(), HasSubstr("the beginning"));
}

TEST_F(FilePreviewsTest, aPictureIsMadeToFit)
{
    loadHere(folder.file("a.ppm", pixmap(640, 320)));
    ASSERT_TRUE(picture()) << words();
    EXPECT_EQ(picture()->width, 64);
    EXPECT_EQ(picture()->height, 32);
    EXPECT_THAT(facts(), StartsWith("PPM picture  ·  640 × 320"));
}

TEST_F(FilePreviewsTest, aProcessWaitsForTheNextPictureUntilNothingIsLookedAtAnyMore)
{
    auto const before = childrenOfOurs().size();
    loadHere(folder.file("a.ppm", pixmap(640, 320)));
    loadHere(folder.file("b.ppm", pixmap(320, 640)));
    ASSERT_TRUE(picture()) << words();
    EXPECT_EQ(picture()->width, 24);
    EXPECT_EQ(childrenOfOurs().size(), before + 1);
    previews->rest();
    while (childrenOfOurs().size() > before)
        loop.run(runtime.clock()->sleep(std::chrono::milliseconds(1)));
}

TEST_F(FilePreviewsTest, whatIsNoFileIsNotOpened)
{
    auto const fifo = folder.path("fifo");
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    loadHere(fifo);
    EXPECT_THAT(words(), HasSubstr("pipe"));
    loadHere(folder.link("zero", "/dev/zero"));
    EXPECT_THAT(words(), HasSubstr("device"));
}

TEST_F(FilePreviewsTest, aFileThatHasVanishedIsAFailureWithWords)
{
    EXPECT_THROW(loadHere(folder.path("gone")), ReadError);
    EXPECT_THAT(shown, IsEmpty());
}

TEST_F(FilePreviewsTest, aFolderSaysWhatIsInItAndHowMuchThatIsWithAllBelow)
{
    folder.folder("sub");
    folder.file("sub/a", std::string(1000, 'x'));
    folder.file("b", std::string(500, 'x'));
    auto file = subject(local, folder.path());
    file.kind = EntryKind::directory;
    load(file);
    EXPECT_THAT(words(), StartsWith("1 files, 1 dirs"));
    EXPECT_THAT(words(), HasSubstr("2 files, with all that is below"));
}

TEST_F(FilePreviewsTest, ofATextOnAHostOnlyTheBeginningIsAskedFor)
{
    loadThere("/a.log", std::string(3 * 1024 * 1024, '\n'));
    EXPECT_THAT(host->requests, ElementsAre("read /a.log"));
    EXPECT_THAT(facts(), HasSubstr("the beginning"));
}

TEST_F(FilePreviewsTest, aSmallPictureOnAHostNeedsNoFileHere)
{
    loadThere("/a.ppm", pixmap(10, 10));
    ASSERT_TRUE(picture()) << words();
    EXPECT_EQ(picture()->width, 10);
    EXPECT_THAT(host->requests, ElementsAre("read /a.ppm"));
}

TEST_F(FilePreviewsTest, aLargePictureOnAHostIsFetchedOnceAndOnceMoreWhenItHasChanged)
{
    loadThere("/a.ppm", pixmap(400, 400));
    ASSERT_TRUE(picture()) << words();
    EXPECT_THAT(host->requests, ElementsAre("read /a.ppm", "look beyond /a.ppm", "download /a.ppm"));
    host->requests.clear();
    loadThere("/a.ppm", pixmap(400, 400));
    ASSERT_TRUE(picture()) << words();
    EXPECT_THAT(host->requests, Not(Contains("download /a.ppm")));
    loadThere("/a.ppm", pixmap(400, 300));
    EXPECT_THAT(host->requests.back(), "download /a.ppm");
}

TEST_F(FilePreviewsTest, aFileOfAHostIsTooBigAboveItsLimitAndNotAtIt)
{
    host->files["/a.ppm"] = pixmap(400, 400);
    load(there("/a.ppm", FilePreviews::mostFetchedBytes));
    EXPECT_TRUE(picture());
    host->requests.clear();
    load(there("/a.ppm", FilePreviews::mostFetchedBytes + 1));
    EXPECT_EQ(words(), "a.ppm is 64M — too big to preview");
    EXPECT_THAT(host->requests, IsEmpty());
}

TEST_F(FilePreviewsTest, aFileOfAHostThatIsLargerThanItsListingSaysIsNotFetched)
{
    host->hasGrown = true;
    loadThere("/a.ppm", pixmap(400, 400));
    EXPECT_EQ(words(), "This file is too big to preview.");
    EXPECT_THAT(host->requests, ElementsAre("read /a.ppm", "look beyond /a.ppm"));
}

} // namespace
} // namespace tw::test
