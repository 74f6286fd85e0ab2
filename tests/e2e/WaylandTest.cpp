// The program in a Wayland session: a real compositor, whose only screen is a window on the X server of the test.

#include "tests/e2e/ProgramTest.h"

#include <filesystem>

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
                      "--width=1200", "--height=760", "--idle-time=0", "--socket=" + socket},
                     ProgramTest::environment());
    }

    void expectCompositorReady(Child &compositor) const
    {
        compositor.waitForLine([](std::string const &line) { return line.find("kiosk-shell.so") != line.npos; });
        auto const deadline = std::chrono::steady_clock::now() + hangLimit;
        while (!std::filesystem::exists(at("runtime/" + socket)))
            ASSERT_LT(std::chrono::steady_clock::now(), deadline) << compositor.output();
    }

    /// Types again and again, since the compositor gives the window the keyboard in its own time.
    void typeUntil(std::function<bool()> const &isReached, std::initializer_list<char const *> chords) const
    {
        auto const deadline = std::chrono::steady_clock::now() + hangLimit;
        while (!isReached()) {
            ASSERT_LT(std::chrono::steady_clock::now(), deadline) << "the keys do not arrive";
            for (auto const *chord : chords)
                screen.pressUnderPointer(chord);
        }
    }

    std::string const socket = "wayland-of-test";
};

TEST_F(WaylandTest, theWindowShowsAFolderFollowsTheKeyboardAndQuits)
{
    auto compositor = startCompositor();
    expectCompositorReady(compositor);
    auto program = startOnBothFolders();
    expectBothFoldersPainted(program);
    auto const ending = " listing painted " + at("left/alpha");
    typeUntil([&] { return program.takeLine([&](std::string const &line) { return line.ends_with(ending); }); },
              {"Home", "Down", "Return"});
    constexpr std::size_t colorsOfText = 16;
    EXPECT_TRUE(screen.waitForPicture([](Picture const &picture) {
        auto const half = picture.width / 2;
        return picture.colorsBetween(0, half) > colorsOfText &&
               picture.colorsBetween(half, picture.width) > colorsOfText;
    }));
    screen.pressUnderPointer("ctrl+q");
    EXPECT_EQ(program.waitForEnd(), 0) << program.output();
}

} // namespace
} // namespace tw::test
