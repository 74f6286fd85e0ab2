#include "TWEngine/SSH/HostFiles.h"

#include "TWCore/Model/FileOperationError.h"
#include "tests/support/FakeCommandHost.h"
#include "tests/support/TestLoop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

using std::chrono_literals::operator""s;

class HostFilesTest : public testing::Test {
protected:
    /// Runs an operation to its end, with `result` as that of its one command.
    template <class T>
    T answer(Task<T> operation, CommandResult result = {})
    {
        auto const before = host->runs.size();
        auto const running = loop.start(std::move(operation));
        loop.runUntil([&] { return host->runs.size() > before; });
        host->runs.back().answer->succeed(std::move(result));
        loop.runUntil([&] { return running.isDone(); });
        return running.value();
    }

    /// The command that an operation sends.
    template <class T>
    HostCommand commandOf(Task<T> operation)
    {
        answer(std::move(operation));
        return host->runs.back().command;
    }

    /// What an operation fails with if its command ends like this.
    std::string failureFor(Task<void> operation, CommandResult result)
    {
        try {
            answer(std::move(operation), std::move(result));
        } catch (FileOperationError const &failure) {
            return failure.what();
        }
        return "it succeeded";
    }

    TestLoop loop;
    std::shared_ptr<FakeCommandHost> host = std::make_shared<FakeCommandHost>();
};

TEST_F(HostFilesTest, aChangeRunsInTheWorkSessionAndIsMarkedAsOne)
{
    auto const command = commandOf(HostFiles::makeDirectory(host, "/srv/new"));
    EXPECT_EQ(command.text, "mkdir '/srv/new'");
    EXPECT_EQ(command.session, CommandSession::work);
    EXPECT_EQ(command.effect, CommandEffect::changes);
    EXPECT_EQ(command.limit, std::nullopt);
}

TEST_F(HostFilesTest, deletingRenamingAndCopyingHaveTheirLimits)
{
    auto const deleting = commandOf(HostFiles::remove(host, {"/a", "/b"}));
    EXPECT_EQ(deleting.text, "rm -rf -- '/a' '/b'");
    EXPECT_EQ(deleting.limit, 300s);
    auto const renaming = commandOf(HostFiles::rename(host, "/a", "/b"));
    EXPECT_THAT(renaming.text, testing::HasSubstr("mv -- '/a' '/b'"));
    EXPECT_EQ(renaming.limit, 300s);
    auto const copying = commandOf(HostFiles::copy(host, {"/a"}, "/b", 3600s));
    EXPECT_EQ(copying.text, "cp -a -- '/a' '/b'/");
    EXPECT_EQ(copying.limit, 3600s);
    EXPECT_EQ(copying.effect, CommandEffect::changes);
}

TEST_F(HostFilesTest, measuringChangesNothingAndIgnoresTheStatus)
{
    EXPECT_EQ(answer(HostFiles::totalSize(host, {"/a"}), {.output = "3\n", .status = 1}), 3072);
    auto const &command = host->runs.back().command;
    EXPECT_EQ(command.session, CommandSession::work);
    EXPECT_EQ(command.effect, CommandEffect::none);
    EXPECT_EQ(command.limit, 120s);
}

TEST_F(HostFilesTest, aWindowsHostIsAskedInItsOwnLanguage)
{
    host->speaks = ShellDialect::powershell;
    EXPECT_EQ(commandOf(HostFiles::remove(host, {"/C:/a"})).text,
              "Remove-Item -LiteralPath 'C:/a' -Recurse -Force -ErrorAction Stop");
}

TEST_F(HostFilesTest, anEmptyListSendsNothing)
{
    loop.run(HostFiles::remove(host, {}));
    loop.run(HostFiles::copy(host, {}, "/b", 1s));
    EXPECT_EQ(loop.run(HostFiles::totalSize(host, {})), 0);
    EXPECT_TRUE(host->runs.empty());
}

TEST_F(HostFilesTest, aLongListIsSentInSeveralCommandsUntilOneFails)
{
    auto const deleting = loop.start(HostFiles::remove(host, std::vector<std::string>(5, std::string(40'000, 'x'))));
    for (std::size_t count = 1; count <= 2; ++count) {
        loop.runUntil([&] { return host->runs.size() == count; });
        host->runs.back().answer->succeed({.output = "no", .status = count == 2 ? 1 : 0});
    }
    loop.runUntil([&] { return deleting.isDone(); });
    EXPECT_THROW(deleting.value(), FileOperationError::Failed);
    EXPECT_EQ(host->runs.size(), 2U);
}

TEST_F(HostFilesTest, aFailureHasTheWordsOfTheHost)
{
    EXPECT_EQ(failureFor(HostFiles::makeDirectory(host, "/x"), {.output = "mkdir: File exists\n", .status = 1}),
              "create folder failed on /x: mkdir: File exists");
    EXPECT_EQ(failureFor(HostFiles::rename(host, "/x", "/y"), {.output = "mv: no\n", .status = 1}),
              "rename failed on /x: mv: no");
    EXPECT_EQ(failureFor(HostFiles::copy(host, {"/x", "/y"}, "/z", 1s), {.output = "cp: no", .status = 1}),
              "copy failed on /x: cp: no");
}

TEST_F(HostFilesTest, aFailureWithoutWordsHasItsStatus)
{
    EXPECT_EQ(failureFor(HostFiles::remove(host, {"/x/y", "/z"}), {.output = " \n", .status = 1}),
              "delete failed on /x/y: exit 1");
}

} // namespace
} // namespace tw::test
