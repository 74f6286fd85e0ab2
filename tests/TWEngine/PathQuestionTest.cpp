#include "TWEngine/Shell/PathQuestion.h"

#include "tests/support/ResidentShellTest.h"

#include <gmock/gmock.h>

#include <sys/stat.h>

namespace tw::test {
namespace {

using ::testing::SizeIs;

TEST(PathQuestionTextTest, onlyAStatusIsARefusal)
{
    EXPECT_EQ(PathQuestion::refusal(0, ""), std::nullopt);
    EXPECT_EQ(PathQuestion::refusal(0, "words of a host that talks too much"), std::nullopt);
    EXPECT_EQ(PathQuestion::refusal(1, ""), "cannot be read");
}

TEST(PathQuestionTextTest, theReasonIsBehindTheLastColon)
{
    EXPECT_EQ(PathQuestion::refusal(1, "bash: line 9: cd: /a: Permission denied: No such file or directory\n"),
              "no such folder");
    EXPECT_EQ(PathQuestion::refusal(1, "bash: line 9: cd: /a: Not a directory\n"), "not a folder");
    EXPECT_EQ(PathQuestion::refusal(1, "bash: line 9: cd: /a: Too many levels of symbolic links\n"), "too many links");
    EXPECT_EQ(PathQuestion::refusal(1, "bash: line 9: cd: /a: File name too long\n"), "file name too long");
    EXPECT_EQ(PathQuestion::refusal(1, "Permission denied"), "permission denied");
}

TEST(PathQuestionTextTest, aHostDoesNotDecideHowLongAReasonIs)
{
    EXPECT_THAT(PathQuestion::refusal(1, std::string(100'000, 'x')).value(), SizeIs(200));
}

/// What a real shell answers.
class PathQuestionTest : public ResidentShellTest {
protected:
    PathQuestionTest() { give({"find"}); }

    std::optional<std::string> refusalOf(std::string const &path)
    {
        auto host = shell();
        auto const frame = host.answerTo(ShellRequest::ask(path));
        auto reason = PathQuestion::refusal(frame.status, frame.payload);
        EXPECT_EQ(reason.has_value(), !frame.payload.empty());
        EXPECT_EQ(host.answerTo(ShellRequest::run(ShellDialect::posix, "echo on")).payload, "on\n");
        return reason;
    }

    std::string folderWithMode(std::string const &name, mode_t mode)
    {
        auto path = folder.folder(name);
        folder.file(name + "/file");
        EXPECT_EQ(chmod(path.c_str(), mode), 0);
        locked.push_back(path);
        return path;
    }

    ~PathQuestionTest() override
    {
        for (auto const &path : locked)
            chmod(path.c_str(), 0700);
    }

private:
    std::vector<std::string> locked;
};

TEST_F(PathQuestionTest, aFolderCanBeListed)
{
    folder.link("link", folder.folder("folder"));
    for (auto const *const name : {"folder", "link"})
        EXPECT_EQ(refusalOf(folder.path(name)), std::nullopt) << name;
    EXPECT_EQ(refusalOf("/"), std::nullopt);
}

TEST_F(PathQuestionTest, everyOtherPathHasItsReason)
{
    folder.file("file");
    folder.link("to a file", "file");
    folder.link("to nothing", "nothing");
    folder.link("loop", "loop");
    ASSERT_EQ(mkfifo(folder.path("fifo").c_str(), 0600), 0);
    EXPECT_EQ(refusalOf(folder.path("none")), "no such folder");
    EXPECT_EQ(refusalOf(folder.path("to nothing")), "no such folder");
    for (auto const *const name : {"file", "to a file", "fifo", "file/below"})
        EXPECT_EQ(refusalOf(folder.path(name)), "not a folder") << name;
    EXPECT_EQ(refusalOf(folder.path("loop")), "too many links");
    EXPECT_EQ(refusalOf(folder.path(std::string(300, 'x'))), "file name too long");
}

TEST_F(PathQuestionTest, aFolderWithoutPermissionSaysSo)
{
    auto const unreadable = folderWithMode("unreadable", 0300);
    auto const unsearchable = folderWithMode("unsearchable", 0600);
    EXPECT_EQ(refusalOf(unreadable), "permission denied");
    EXPECT_EQ(refusalOf(unsearchable), "permission denied");
    EXPECT_EQ(refusalOf(unsearchable + "/below"), "permission denied");
}

TEST_F(PathQuestionTest, anyNameIsThatName)
{
    for (std::string const name : {"it's", "-n", "a\nb", "a b*", "$(id)", "\xFF"}) {
        folder.folder(name);
        EXPECT_EQ(refusalOf(folder.path(name)), std::nullopt) << name;
        EXPECT_EQ(refusalOf(folder.path(name + ": gone")), "no such folder") << name;
    }
}

TEST_F(PathQuestionTest, aHostThatCannotListSaysSo)
{
    giveFindWithoutPrintf();
    EXPECT_EQ(refusalOf(folder.path()), "the host has neither GNU find nor perl");
    give({"perl"});
    EXPECT_EQ(refusalOf(folder.path()), std::nullopt);
}

} // namespace
} // namespace tw::test
