#include "tests/e2e/ProgramTest.h"

#include <chrono>
#include <filesystem>
#include <stdexcept>
#include <thread>

namespace tw::test {

namespace {

auto paintedOf(std::string const &path)
{
    return [ending = " listing painted " + path](std::string const &line) { return line.ends_with(ending); };
}

} // namespace

ProgramTest::ProgramTest()
{
    for (auto const *name : {"left/alpha/inner", "left/beta", "left/.hidden", "right/gamma", "home", "runtime"})
        folder.folder(name);
    folder.file("left/file.txt");
    // For most tests the user knows the program.
    folder.folder("home/.config/Tarnwick");
    folder.file("home/.config/Tarnwick/Tarnwick.ini", "[General]\ntw.welcomeShown=true\n");
    // Qt uses it only if nobody else may.
    std::filesystem::permissions(at("runtime"), std::filesystem::perms::owner_all);
}

Child::Environment ProgramTest::environment() const
{
    return {
        {"HOME", at("home")},
        {"XDG_RUNTIME_DIR", at("runtime")},
        {"XDG_CONFIG_HOME", ""},
        {"XDG_CACHE_HOME", ""},
        {"XDG_STATE_HOME", ""},
        {"XDG_CURRENT_DESKTOP", ""},
        // Without an address libdbus would look for a bus, and start one if it can.
        {"DBUS_SESSION_BUS_ADDRESS", "disabled:"},
        {"WAYLAND_DISPLAY", ""},
        {"DISPLAY", screen.display()},
        {"QT_QPA_PLATFORM", ""},
        {"QT_LOGGING_RULES", "tarnwick.start.debug=true"},
        {"LC_ALL", "C.UTF-8"},
    };
}

Child ProgramTest::start(std::vector<std::string> arguments) const
{
    arguments.insert(arguments.begin(), TARNWICK_PROGRAM);
    return Child(std::move(arguments), environment());
}

Child ProgramTest::startOnBothFolders() const
{
    return start({"--left", at("left"), "--right", at("right")});
}

void ProgramTest::expectBothFoldersPainted(Child &program) const
{
    expectPainted(program, at("left"));
    expectPainted(program, at("right"));
}

void ProgramTest::press(std::initializer_list<char const *> chords) const
{
    for (auto const *chord : chords)
        screen.press(chord);
}

void ProgramTest::answer(std::string const &title, std::initializer_list<char const *> chords) const
{
    for (auto const *chord : chords)
        screen.pressIn(title, chord);
    auto const deadline = std::chrono::steady_clock::now() + hangLimit;
    while (screen.titles().find(title) != std::string::npos) {
        if (std::chrono::steady_clock::now() > deadline)
            throw std::runtime_error("the question stays: " + title);
    }
}

void ProgramTest::expectPainted(Child &program, std::string const &path)
{
    program.waitForLine(paintedOf(path));
}

void ProgramTest::pressUntilPainted(Child &program, std::initializer_list<char const *> chords,
                                    std::string const &path) const
{
    auto const deadline = std::chrono::steady_clock::now() + hangLimit;
    while (!program.takeLine(paintedOf(path))) {
        if (std::chrono::steady_clock::now() > deadline || program.hasClosedOutput()) {
            ADD_FAILURE() << path << " was not painted; the program wrote:\n" << program.output();
            return;
        }
        press(chords);
    }
}

void ProgramTest::expectQuits(Child &program) const
{
    press({"ctrl+q"});
    EXPECT_EQ(program.waitForEnd(), 0) << program.output();
}

void ProgramTest::moveUntil(XServer::Place place, std::function<bool()> const &holds) const
{
    constexpr int around = 40; // pixels
    auto const deadline = std::chrono::steady_clock::now() + hangLimit;
    for (int step = 0; !holds(); ++step) {
        if (std::chrono::steady_clock::now() > deadline)
            throw std::runtime_error("the drag does not arrive");
        screen.movePointer({place.x + step % around, place.y});
    }
}

void ProgramTest::waitUntil(std::function<bool()> const &holds)
{
    auto const deadline = std::chrono::steady_clock::now() + hangLimit;
    while (!holds()) {
        if (std::chrono::steady_clock::now() > deadline)
            throw std::runtime_error("the condition waited for did not come about");
        std::this_thread::yield();
    }
}

} // namespace tw::test
