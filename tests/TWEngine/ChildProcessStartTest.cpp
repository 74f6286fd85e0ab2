#include "tests/support/ChildProcessTest.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

namespace tw::test {
namespace {

using ::testing::HasSubstr;

std::ptrdiff_t countDescriptors()
{
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

/// The descriptors of a program that was started without any care, as a library may do it.
std::string descriptorsOfAnothersChild()
{
    std::unique_ptr<FILE, int (*)(FILE *)> const listing(popen("ls /proc/self/fd", "r"), pclose);
    char text[1000];
    return {text, fread(text, 1, sizeof(text), listing.get())};
}

/// What a child is started with, and how a start fails.
class ChildProcessStartTest : public ChildProcessTest {
protected:
    TemporaryFolder folder;
};

TEST_F(ChildProcessStartTest, argumentsArriveByteForByte)
{
    std::vector<std::string> const arguments{"%s|", "a b", "", "$HOME", "'\"\\", "line\nline", "\xff\xfe", "-n", "*"};
    EXPECT_EQ(outputOf({.program = "/usr/bin/printf", .arguments = arguments}),
              "a b||$HOME|'\"\\|line\nline|\xff\xfe|-n|*|");
}

TEST_F(ChildProcessStartTest, aChildThatEndsWithTheProgramIsStartedAsAnyOther)
{
    ChildCommand command{.program = "/usr/bin/printf",
                         .arguments = {"%s|", "--", "a b", "", "--help"},
                         .end = ChildCommand::End::withProgram};
    EXPECT_EQ(outputOf(command), "--|a b||--help|");
    command = {.program = "/bin/sh",
               .arguments = {"-c", "echo $A $$; ps -o pgid= -p $$"},
               .environment = Environment{{"A", "set"}, {"PATH", "/usr/bin:/bin"}},
               .output = PipeEnd{},
               .session = ChildCommand::Session::own,
               .end = ChildCommand::End::withProgram};
    auto const child = start(command);
    auto const id = std::to_string(child->processId());
    EXPECT_THAT(readAll(child), testing::MatchesRegex("set " + id + "\n *" + id + "\n"));
    EXPECT_EQ(wait(child), exited(0));
}

TEST_F(ChildProcessStartTest, aChildWhoseParentEndedBeforeItCouldAskForItsEndDoesNotBegin)
{
    auto const own = std::filesystem::read_symlink("/proc/self/exe").parent_path();
    auto const anotherParent = std::to_string(getpid() + 1);
    auto const child = start({.program = own / "../lib/tarnwick/starter",
                              .arguments = {anotherParent, "/bin/echo", "begun"},
                              .output = PipeEnd{}});
    EXPECT_EQ(readAll(child), "");
    EXPECT_EQ(wait(child), exited(127));
}

TEST_F(ChildProcessStartTest, aMissingProgramThatWouldEndWithThisOneIsAnErrorOfTheStart)
{
    auto const refusal = refusalOf({.program = "/no/such/program", .end = ChildCommand::End::withProgram});
    EXPECT_EQ(refusal.errorNumber(), ENOENT);
    EXPECT_EQ(refusal.subject(), "/no/such/program");
}

TEST_F(ChildProcessStartTest, aProgramWithoutASlashIsLookedUpInThePath)
{
    EXPECT_EQ(outputOf({.program = "echo", .arguments = {"found"}}), "found\n");
}

TEST_F(ChildProcessStartTest, anEnvironmentIsGivenWholly)
{
    EXPECT_EQ(outputOf({.program = "/usr/bin/env", .environment = Environment{{"B", "2 = two"}, {"A", "\xff"}}}),
              "A=\xff\nB=2 = two\n");
    EXPECT_EQ(outputOf({.program = "/usr/bin/env", .environment = Environment{}}), "");
}

TEST_F(ChildProcessStartTest, withoutAnEnvironmentOursIsInherited)
{
    setenv("TW_TEST_INHERITED", "as it is", 1);
    auto const output = outputOf({.program = "/usr/bin/env"});
    auto extended = inheritedEnvironment();
    unsetenv("TW_TEST_INHERITED");
    EXPECT_THAT(output, HasSubstr("TW_TEST_INHERITED=as it is\n"));

    EXPECT_EQ(extended.at("TW_TEST_INHERITED"), "as it is");
    extended.insert_or_assign("TW_TEST_INHERITED", "changed");
    EXPECT_THAT(outputOf({.program = "/usr/bin/env", .environment = extended}),
                HasSubstr("TW_TEST_INHERITED=changed\n"));
}

TEST_F(ChildProcessStartTest, theWorkingDirectoryIsTheOneGiven)
{
    auto const path = std::filesystem::canonical(folder.folder("sub")).string();
    EXPECT_EQ(outputOf({.program = "/bin/pwd", .arguments = {"-P"}, .workingDirectory = path}), path + "\n");
}

TEST_F(ChildProcessStartTest, anOpenFolderIsOneToWorkIn)
{
    auto const path = std::filesystem::canonical(folder.folder("sub")).string();
    auto const opened = std::make_shared<FileDescriptor const>(::open(path.c_str(), O_PATH | O_DIRECTORY));
    EXPECT_EQ(outputOf({.program = "/bin/pwd", .arguments = {"-P"}, .workingFolder = opened}), path + "\n");
}

TEST_F(ChildProcessStartTest, withoutAWorkingDirectoryOursIsInherited)
{
    EXPECT_EQ(outputOf({.program = "/bin/pwd", .arguments = {"-P"}}), std::filesystem::current_path().string() + "\n");
}

TEST_F(ChildProcessStartTest, aProgramThatIsNotThereIsAnErrorValue)
{
    auto const error = refusalOf({.program = "/no/such/program"});
    EXPECT_EQ(error.errorNumber(), ENOENT);
    EXPECT_EQ(error.subject(), "/no/such/program");
    EXPECT_EQ(error.reason(), "No such file or directory");
    EXPECT_STREQ(error.what(), "/no/such/program: No such file or directory");

    EXPECT_EQ(refusalOf({.program = "no-such-program-in-the-path"}).errorNumber(), ENOENT);
    EXPECT_EQ(refusalOf({.program = ""}).errorNumber(), ENOENT);
}

TEST_F(ChildProcessStartTest, aFileThatIsNoProgramIsAnErrorValue)
{
    auto const file = folder.file("text", "echo never\n");
    EXPECT_EQ(refusalOf({.program = file}).errorNumber(), EACCES);
    EXPECT_EQ(refusalOf({.program = folder.path()}).errorNumber(), EACCES);

    std::filesystem::permissions(file, std::filesystem::perms::owner_all);
    EXPECT_EQ(refusalOf({.program = file}).errorNumber(), ENOEXEC) << "no shell takes it over";
}

TEST_F(ChildProcessStartTest, aWorkingDirectoryThatCannotBeEnteredIsAnErrorValueOfItsOwn)
{
    auto const missing = refusalOf({.program = "cat", .workingDirectory = folder.path("missing")});
    EXPECT_EQ(missing.errorNumber(), ENOENT);
    EXPECT_EQ(missing.subject(), folder.path("missing"));

    auto const file = refusalOf({.program = "cat", .workingDirectory = folder.file("file")});
    EXPECT_EQ(file.errorNumber(), ENOTDIR);
}

TEST_F(ChildProcessStartTest, aFileThatCannotBeOpenedIsAnErrorValue)
{
    auto const path = folder.path("missing/file");
    auto const read = refusalOf({.program = "cat", .input = FileEnd{path, FileEnd::Use::read}});
    EXPECT_EQ(read.errorNumber(), ENOENT);
    EXPECT_EQ(read.subject(), path);
    EXPECT_EQ(refusalOf({.program = "cat", .output = FileEnd{path, FileEnd::Use::replace}}).errorNumber(), ENOENT);
    EXPECT_EQ(refusalOf({.program = "cat", .error = DescriptorEnd{-1}}).errorNumber(), EBADF);
}

TEST_F(ChildProcessStartTest, aTextWithANulByteIsRefusedRatherThanCut)
{
    using namespace std::string_literals;
    EXPECT_EQ(refusalOf({.program = "/bin/echo\0x"s}).errorNumber(), EINVAL);
    EXPECT_EQ(refusalOf({.program = "/bin/echo", .arguments = {"a\0b"s}}).errorNumber(), EINVAL);
    EXPECT_EQ(refusalOf({.program = "/bin/echo", .environment = Environment{{"A", "a\0b"s}}}).errorNumber(), EINVAL);
    EXPECT_EQ(refusalOf({.program = "/bin/echo", .workingDirectory = "/\0x"s}).errorNumber(), EINVAL);
    EXPECT_EQ(refusalOf({.program = "cat", .input = FileEnd{"/dev/null\0x"s, FileEnd::Use::read}}).errorNumber(),
              EINVAL);
}

TEST_F(ChildProcessStartTest, moreArgumentsThanTheSystemTakesAreAnErrorValue)
{
    EXPECT_EQ(refusalOf({.program = "/bin/echo", .arguments = {std::string(1 << 20, 'x')}}).errorNumber(), E2BIG);
}

TEST_F(ChildProcessStartTest, theNullDeviceIsAnInputAtItsEnd)
{
    EXPECT_EQ(outputOf({.program = "cat", .input = NullEnd{}}), "");
}

TEST_F(ChildProcessStartTest, endsMayBeFiles)
{
    auto const input = folder.file("input", "from the file");
    auto const output = folder.file("output", "something longer that was there before");
    auto const copy = [&](FileEnd::Use use) {
        auto const child = start({.program = "cat",
                                  .input = FileEnd{input, FileEnd::Use::read},
                                  .output = FileEnd{output, use},
                                  .error = FileEnd{folder.path("errors"), FileEnd::Use::append}});
        return wait(child);
    };
    EXPECT_EQ(copy(FileEnd::Use::replace), exited(0));
    EXPECT_EQ(contentOf(output), "from the file");
    EXPECT_EQ(copy(FileEnd::Use::append), exited(0));
    EXPECT_EQ(contentOf(output), "from the filefrom the file");
    EXPECT_TRUE(std::filesystem::is_empty(folder.path("errors")));
}

TEST_F(ChildProcessStartTest, anEndMayBeADescriptorOfOursWhichStaysOurs)
{
    auto const path = folder.path("output");
    FileDescriptor const file(open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
    auto const child = start({.program = "echo", .arguments = {"first"}, .output = DescriptorEnd{file.get()}});
    EXPECT_EQ(wait(child), exited(0));
    EXPECT_EQ(::write(file.get(), "second\n", 7), 7);

    EXPECT_EQ(contentOf(path), "first\nsecond\n");
}

TEST_F(ChildProcessStartTest, theTwoOutputsAreTwo)
{
    auto const child = startShell("echo good; echo bad >&2");
    EXPECT_EQ(loop.run(restOf(child, ChildOutput::error)), "bad\n");
    EXPECT_EQ(loop.run(restOf(child, ChildOutput::standard)), "good\n");
    EXPECT_EQ(wait(child), exited(0));
}

TEST_F(ChildProcessStartTest, theChildGetsNoDescriptorButItsThree)
{
    // One as a library leaves it open, without close-on-exec.
    FileDescriptor const careless(fcntl(STDERR_FILENO, F_DUPFD, 70));
    ASSERT_TRUE(careless);
    auto const another = startCat();

    // The fourth is the listing's own.
    EXPECT_EQ(outputOf({.program = "ls", .arguments = {"/proc/self/fd"}, .workingDirectory = "/"}), "0\n1\n2\n3\n");

    another->closeInput();
    EXPECT_EQ(readAll(another), "");
    EXPECT_EQ(wait(another), exited(0));
}

TEST_F(ChildProcessStartTest, noDescriptorIsLeftOpenHere)
{
    outputOf({.program = "true"}); // what is opened once for all is open now
    auto const before = countDescriptors();
    for (int round = 0; round < 20; ++round) {
        outputOf({.program = "echo", .workingDirectory = "/"});
        refusalOf({.program = "/no/such/program", .input = PipeEnd{}, .output = PipeEnd{}, .error = PipeEnd{}});
        refusalOf({.program = "cat", .workingDirectory = "/no/such", .input = PipeEnd{}, .output = PipeEnd{}});
        refusalOf({.program = "cat", .input = PipeEnd{}, .output = FileEnd{"/no/such", FileEnd::Use::read}});
        ASSERT_EQ(countDescriptors(), before) << "in round " << round;
    }
}

TEST_F(ChildProcessStartTest, aProgramThatSomebodyElseStartsGetsNoneOfOurEnds)
{
    auto const before = descriptorsOfAnothersChild();
    auto const child = startShell("read line");
    EXPECT_EQ(descriptorsOfAnothersChild(), before);

    child->closeInput();
    wait(child);
}

TEST_F(ChildProcessStartTest, aProcessThatWasStartedWithItsInputClosedStartsChildrenAsAnyOther)
{
    FileDescriptor const input(open(folder.file("input", "from the file").c_str(), O_RDONLY | O_CLOEXEC));
    auto const output = folder.path("output");
    outputOf({.program = "true"}); // what the I/O thread opens once does not get the number
    FileDescriptor const saved(fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 10));
    close(STDIN_FILENO);
    // The file that is opened gets the number 0 here, which the child's input overwrites first.
    auto const child = start(
        {.program = "cat", .input = DescriptorEnd{input.get()}, .output = FileEnd{output, FileEnd::Use::replace}});
    auto const status = wait(child);
    if (saved)
        dup2(saved.get(), STDIN_FILENO);

    EXPECT_EQ(status, exited(0));
    EXPECT_EQ(contentOf(output), "from the file");
}

TEST_F(ChildProcessStartTest, signalsThatWeIgnoreAreNotIgnoredByTheChild)
{
    auto const child = startShell("kill -PIPE $$; echo survived"); // ignored here since the I/O thread began
    EXPECT_EQ(readAll(child), "");
    EXPECT_EQ(wait(child), killed(SIGPIPE));
}

TEST_F(ChildProcessStartTest, signalsThatWeBlockAreNotBlockedInTheChild)
{
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    auto const child = startShell("kill -TERM $$; echo survived");
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    EXPECT_EQ(readAll(child), "");
    EXPECT_EQ(wait(child), killed(SIGTERM));
}

} // namespace
} // namespace tw::test
