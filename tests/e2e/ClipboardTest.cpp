// The clipboard between the program and others, on a real X server.

#include "TWCore/Model/PercentCoding.h"
#include "tests/e2e/ProgramTest.h"

#include <filesystem>

namespace tw::test {

namespace {

class ClipboardTest : public ProgramTest {
protected:
    Child startPeer(std::vector<std::string> arguments) const
    {
        arguments.insert(arguments.begin(), TARNWICK_CLIPBOARD_PEER);
        return Child(std::move(arguments), environment());
    }

    static void expectSays(Child &peer, std::string const &line)
    {
        peer.waitForLine([&line](std::string const &said) { return said == line; });
    }

    std::string content() const { return outputOf({TARNWICK_CLIPBOARD_PEER, "show"}, environment()); }

    /// Types until the clipboard has a format with these bytes, since the program takes a moment to have the keyboard.
    void pressUntilContent(std::initializer_list<char const *> chords, std::string const &type,
                           std::string const &bytes) const
    {
        auto const wanted = type + " " + PercentCoding::encoded(bytes) + "\n";
        auto const deadline = std::chrono::steady_clock::now() + hangLimit;
        std::string found;
        while (!(found = content()).contains(wanted)) {
            ASSERT_LT(std::chrono::steady_clock::now(), deadline) << wanted << "is not among:\n" << found;
            press(chords);
        }
    }
};

TEST_F(ClipboardTest, whatIsCutIsOfferedAsOtherFileManagersReadIt)
{
    std::string const name = "\xff %.txt";
    folder.file("right/gamma/" + name);
    auto program = start({"--left", at("right/gamma"), "--right", at("right")});
    expectPainted(program, at("right/gamma"));
    auto const address = "file://" + PercentCoding::encoded(at("right/gamma/" + name));
    pressUntilContent({"End", "ctrl+x"}, "x-special/gnome-copied-files", "cut\n" + address);
    auto const all = content();
    EXPECT_TRUE(all.contains("text/uri-list " + PercentCoding::encoded(address + "\r\n") + "\n")) << all;
    EXPECT_TRUE(all.contains("application/x-kde-cutselection 1\n")) << all;
    expectQuits(program);
}

TEST_F(ClipboardTest, whatAnotherProgramHasCutMovesHereAndIsOfferedNoMore)
{
    auto const file = at("left/file.txt");
    auto peer = startPeer(
        {"offer", "text/uri-list", PercentCoding::encoded("file://" + file), "application/x-kde-cutselection", "1"});
    expectSays(peer, "ready");
    auto program = start({"--left", at("right"), "--right", at("left")});
    expectPainted(program, at("right"));
    press({"ctrl+v"});
    waitUntil([&] { return std::filesystem::exists(at("right/file.txt")); });
    waitUntil([&] { return content().empty(); });
    EXPECT_FALSE(std::filesystem::exists(file));
    expectQuits(program);
}

TEST_F(ClipboardTest, aProgramThatHangsIsAskedOnceAndHoldsUpNothing)
{
    auto peer = startPeer({"hang"});
    expectSays(peer, "ready");
    auto program = startOnBothFolders();
    expectBothFoldersPainted(program);
    press({"ctrl+v", "Home", "Down", "Return"});
    expectPainted(program, at("left/alpha"));
    expectSays(peer, "asked TARGETS");
    expectQuits(program);
    EXPECT_FALSE(peer.takeLine([](std::string const &line) { return line.starts_with("asked"); })) << peer.output();
}

TEST_F(ClipboardTest, whatWasCopiedOutlivesTheProgram)
{
    auto manager = startPeer({"keep"});
    expectSays(manager, "ready");
    auto program = startOnBothFolders();
    expectBothFoldersPainted(program);
    auto const list = "file://" + at("left/file.txt") + "\r\n";
    pressUntilContent({"End", "ctrl+c"}, "text/uri-list", list);
    expectQuits(program);
    expectSays(manager, "kept");
    auto const kept = content();
    EXPECT_TRUE(kept.contains("text/uri-list " + PercentCoding::encoded(list) + "\n")) << kept;
    EXPECT_TRUE(kept.contains("application/vnd.velmora.tarnwick.files+json ")) << kept;
}

} // namespace

} // namespace tw::test
