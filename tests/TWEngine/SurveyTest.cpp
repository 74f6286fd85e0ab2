#include "TWCore/Async/Cancelled.h"
#include "TWCore/Model/FileOperationError.h"
#include "TWCore/Shell/SurveyQuestion.h"
#include "TWEngine/Browsing/LocalSurvey.h"
#include "tests/support/HostShell.h"
#include "tests/support/SurveyTree.h"

#include <gmock/gmock.h>

#include <fcntl.h>

namespace tw::test {
namespace {

/// Surveys of this machine and of a host, which is this machine.
class SurveyTest : public HostShellTest {
protected:
    Survey here() const { return localSurvey(folder.path(), namesOnDisk(folder.path()), {}); }

    Survey there()
    {
        SurveyReader reader("tw17");
        auto const output = run(surveyScript("tw17", folder.path(), namesOnDisk(folder.path()))).output;
        // In pieces of all sizes.
        for (std::size_t from = 0, size = 1; from < output.size(); from += size, size = size % 97 + 1)
            reader.read(std::string_view(output).substr(from, size));
        EXPECT_TRUE(reader.isComplete()) << reader.strayWords();
        return reader.survey();
    }

    /// The digest of the one name "a" after a change.
    std::uint64_t shapeOfA() const { return here().parts.at("a").shape; }
};

TEST_F(SurveyTest, aHostAndThisMachineAgree)
{
    fillTree(folder);
    EXPECT_EQ(shapes(there()), shapes(here()));
    auto const tree = here().parts.at("tree");
    EXPECT_EQ(tree.folders, 5);
    EXPECT_EQ(tree.files, static_cast<std::int64_t>(3 * hostileNames().size()));
}

TEST_F(SurveyTest, busyboxAgrees)
{
    fillTree(folder);
    useBusybox();
    EXPECT_EQ(shapes(there()), shapes(here()));
}

TEST_F(SurveyTest, theToolsOfBSDAgree)
{
    fillTree(folder);
    useStatOfBSD();
    replaceTool("find", R"sh(
case " $* " in *' -printf '*) echo 'find: -printf: unknown primary or operator' >&2; exit 1 ;; esac
exec /usr/bin/find "$@"
)sh");
    EXPECT_EQ(shapes(there()), shapes(here()));
}

TEST_F(SurveyTest, eachDifferenceThatACopyMustNotHaveIsSeen)
{
    folder.folder("a");
    folder.file("a/file", "12345");
    folder.link("a/link", "file");
    auto const before = shapeOfA();
    folder.file("a/file", "54321");
    EXPECT_EQ(shapeOfA(), before) << "content is not read";
    folder.file("a/file", "1234");
    auto const shorter = shapeOfA();
    EXPECT_NE(shorter, before);
    std::filesystem::rename(folder.path("a/file"), folder.path("a/File"));
    auto const renamed = shapeOfA();
    EXPECT_NE(renamed, shorter);
    std::filesystem::remove(folder.path("a/link"));
    folder.link("a/link", "File");
    EXPECT_NE(shapeOfA(), renamed);
    folder.folder("a/empty");
    auto const withFolder = shapeOfA();
    std::filesystem::remove(folder.path("a/empty"));
    folder.file("a/empty");
    EXPECT_NE(shapeOfA(), withFolder);
}

TEST_F(SurveyTest, theFilesThatTwoTreesHaveBothAreCounted)
{
    auto const tree = [this](std::string const &name) {
        return localSurvey(folder.path(), {name}, {}, Survey::Detail::files).parts.at(name);
    };
    timespec const times[2] = {{1000, 0}, {1000, 0}};
    for (std::string const name : {"a", "b"}) {
        folder.folder(name + "/in");
        for (std::string const file : {"same", "in/same", "longer", "newer"})
            ASSERT_EQ(::utimensat(AT_FDCWD, folder.file(name + "/" + file, "x").c_str(), times, 0), 0);
        folder.link(name + "/link", "same");
    }
    EXPECT_EQ(tree("a").countOf(tree("b")), 5);
    folder.file("b/longer", "xx");
    ASSERT_EQ(::utimensat(AT_FDCWD, folder.path("b/longer").c_str(), times, 0), 0);
    folder.file("b/newer", "x");
    folder.file("b/more", "x");
    EXPECT_EQ(tree("a").countOf(tree("b")), 3);
    folder.folder("c");
    EXPECT_EQ(tree("a").countOf(tree("c")), 0);
    EXPECT_EQ(localSurvey(folder.path(), {"a"}, {}).parts.at("a").countOf(tree("b")), std::nullopt);
}

TEST_F(SurveyTest, aChangeOfATimeIsSeenInTheTimesOnly)
{
    folder.folder("a");
    auto const file = folder.file("a/file", "x");
    for (auto const isHost : {false, true}) {
        auto const before = (isHost ? there() : here()).parts.at("a");
        timespec const times[2] = {{.tv_sec = 5, .tv_nsec = 7 + isHost}, {.tv_sec = 5, .tv_nsec = 7 + isHost}};
        ASSERT_EQ(::utimensat(AT_FDCWD, file.c_str(), times, 0), 0);
        auto const after = (isHost ? there() : here()).parts.at("a");
        EXPECT_EQ(after.shape, before.shape);
        EXPECT_NE(after.times, before.times);
    }
}

TEST_F(SurveyTest, aTreeMayBeDeep)
{
    std::string path = "a";
    for (int level = 0; level < 200; ++level)
        path += "/deep";
    folder.folder(path);
    folder.file(path + "/file", "12345");
    EXPECT_EQ(here().parts.at("a").folders, 201);
    EXPECT_EQ(here().parts.at("a").bytes, 5);
    EXPECT_EQ(shapes(there()), shapes(here()));
}

TEST_F(SurveyTest, sparseFilesAndPipesCountAsWhatTheyAre)
{
    auto const sparse = folder.file("sparse");
    ASSERT_EQ(::truncate(sparse.c_str(), 5LL << 30), 0);
    ASSERT_EQ(::mkfifo(folder.path("pipe").c_str(), 0600), 0);
    EXPECT_EQ(here().parts.at("sparse").bytes, 5LL << 30);
    EXPECT_EQ(here().parts.at("pipe").bytes, 0);
    EXPECT_EQ(shapes(there()), shapes(here()));
}

TEST_F(SurveyTest, aLinkToAFolderIsALink)
{
    folder.folder("real");
    folder.file("real/file", "x");
    folder.link("link", "real");
    EXPECT_EQ(here().parts.at("link").files, 1);
    EXPECT_EQ(here().parts.at("link").folders, 0);
    EXPECT_EQ(shapes(there()), shapes(here()));
}

TEST_F(SurveyTest, aNameThatDoesNotExistIsLeftOut)
{
    EXPECT_TRUE(localSurvey(folder.path(), {"none"}, {}).parts.empty());
    SurveyReader reader("tw17");
    reader.read(run(surveyScript("tw17", folder.path(), std::vector<std::string>{"none"})).output);
    EXPECT_TRUE(reader.isComplete());
    EXPECT_TRUE(reader.survey().parts.empty());
}

TEST_F(SurveyTest, aFolderThatCannotBeReadIsAnError)
{
    EXPECT_THROW(localSurvey(folder.path("none"), {}, {}), FileOperationError::Failed);
    SurveyReader reader("tw17");
    reader.read(run(surveyScript("tw17", folder.path("none"), {})).output);
    EXPECT_FALSE(reader.isComplete());
}

TEST_F(SurveyTest, aFindThatFailsMakesTheListIncomplete)
{
    folder.file("a");
    replaceTool("find", "/usr/bin/find \"$@\"; exit 1");
    SurveyReader reader("tw17");
    reader.read(run(surveyScript("tw17", folder.path(), std::vector<std::string>{"a"})).output);
    EXPECT_FALSE(reader.isComplete());
}

TEST_F(SurveyTest, aStopEndsIt)
{
    folder.file("a");
    std::stop_source stop;
    stop.request_stop();
    EXPECT_THROW(localSurvey(folder.path(), {"a"}, stop.get_token()), Cancelled);
}

TEST(SurveyReaderTest, aListThatIsCutIsNotComplete)
{
    std::string const bytes = "hello\nm f 5 1.0 ./a" + std::string(1, '\0') + "\nm end 0\n";
    for (std::size_t size = 0; size < bytes.size(); ++size) {
        SurveyReader reader("m");
        reader.read(bytes.substr(0, size));
        EXPECT_FALSE(reader.isComplete()) << size;
    }
    SurveyReader reader("m");
    reader.read(bytes);
    EXPECT_TRUE(reader.isComplete());
    EXPECT_EQ(reader.strayWords(), "hello");
    EXPECT_EQ(reader.survey().parts.at("a").bytes, 5);
}

TEST(SurveyReaderTest, aRowWithoutEndIsGivenUp)
{
    SurveyReader reader("m");
    reader.read("m f 5 1.0 ./" + std::string(SurveyReader::maxRowBytes, 'x'));
    reader.read("\nm end 0\n");
    EXPECT_FALSE(reader.isComplete());
}

TEST(SurveyReaderTest, aPathThatWasNotAskedForIsGivenUp)
{
    SurveyReader reader("m");
    reader.read("m f 5 1.0 /etc/passwd\nm end 0\n");
    EXPECT_FALSE(reader.isComplete());
}

} // namespace
} // namespace tw::test
