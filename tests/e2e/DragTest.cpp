// Files are dragged by the mouse of a real screen, within the program and from one program to another.

#include "tests/e2e/HostTest.h"

#include <csignal>
#include <filesystem>
#include <thread>

namespace tw::test {

namespace {

using std::filesystem::exists;

/// Folders with more files than rows fit on the screen, all of them marked: the middle of a pane is one of them.
///
///     left/many/l0 ... l59  on the left,   remote/many/r0 ... r59 of the host on the right
class DragTest : public HostTest {
protected:
    static constexpr int count = 60;

    DragTest()
    {
        folder.folder("left/many");
        folder.folder("remote/many");
        for (int number = 0; number < count; ++number) {
            folder.file("left/many/l" + std::to_string(number), "words");
            folder.file("remote/many/r" + std::to_string(number), "words");
        }
    }

    Child startOnMany() const { return start({"--left", at("left/many"), "--right", alias + ":" + remote("many")}); }

    void expectManyPainted(Child &program) const
    {
        expectPainted(program, at("left/many"));
        expectPainted(program, remote("many"));
    }

    XServer::Place middleOf(int half) const { return screen.middleOfHalf("Tarnwick", half); }

    static void expectReady(Child &partner)
    {
        partner.waitForLine([](std::string const &line) { return line == "ready"; });
    }

    /// Moves a drag within the window of the other program until it has twice read what is offered, and answers what it
    /// said. The toolkit asks a second time only when it knows the first answer, and drops nothing before.
    std::string dragOver(Child &partner) const
    {
        std::string said;
        int answers = 0;
        moveUntil({40, 40}, [&] {
            answers += partner.takeLine([&](std::string const &line) {
                if (!line.starts_with("over: 60"))
                    return false;
                said = line;
                return true;
            });
            return answers >= 2;
        });
        return said;
    }
};

TEST_F(DragTest, markedFilesAreDraggedFromOnePaneToTheOther)
{
    auto program = startOnMany();
    expectManyPainted(program);
    press({"ctrl+a"});
    screen.beginDrag(middleOf(0));
    moveUntil(middleOf(1), [&] {
        return program.takeLine([&](std::string const &line) {
            return line.ends_with(" drag shows copy 60 items to " + alias + ":" + remote("many"));
        });
    });
    screen.releaseButton();
    waitUntil([&] { return exists(remote("many/l59")) && exists(remote("many/l0")); });
    EXPECT_TRUE(exists(at("left/many/l0")));
    program.signal(SIGTERM);
    EXPECT_EQ(program.waitForEnd(), 0) << program.output();
}

TEST_F(DragTest, anotherProgramGetsFilesOfAHostWithTheDropAndNotBefore)
{
    auto program = startOnMany();
    expectManyPainted(program);
    Child partner({TARNWICK_DRAG_PARTNER}, environment());
    expectReady(partner);
    press({"Tab", "ctrl+a"});
    screen.beginDrag(middleOf(1));
    EXPECT_EQ(dragOver(partner), "over: 60 offered, 0 readable, 0 bytes");
    screen.releaseButton();
    EXPECT_EQ(partner.waitForLine([](std::string const &line) { return line.starts_with("dropped"); }),
              "dropped: 60 offered, 60 readable, 300 bytes");
    expectQuits(program);
}

TEST_F(DragTest, escapeEndsADropThatWaitsForItsFiles)
{
    auto program = startOnMany();
    expectManyPainted(program);
    Child partner({TARNWICK_DRAG_PARTNER}, environment());
    expectReady(partner);
    press({"Tab", "ctrl+a"});
    screen.beginDrag(middleOf(1));
    dragOver(partner);
    line.stall();
    screen.releaseButton();
    screen.pressIn("Tarnwick", "Escape");
    partner.waitForLine([](std::string const &line) { return line == "left"; });
    press({"Tab", "BackSpace"});
    expectPainted(program, at("left"));
    expectQuits(program);
    EXPECT_EQ(partner.output().find("dropped"), std::string::npos);
}

TEST_F(DragTest, aFileOfAnotherProgramIsCopiedIntoThePaneThatItIsDroppedOn)
{
    auto program = startOnMany();
    expectManyPainted(program);
    Child partner({TARNWICK_DRAG_PARTNER, at("left/file.txt")}, environment());
    expectReady(partner);
    screen.beginDrag({40, 40});
    moveUntil(middleOf(0),
              [&] { return partner.takeLine([](std::string const &line) { return line == "accepted"; }); });
    screen.releaseButton();
    waitUntil([&] { return exists(at("left/many/file.txt")); });
    partner.waitForLine([](std::string const &line) { return line == "drag over"; });
    EXPECT_TRUE(exists(at("left/file.txt")));
    expectQuits(program);
}

} // namespace

} // namespace tw::test
