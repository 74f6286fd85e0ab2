#include "tests/e2e/ProgramTest.h"

#include <gmock/gmock.h>

#include <filesystem>

#include <unistd.h>

namespace tw::test {

namespace {

using StartTest = ProgramTest;

TEST_F(StartTest, bothPanesShowTheFoldersOfTheCommandLine)
{
    auto program = startOnBothFolders();
    expectBothFoldersPainted(program);
    expectQuits(program);
}

TEST_F(StartTest, withoutArgumentsBothPanesShowTheHomeFolder)
{
    auto program = start({});
    expectPainted(program, at("home"));
    expectPainted(program, at("home"));
    expectQuits(program);
}

TEST_F(StartTest, theWindowShowsBothListings)
{
    auto program = startOnBothFolders();
    expectBothFoldersPainted(program);
    // Smoothed text alone brings dozens of colours. What is painted reaches the screen a moment after the log.
    constexpr std::size_t colorsOfText = 16;
    EXPECT_TRUE(screen.waitForPicture([](Picture const &picture) {
        auto const half = picture.width / 2;
        return picture.colorsBetween(0, half) > colorsOfText &&
               picture.colorsBetween(half, picture.width) > colorsOfText;
    }));
    EXPECT_THAT(screen.titles(), testing::HasSubstr("Tarnwick"));
    expectQuits(program);
}

TEST_F(StartTest, closingTheWindowEndsTheProgram)
{
    auto program = startOnBothFolders();
    expectBothFoldersPainted(program);
    press({"ctrl+w"});
    EXPECT_EQ(program.waitForEnd(), 0) << program.output();
}

/// A text behind "--left" that leads nowhere.
class UnusableStartTest : public ProgramTest, public testing::WithParamInterface<char const *> {};

TEST_P(UnusableStartTest, leavesThatPaneAtHomeAndTheOtherWhereItIsToBe)
{
    folder.link("loop", at("loop"));
    std::string text = GetParam();
    if (text.starts_with("@"))
        text = at(text.substr(1));
    auto program = start({"--left", text, "--right", at("right")});
    expectPainted(program, at("right"));
    expectPainted(program, at("home"));
    // And it goes on from there.
    press({"BackSpace", "Home", "Down", "Return"});
    expectPainted(program, folder.path());
    expectQuits(program);
}

// "@" stands for the test's folder.
INSTANTIATE_TEST_SUITE_P(, UnusableStartTest,
                         testing::Values("", "nonsense.invalid", ":", "nowhere.invalid:/srv", "-x", "@missing",
                                         "@left/file.txt", "@loop", "/dev/null/x", "\xff\xfe", "@left/\x01\n", "%s%n"));

TEST_F(StartTest, anOptionWithoutItsValueIsIgnored)
{
    auto program = start({"--right", at("right"), "--left"});
    expectPainted(program, at("right"));
    expectPainted(program, at("home"));
    expectQuits(program);
}

TEST_F(StartTest, aFolderThatMayNotBeReadLeavesThePaneAtHome)
{
    auto const locked = folder.folder("locked");
    std::filesystem::permissions(locked, std::filesystem::perms::none);
    std::vector<std::string> command{TARNWICK_PROGRAM, "--left", locked, "--right", at("right")};
    // The superuser may read everything, unless it gives that up.
    if (geteuid() == 0)
        command.insert(command.begin(), {"setpriv", "--bounding-set=-dac_override,-dac_read_search"});
    Child program(command, environment());
    expectPainted(program, at("right"));
    expectPainted(program, at("home"));
    expectQuits(program);
}

TEST_F(StartTest, aFolderWhoseNameIsNoTextIsShown)
{
    folder.folder("left/caf\xe9/inside");
    auto program = start({"--left", at("left/caf\xe9"), "--right", at("right")});
    expectPainted(program, at("left/caf\xef\xbf\xbd"));
    press({"Home", "Down", "Return"});
    expectPainted(program, at("left/caf\xef\xbf\xbd/inside"));
    expectQuits(program);
}

/// Without a display: no X server, and none of its variables.
class NoDisplayTest : public testing::Test {
protected:
    static inline Child::Environment const environment{
        {"DISPLAY", ""}, {"WAYLAND_DISPLAY", ""}, {"QT_QPA_PLATFORM", ""}};
};

TEST_F(NoDisplayTest, theVersionIsPrinted)
{
    EXPECT_EQ(outputOf({TARNWICK_PROGRAM, "--version"}, environment), "Tarnwick " TARNWICK_VERSION "\n");
}

TEST_F(NoDisplayTest, theHelpNamesEveryOption)
{
    auto const help = outputOf({TARNWICK_PROGRAM, "--help"}, environment);
    for (auto const *option : {"--left", "--right", "--version", "--help"})
        EXPECT_THAT(help, testing::HasSubstr(option));
}

TEST_F(NoDisplayTest, startingAWindowFailsAndSaysWhy)
{
    Child program({TARNWICK_PROGRAM}, environment);
    EXPECT_NE(program.waitForEnd(), 0);
    EXPECT_THAT(program.output(), testing::HasSubstr("display"));
}

} // namespace

} // namespace tw::test
