#include "TWCore/Async/Cancelled.h"
#include "TWCore/Async/OnExecutor.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "TWEngine/Runtime/FileDescriptor.h"
#include "TWEngine/Runtime/WorkerPool.h"
#include "tests/support/ChildProcessTest.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <latch>
#include <thread>

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tw::test {
namespace {

constexpr int exitRaces = 100;

/// How a child ends, who is told, and that nothing is left of it.
class ChildProcessExitTest : public ChildProcessTest {
protected:
    /// A child that ends when it is told to, and not before.
    ChildHandle startSleeper()
    {
        auto const child = startShell("echo ready; exec cat");
        EXPECT_EQ(read(child), "ready\n");
        return child;
    }

    /// A child that does not end when it is asked to.
    ChildHandle startDeaf()
    {
        auto const child = startShell("trap '' TERM; echo ready; exec sleep 1000"); // what is ignored stays so
        EXPECT_EQ(read(child), "ready\n");
        return child;
    }
};

TEST_F(ChildProcessExitTest, theExitCodeIsTold)
{
    EXPECT_EQ(wait(startShell("exit 0")), exited(0));
    EXPECT_EQ(wait(startShell("exit 7")), exited(7));
    EXPECT_EQ(wait(startShell("exit 255")), exited(255));
    EXPECT_TRUE(exited(0).isSuccess());
    EXPECT_FALSE(exited(7).isSuccess());
    EXPECT_FALSE(killed(0).isSuccess());
}

TEST_F(ChildProcessExitTest, theSignalThatKilledItIsTold)
{
    EXPECT_EQ(wait(startShell("kill -KILL $$")), killed(SIGKILL));
    EXPECT_EQ(wait(startShell("kill -USR1 $$")), killed(SIGUSR1));
}

TEST_F(ChildProcessExitTest, allWhoWaitAreToldAndAllWhoComeLater)
{
    auto const child = startSleeper();
    auto const first = loop.start(child->wait());
    auto const second = loop.start(child->wait());
    loop.drain();
    EXPECT_FALSE(first.isDone() || second.isDone());
    child->kill();
    loop.runUntil([&] { return first.isDone() && second.isDone(); });

    EXPECT_EQ(first.value(), killed(SIGKILL));
    EXPECT_EQ(second.value(), killed(SIGKILL));
    EXPECT_EQ(wait(child), killed(SIGKILL));
}

TEST_F(ChildProcessExitTest, aWaiterThatIsStoppedLeavesAlone)
{
    auto const child = startSleeper();
    auto const leaving = loop.start(child->wait());
    auto const staying = loop.start(child->wait());
    auto const never = loop.start(child->wait());
    never.stop();
    loop.drain();
    leaving.stop();
    loop.drain();
    EXPECT_THROW(leaving.value(), Cancelled);
    EXPECT_THROW(never.value(), Cancelled);
    EXPECT_FALSE(staying.isDone());

    child->closeInput();
    loop.runUntil([&] { return staying.isDone(); });
    EXPECT_EQ(staying.value(), exited(0));
}

TEST_F(ChildProcessExitTest, terminateAsksAndKillInsists)
{
    auto const polite = startSleeper();
    polite->terminate();
    EXPECT_EQ(wait(polite), killed(SIGTERM));

    auto const deaf = startDeaf();
    deaf->terminate();
    deaf->kill();
    EXPECT_EQ(wait(deaf), killed(SIGKILL));
}

TEST_F(ChildProcessExitTest, aChildMayAnswerTheQuestionWithAnExitCode)
{
    auto const child = startShell("trap 'exit 9' TERM; echo ready; while :; do read line; done");
    EXPECT_EQ(read(child), "ready\n");
    child->terminate();
    EXPECT_EQ(wait(child), exited(9));
}

TEST_F(ChildProcessExitTest, aStoppedChildCanBeTerminated)
{
    auto const child = startSleeper();
    auto const id = child->processId();
    ASSERT_EQ(::kill(id, SIGSTOP), 0);
    siginfo_t stopped = {};
    ASSERT_EQ(waitid(P_PID, static_cast<id_t>(id), &stopped, WSTOPPED), 0);
    child->terminate();
    EXPECT_EQ(wait(child), killed(SIGTERM));
}

TEST_F(ChildProcessExitTest, signalsToAChildThatHasEndedAreNothing)
{
    auto const child = startShell("exit 4");
    EXPECT_EQ(wait(child), exited(4));
    child->terminate();
    child->kill();
    EXPECT_EQ(wait(child), exited(4));
}

TEST_F(ChildProcessExitTest, aSessionOfItsOwnIsTerminatedAsAWhole)
{
    auto const child = start({.program = "/bin/sh",
                              .arguments = {"-c", "sleep 1000 & sleep 1000 & echo ready; wait"},
                              .output = PipeEnd{},
                              .session = ChildCommand::Session::own});
    EXPECT_EQ(read(child), "ready\n");
    EXPECT_EQ(getsid(child->processId()), child->processId());
    child->terminate();
    EXPECT_EQ(readAll(child), "") << "its own children had the output too, and are gone";
    EXPECT_EQ(wait(child), killed(SIGTERM));
}

TEST_F(ChildProcessExitTest, aChildThatEndsWithTheProgramIsKilledWithTheThreadThatHasStartedIt)
{
    // The threads of a process that is killed end as this one does. A child that is stopped does not end by itself.
    ChildHandle child;
    std::latch isStarted(1);
    std::latch mayEnd(1);
    std::thread starter([&] {
        child = start({.program = "/bin/sh",
                       .arguments = {"-c", "echo ready; kill -STOP $$"},
                       .output = PipeEnd{},
                       .end = ChildCommand::End::withProgram});
        isStarted.count_down();
        mayEnd.wait();
    });
    isStarted.wait();
    EXPECT_EQ(read(child), "ready\n");
    mayEnd.count_down();
    starter.join();
    EXPECT_EQ(wait(child), killed(SIGKILL));
}

TEST_F(ChildProcessExitTest, aThreadOfTheRuntimeStaysForTheChildrenThatItHasStarted)
{
    EngineRuntime engine;
    auto const startThere = [](EngineRuntime *runtime) -> Task<ChildHandle> {
        co_return ChildProcess::start(
            runtime->io(),
            {.program = "/bin/cat", .input = PipeEnd{}, .output = PipeEnd{}, .end = ChildCommand::End::withProgram})
            .value();
    };
    auto child = loop.run(onStrand(engine.makeStrand(), startThere(&engine)));
    // Other work has come and gone before the child is asked.
    for (auto round = 0; round < 10; ++round) {
        auto const other = loop.run(onStrand(engine.makeStrand(), startThere(&engine)));
        other->closeInput();
        EXPECT_EQ(wait(other), exited(0));
    }
    loop.run(child->write("still there"));
    EXPECT_EQ(read(child), "still there");
    child->closeInput();
    EXPECT_EQ(wait(child), exited(0));
}

TEST_F(ChildProcessExitTest, descendantsThatAreLeftGetNoSignal)
{
    auto const child =
        start({.program = "/bin/sh",
               .arguments = {"-c", "exec 3<&0; "
                                   "(trap 'echo signalled; exit' TERM; echo ready; read line <&3; echo asked) & "
                                   "exec 3<&-; wait"},
               .input = PipeEnd{},
               .output = PipeEnd{},
               .session = ChildCommand::Session::own});
    EXPECT_EQ(read(child), "ready\n");
    child->leaveDescendants();
    io->childSessions().kill();
    child->terminate();
    EXPECT_EQ(wait(child), killed(SIGTERM));
    loop.run(child->write("\n"));
    EXPECT_EQ(readAll(child), "asked\n");
}

TEST_F(ChildProcessExitTest, allSessionsAreKilledAtOnceAtTheEndOfTheProgram)
{
    auto const command = ChildCommand{.program = "/bin/sh",
                                      .arguments = {"-c", "trap '' TERM HUP; sleep 1000 & echo ready; wait"},
                                      .output = PipeEnd{},
                                      .session = ChildCommand::Session::own};
    std::array const children{start(command), start(command)};
    for (auto const &child : children)
        EXPECT_EQ(read(child), "ready\n");
    io->childSessions().kill();
    for (auto const &child : children) {
        EXPECT_EQ(readAll(child), "") << "its own child had the output too, and is gone";
        EXPECT_EQ(wait(child), killed(SIGKILL));
    }
}

TEST_F(ChildProcessExitTest, aChildThatIsLeftGetsNoSignalAndOutlivesTheIoThread)
{
    TemporaryFolder const folder;
    auto const pipe = folder.path("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    FileDescriptor const end(open(pipe.c_str(), O_RDWR | O_CLOEXEC)); // for both ways, which waits for no reader
    auto child = start({.program = "/bin/sh",
                        .arguments = {"-c", "read line <'" + pipe + "'; exit $line"},
                        .session = ChildCommand::Session::own});
    auto const id = child->processId();
    child->leave();
    child->terminate();
    io->childSessions().kill();
    child.reset();
    io.reset();
    ASSERT_EQ(write(end.get(), "7\n", 2), 2);
    int status = 0;
    ASSERT_EQ(waitpid(id, &status, 0), id);
    ASSERT_TRUE(WIFEXITED(status)) << "signal " << WTERMSIG(status);
    EXPECT_EQ(WEXITSTATUS(status), 7);
}

TEST_F(ChildProcessExitTest, aChildThatIsLeftIsStillCollectedAndCanBeWaitedFor)
{
    auto const child = startSleeper();
    child->leave();
    child->kill();
    child->closeInput();
    EXPECT_EQ(wait(child), exited(0));
    EXPECT_FALSE(hasChildren());
}

TEST_F(ChildProcessExitTest, withoutASessionOfItsOwnItIsInOurs)
{
    auto const child = startSleeper();
    EXPECT_EQ(getsid(child->processId()), getsid(0));
    EXPECT_EQ(getpgid(child->processId()), getpgrp());
    child->kill();
    wait(child);
}

TEST_F(ChildProcessExitTest, aChildThatIsDroppedIsTerminatedAndCollected)
{
    auto child = startSleeper();
    auto const waiting = loop.start(child->wait());
    loop.drain();
    child.reset();
    loop.runUntil([&] { return waiting.isDone(); });

    EXPECT_EQ(waiting.value(), killed(SIGTERM));
    EXPECT_FALSE(hasChildren());
}

TEST_F(ChildProcessExitTest, aReadUnderWayFailsWhenTheChildIsDropped)
{
    auto child = startSleeper();
    auto const reading = loop.start(child->read(ChildOutput::standard));
    auto const waiting = loop.start(child->wait());
    loop.drain();
    child.reset();
    loop.runUntil([&] { return reading.isDone() && waiting.isDone(); });

    EXPECT_THROW(reading.value(), PipeError);
}

TEST_F(ChildProcessExitTest, aDroppedChildThatDoesNotHearItSeesTheEndOfItsInput)
{
    auto child = startShell("trap '' TERM; echo ready; read line; exit 5");
    EXPECT_EQ(read(child), "ready\n");
    auto const waiting = loop.start(child->wait());
    loop.drain();
    child.reset();
    loop.runUntil([&] { return waiting.isDone(); });

    EXPECT_EQ(waiting.value(), exited(5));
}

TEST_F(ChildProcessExitTest, aChildThatOutlivesTheIoThreadIsKilledAndCollected)
{
    startDeaf();
    EXPECT_TRUE(hasChildren());
    io.reset();
    EXPECT_FALSE(hasChildren());
}

TEST_F(ChildProcessExitTest, aChildThatEndsUnwatchedLeavesNoZombie)
{
    auto child = startShell("exit 0");
    EXPECT_EQ(readAll(child), "");
    EXPECT_EQ(wait(child), exited(0));
    EXPECT_FALSE(hasChildren()) << "collected before anybody is told";
}

TEST_F(ChildProcessExitTest, manyChildrenInARowLeaveNothingBehind)
{
    for (int round = 0; round < 500; ++round) {
        auto const child = start({.program = "/bin/true", .output = PipeEnd{}});
        ASSERT_EQ(wait(child), exited(0));
    }
    EXPECT_FALSE(hasChildren());
}

TEST_F(ChildProcessExitTest, manyChildrenAtOnceAreEachToldTheirOwnEnd)
{
    std::vector<ChildHandle> children;
    std::vector<Started<ExitStatus>> ends;
    for (int number = 0; number < 50; ++number) {
        children.push_back(startShell("read line; exit " + std::to_string(number)));
        ends.push_back(loop.start(children.back()->wait()));
    }
    for (auto child = children.rbegin(); child != children.rend(); ++child)
        (*child)->closeInput();
    for (int number = 0; number < 50; ++number) {
        auto const &end = ends[static_cast<std::size_t>(number)];
        loop.runUntil([&] { return end.isDone(); });
        EXPECT_EQ(end.value(), exited(number));
    }
}

TEST_F(ChildProcessExitTest, anEndThatSomebodyElseCollectedIsLost)
{
    auto const child = startSleeper();
    ::signal(SIGCHLD, SIG_IGN); // the system throws the exit code away
    child->closeInput();
    auto const status = wait(child);
    ::signal(SIGCHLD, SIG_DFL);

    EXPECT_EQ(status.cause, ExitStatus::Cause::lost);
    EXPECT_FALSE(status.isSuccess());
}

TEST_F(ChildProcessExitTest, aSignalAStopAndTheEndMayRace)
{
    WorkerPool const pool({.interactive = 2, .background = 1});
    for (int round = 0; round < exitRaces; ++round) {
        auto const child = startCat();
        auto const leaving = loop.start(onExecutor(pool.executor(WorkPriority::interactive), child->wait()));
        auto const staying = loop.start(child->wait());
        std::latch ready(3);
        std::jthread const signaller([&] {
            ready.arrive_and_wait();
            child->terminate();
        });
        std::jthread const stopper([&] {
            ready.arrive_and_wait();
            leaving.stop();
        });
        ready.arrive_and_wait();
        child->closeInput();
        ASSERT_TRUE(loop.runUntil([&] { return leaving.isDone() && staying.isDone(); }));
        EXPECT_TRUE(staying.value() == exited(0) || staying.value() == killed(SIGTERM));
        if (leaving.failed())
            EXPECT_THROW(leaving.value(), Cancelled);
        else
            EXPECT_EQ(leaving.value(), staying.value());
    }
}

} // namespace
} // namespace tw::test
