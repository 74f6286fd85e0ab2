// Commands that can be ended, run by the shells that a host may have.

#include "TWCore/Shell/EndableCommand.h"

#include "TWCore/Shell/ShellLiteral.h"
#include "TWEngine/Runtime/SystemClock.h"
#include "tests/support/ChildProcessTest.h"
#include "tests/support/TemporaryFolder.h"

namespace tw::test {
namespace {

class EndableCommandTest : public ChildProcessTest, public ::testing::WithParamInterface<char const *> {
protected:
    struct Ended {
        int status = 0;
        std::string output;

        friend bool operator==(Ended const &, Ended const &) = default;
    };

    /// As the session of a host runs a command, with pipes at both ends.
    ChildHandle begin(std::string const &command)
    {
        auto environment = inheritedEnvironment();
        environment["TMPDIR"] = host.path();
        environment["LC_ALL"] = "C";
        auto const script = "umask 027; ( eval " + ShellLiteral::posix(command) + " ) 2>&1";
        return start({.program = "/usr/bin/env",
                      .arguments = {"-S", std::string(GetParam()) + " -c", script},
                      .environment = std::move(environment),
                      .input = PipeEnd{},
                      .output = PipeEnd{}});
    }

    ChildHandle beginEndable(std::string_view program, std::string_view script)
    {
        return begin(EndableCommand::text("token", {program}, script));
    }

    Ended endOf(ChildHandle const &child)
    {
        child->closeInput();
        auto output = readAll(child);
        return {.status = wait(child).number, .output = std::move(output)};
    }

    Ended run(std::string_view program, std::string_view script) { return endOf(beginEndable(program, script)); }

    int statusOfEnd() { return endOf(begin(EndableCommand::end("token"))).status; }

    /// What is removed is not waited for.
    void waitUntilNothingIsLeft()
    {
        while (!std::filesystem::is_empty(host.path()))
            loop.run(SystemClock(*io).sleep(std::chrono::milliseconds(1)));
    }

    TemporaryFolder const host; ///< its folder for temporary files
    TemporaryFolder const folder;
};

TEST_P(EndableCommandTest, aProgramRunsAsItDoesByItself)
{
    auto const file = folder.file("file", "of a file\n");
    auto const child =
        beginEndable("cat", "cat - " + file + "; cat <" + file + "; cat " + file + " | tr a-z A-Z; cat " + file + " >" +
                                folder.path("made") + "; text=$(cat none); echo $?; exit 3");
    loop.run(child->write("of the input\n"));
    EXPECT_EQ(endOf(child), (Ended{3, "of the input\nof a file\nof a file\nOF A FILE\ncat: none: No such file or "
                                      "directory\n1\n"}));
    waitUntilNothingIsLeft();
}

TEST_P(EndableCommandTest, whatAProgramMakesHasTheRightsThatItWouldHave)
{
    run("touch", "touch " + folder.path("made"));
    EXPECT_EQ(std::filesystem::status(folder.path("made")).permissions(), std::filesystem::perms(0640));
}

TEST_P(EndableCommandTest, aProgramUnderWayIsEndedAndThoseBehindItDoNotBegin)
{
    auto const child = beginEndable("sleep", "echo begun; sleep 1000; echo $?; sleep 1000; exit $?");
    EXPECT_EQ(read(child), "begun\n");
    EXPECT_EQ(statusOfEnd(), 0);
    EXPECT_EQ(endOf(child), (Ended{143, "143\n"}));
    waitUntilNothingIsLeft();
}

TEST_P(EndableCommandTest, anEndBetweenTwoCallsIsOneOfACommandUnderWay)
{
    auto const child = beginEndable("sleep", "sleep 0; echo begun; read line; sleep 1000; exit $?");
    EXPECT_EQ(read(child), "begun\n");
    EXPECT_EQ(statusOfEnd(), 0);
    EXPECT_EQ(endOf(child), (Ended{143, ""}));
    waitUntilNothingIsLeft();
}

TEST_P(EndableCommandTest, aCommandThatHasNotBegunDoesNothing)
{
    EXPECT_NE(statusOfEnd(), 0);
    EXPECT_EQ(run("touch", "touch " + folder.path("made")), (Ended{143, ""}));
    EXPECT_FALSE(std::filesystem::exists(folder.path("made")));
    waitUntilNothingIsLeft();
}

TEST_P(EndableCommandTest, theEndOfACommandThatIsOverIsForgotten)
{
    run("true", "true");
    waitUntilNothingIsLeft();
    EXPECT_NE(statusOfEnd(), 0);
    EXPECT_FALSE(std::filesystem::is_empty(host.path()));
    endOf(begin(EndableCommand::forget("token")));
    EXPECT_TRUE(std::filesystem::is_empty(host.path()));
}

TEST_P(EndableCommandTest, whatAnotherHasMadeInThatPlaceStaysAsItIs)
{
    auto const other = folder.file("other", "of somebody");
    for (std::string const name : {".tarnwick-token", ".tarnwick-token.end"}) {
        host.link(name, other);
        endOf(begin(EndableCommand::end("token")));
        run("true", "true");
        EXPECT_EQ(contentOf(other), "of somebody");
        waitUntilNothingIsLeft();
    }
}

TEST_P(EndableCommandTest, aProgramRunsWhereNothingCanBeWrittenAndItsEndSaysThatItCannot)
{
    EXPECT_NE(statusOfEnd(), EndableCommand::cannotBeEnded);
    EXPECT_NE(statusOfEnd(), EndableCommand::cannotBeEnded) << "the second time too";
    std::filesystem::remove_all(host.path());
    EXPECT_EQ(statusOfEnd(), EndableCommand::cannotBeEnded);
    EXPECT_EQ(run("cat", "cat " + folder.file("file", "content")), (Ended{0, "content"}));
}

TEST_P(EndableCommandTest, aProgramUnderWayIsEndedAlsoWhereThoseBehindItCannotBe)
{
    host.link(".tarnwick-token.end", host.path("none")); // so it cannot be made, and is not there
    auto const child = beginEndable("cat", "cat; echo $?");
    while (!contentOf(host.path(".tarnwick-token")).ends_with("\n"))
        loop.run(SystemClock(*io).sleep(std::chrono::milliseconds(1)));
    EXPECT_EQ(statusOfEnd(), EndableCommand::cannotBeEnded);
    EXPECT_EQ(endOf(child), (Ended{0, "143\n"}));
    waitUntilNothingIsLeft();
}

INSTANTIATE_TEST_SUITE_P(Shells, EndableCommandTest, ::testing::Values("/bin/bash", "/bin/dash", "/bin/busybox sh"));

} // namespace
} // namespace tw::test
