// The program in a Wayland session: a real compositor, whose only screen is a window on the X server of the test.

#include "tests/e2e/ProgramTest.h"

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <string_view>

namespace tw::test {

namespace {

class WaylandTest : public ProgramTest {
protected:
    Child::Environment environment() const override
    {
        auto changes = ProgramTest::environment();
        changes["XDG_SESSION_TYPE"] = "wayland"; // what Qt goes by
        changes["WAYLAND_DISPLAY"] = socket;
        changes["DISPLAY"] = "";
        return changes;
    }

    Child startCompositor() const
    {
        return Child({"weston", "--no-config", "--backend=x11-backend.so", "--use-pixman", "--shell=kiosk-shell.so",
                      "--width=" + std::to_string(width), "--height=" + std::to_string(height), "--idle-time=0",
                      "--socket=" + socket},
                     ProgramTest::environment());
    }

    void expectCompositorReady(Child &compositor) const
    {
        compositor.waitForLine([](std::string const &line) { return line.find("kiosk-shell.so") != line.npos; });
        auto const deadline = std::chrono::steady_clock::now() + hangLimit;
        while (!std::filesystem::exists(at("runtime/" + socket)))
            ASSERT_LT(std::chrono::steady_clock::now(), deadline) << compositor.output();
    }

    /// Waits until the compositor shows both panes: what the program has painted may not be there yet.
    bool isOnScreen() const
    {
        constexpr std::size_t colorsOfText = 16;
        return screen.waitForPicture([](Picture const &picture) {
            auto const half = picture.width / 2;
            return picture.colorsBetween(0, half) > colorsOfText &&
                   picture.colorsBetween(half, picture.width) > colorsOfText;
        });
    }

    /// Types one key again and again, since the compositor gives the window the keyboard in its own time. Only one: of
    /// several, the window may get the last alone.
    void typeUntil(std::function<bool()> const &isReached, char const *chord) const
    {
        auto const deadline = std::chrono::steady_clock::now() + hangLimit;
        while (!isReached()) {
            ASSERT_LT(std::chrono::steady_clock::now(), deadline) << "the keys do not arrive";
            screen.pressUnderPointer(chord);
        }
    }

    /// The program with a folder on the left that has more files than rows fit, so that the middle of its pane is a
    /// file.
    Child startOnMany() const
    {
        constexpr int count = 60;
        folder.folder("left/many");
        for (int number = 0; number < count; ++number)
            folder.file("left/many/l" + std::to_string(number), content);
        return start({"--left", at("left/many"), "--right", at("right/gamma")});
    }

    /// Of the only window, which fills the compositor's in the corner of the screen.
    static XServer::Place middleOf(int half) { return {width * (1 + 2 * half) / 4, height / 2}; }

    /// Drags the file in the middle of the left pane over the right one.
    void dragToTheRight(Child &program) const
    {
        expectPainted(program, at("left/many"));
        expectPainted(program, at("right/gamma"));
        ASSERT_TRUE(isOnScreen());
        screen.beginDrag(middleOf(0));
        moveUntil(middleOf(1), [&] {
            return program.takeLine(
                [&](std::string const &line) { return line.ends_with(" to " + at("right/gamma")); });
        });
    }

    /// True if a file is on the right, with all that is in it.
    bool hasArrived() const
    {
        std::filesystem::directory_iterator const files(at("right/gamma"));
        return std::ranges::any_of(files, [](auto const &file) {
            std::error_code gone;
            return file.path().filename().string().starts_with('l') && file.file_size(gone) == content.size();
        });
    }

    static constexpr int width = 1200;
    static constexpr int height = 760;
    static constexpr std::string_view content = "words";
    std::string const socket = "wayland-of-test";
};

TEST_F(WaylandTest, theWindowShowsAFolderFollowsTheKeyboardAndQuits)
{
    auto compositor = startCompositor();
    expectCompositorReady(compositor);
    auto program = start({"--left", at("left/alpha"), "--right", at("right")});
    expectPainted(program, at("left/alpha"));
    expectPainted(program, at("right"));
    auto const ending = " listing painted " + at("left"); // the cursor is on ".."
    typeUntil([&] { return program.takeLine([&](std::string const &line) { return line.ends_with(ending); }); },
              "Return");
    EXPECT_TRUE(isOnScreen());
    screen.pressUnderPointer("ctrl+q");
    EXPECT_EQ(program.waitForEnd(), 0) << program.output();
}

TEST_F(WaylandTest, aFileIsDraggedFromOnePaneToTheOther)
{
    auto compositor = startCompositor();
    expectCompositorReady(compositor);
    auto program = startOnMany();
    dragToTheRight(program);
    screen.releaseButton();
    waitUntil([&] { return hasArrived(); });
    program.signal(SIGTERM);
    EXPECT_EQ(program.waitForEnd(), 0) << program.output();
}

TEST_F(WaylandTest, quittingInTheMiddleOfADragEndsTheDragFirst)
{
    auto compositor = startCompositor();
    expectCompositorReady(compositor);
    auto program = startOnMany();
    dragToTheRight(program);
    program.signal(SIGTERM);
    moveUntil(middleOf(0), [&] {
        program.takeLine([](std::string const &) { return false; });
        return program.hasClosedOutput();
    });
    EXPECT_EQ(program.waitForEnd(), 0) << program.output();
    EXPECT_TRUE(std::filesystem::is_empty(at("right/gamma")));
}

} // namespace
} // namespace tw::test
