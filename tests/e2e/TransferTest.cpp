#include "tests/e2e/HostTest.h"
#include "tests/support/TemporaryFolder.h"

#include <csignal>
#include <thread>

namespace tw::test {

namespace {

using std::filesystem::exists;

/// Files that move between this machine and a host, as a user moves them: by keys alone.
///
///     left/alpha/inner/  left/beta/  left/file.txt       remote/first/inner/  remote/second/of files/file
class TransferTest : public HostTest {
protected:
    TransferTest() { folder.file("left/file.txt", "words"); }

    /// The file takes minutes.
    Child startWithLargeFile()
    {
        folder.file("remote/large");
        std::filesystem::resize_file(remote("large"), 100'000'000);
        line.setSpeed(500'000);
        return startWithHost();
    }

    template <class Condition>
    static void waitUntil(Condition const &holds)
    {
        auto const deadline = std::chrono::steady_clock::now() + hangLimit;
        while (!holds()) {
            if (std::chrono::steady_clock::now() > deadline)
                throw std::runtime_error("the condition waited for did not come about");
            std::this_thread::yield();
        }
    }

    bool isOnScreen(std::string const &title) const { return screen.titles().find(title) != std::string::npos; }

    /// The file is in that folder, whole.
    static bool isWhole(std::string const &path) { return exists(path) && contentOf(path) == "words"; }

    /// A file arrives a moment before the work ends, and until then the key asks. The signal never does.
    static void expectEndsAtASignal(Child &program)
    {
        program.signal(SIGTERM);
        EXPECT_EQ(program.waitForEnd(), 0) << program.output();
    }

    /// Begins to copy a large file from the host, over a slow line, and waits for the sheet.
    void copySlowly(Child &program)
    {
        expectBothPainted(program);
        press({"Tab", "End", "F5"});
        answer("Copy 1 item", {"Return"});
        waitUntil([&] { return isOnScreen("Copy 1 item…"); });
    }
};

TEST_F(TransferTest, f5CopiesToTheHost)
{
    auto program = startWithHost();
    expectBothPainted(program);
    press({"End", "F5"});
    answer("Copy 1 item", {"Return"});
    waitUntil([&] { return isWhole(remote("file.txt")); });
    EXPECT_TRUE(isWhole(at("left/file.txt")));
    expectEndsAtASignal(program);
}

TEST_F(TransferTest, f5CopiesFromTheHost)
{
    auto program = startWithHost();
    expectBothPainted(program);
    press({"Tab", "Home", "Down", "F5"});
    answer("Copy 1 item", {"Return"});
    waitUntil([&] { return exists(at("left/first/inner")); });
    expectEndsAtASignal(program);
}

TEST_F(TransferTest, aNameThatIsTakenIsAskedAboutAndBothAreKeptByAKey)
{
    folder.file("remote/file.txt", "other words");
    auto program = startWithHost();
    expectBothPainted(program);
    press({"End", "F5"});
    answer("Copy 1 item", {"Return"});
    answer("Copy over what is there", {"k"});
    waitUntil([&] { return isWhole(remote("file(2).txt")); });
    EXPECT_EQ(contentOf(remote("file.txt")), "other words");
    expectEndsAtASignal(program);
}

TEST_F(TransferTest, returnOverwritesNothing)
{
    folder.file("remote/file.txt", "other words");
    auto program = startWithHost();
    expectBothPainted(program);
    press({"End", "F5"});
    answer("Copy 1 item", {"Return"});
    answer("Copy over what is there", {"Return"});
    expectQuits(program);
    EXPECT_EQ(contentOf(remote("file.txt")), "other words");
}

TEST_F(TransferTest, f6MovesAFolderToTheHost)
{
    auto program = startWithHost();
    expectBothPainted(program);
    press({"Home", "Down", "F6"});
    answer("Move 1 item", {"Return"});
    waitUntil([&] { return exists(remote("alpha/inner")) && !exists(at("left/alpha")); });
    expectEndsAtASignal(program);
}

TEST_F(TransferTest, aCopyUnderWayIsCancelledByEscape)
{
    auto program = startWithLargeFile();
    copySlowly(program);
    answer("Copy 1 item…", {"Escape"});
    EXPECT_TRUE(exists(remote("large")));
    expectQuits(program);
}

TEST_F(TransferTest, whatASilentHostIsAskedBeforeACopyIsCancelledByEscape)
{
    auto program = startWithHost();
    expectBothPainted(program);
    line.stall();
    press({"End", "F5"});
    screen.pressIn("Copy 1 item", "Return");
    answer("Copy 1 item: asking", {"Escape"});
    line.resume();
    expectQuits(program);
    EXPECT_FALSE(exists(remote("file.txt")));
}

TEST_F(TransferTest, whileACopyGoesOnInTheBackgroundThePanesAreUsedAndQuittingAsks)
{
    auto program = startWithLargeFile();
    copySlowly(program);
    answer("Copy 1 item…", {"Return"});
    press({"Tab", "Home", "Down", "Return"});
    expectPainted(program, at("left/alpha"));
    press({"ctrl+q"});
    answer("Quit Tarnwick", {"Return"});
    press({"Down", "Return"});
    expectPainted(program, at("left/alpha/inner"));
    press({"ctrl+q"});
    answer("Quit Tarnwick", {"shift+Tab", "space"});
    EXPECT_EQ(program.waitForEnd(), 0) << program.output();
}

} // namespace

} // namespace tw::test
