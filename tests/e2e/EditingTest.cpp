// F4 on a file of a host, with an editor that is a program of its own.

#include "tests/e2e/HostTest.h"

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace tw::test {

namespace {

/// The file of the host is edited by a stand-in: either an application, which says which copy it has got, or an editor
/// in a terminal, which saves and ends.
class EditingTest : public HostTest {
protected:
    Child::Environment environment() const override
    {
        auto changes = HostTest::environment();
        changes["PATH"] = at("bin") + ":" + std::getenv("PATH");
        changes["XDG_DATA_HOME"] = "";
        changes["VISUAL"] = "";
        changes["EDITOR"] = "editor --wait";
        return changes;
    }

    void script(std::string const &name, std::string const &lines) const
    {
        folder.folder("bin");
        auto const path = folder.file("bin/" + name, "#!/bin/sh\n" + lines + "\n");
        std::filesystem::permissions(path, std::filesystem::perms::owner_all);
    }

    /// The application for all text: an editor that leaves the saving to this test.
    void installApplication() const
    {
        script("pen", "printf '%s' \"$1\" >'" + at("opened.new") + "' && mv '" + at("opened.new") + "' '" +
                          at("opened") + "'");
        folder.folder("home/.local/share/applications");
        folder.file("home/.local/share/applications/pen.desktop",
                    "[Desktop Entry]\nType=Application\nName=Pen\nExec=pen %f\n");
        folder.file("home/.local/share/applications/mimeapps.list", "[Default Applications]\ntext/plain=pen.desktop\n");
    }

    /// The copy that the application was started with.
    std::string openedCopy() const
    {
        waitUntil([&] { return std::filesystem::exists(at("opened")); });
        return contentOf(at("opened"));
    }

    Child startAtTheFile() const
    {
        folder.file("remote/second/of files/note.txt", "as it was");
        std::filesystem::remove(remote("second/of files/file"));
        return start({"--left", at("left"), "--right", alias + ":" + remote("second/of files")});
    }

    void editTheFile(Child &program) const
    {
        expectPainted(program, remote("second/of files"));
        press({"Tab", "End", "F4"});
    }

    void expectOnHost(std::string const &content) const
    {
        waitUntil([&] { return contentOf(remote("second/of files/note.txt")) == content; });
    }

    bool isEditing() const { return screen.titles().find("Editing on " + alias) != std::string::npos; }
};

TEST_F(EditingTest, aSaveThatAKilledProgramHadNotUploadedIsOfferedAgain)
{
    installApplication();
    {
        auto program = startAtTheFile();
        editTheFile(program);
        auto const copy = openedCopy();
        waitUntil([&] { return isEditing(); });
        line.stall();
        std::ofstream(copy) << "as it is saved";
        program.signal(SIGKILL);
        program.waitForEnd();
    }
    EXPECT_EQ(contentOf(remote("second/of files/note.txt")), "as it was");
    line.cut();
    line.resume();
    auto program = startOnBothFolders();
    expectBothFoldersPainted(program);
    waitUntil([&] { return isEditing(); });
    EXPECT_EQ(contentOf(remote("second/of files/note.txt")), "as it was") << "it is not uploaded unasked";
    press({"ctrl+j"}); // to the first button, which uploads
    screen.pressIn("Editing on " + alias, "space");
    expectOnHost("as it is saved");
    program.signal(SIGTERM);
    EXPECT_EQ(program.waitForEnd(), 0) << program.output();
}

TEST_F(EditingTest, whatAnEditorInATerminalSavesReachesTheHostAndItsEndEndsTheEditing)
{
    folder.file("home/.config/Tarnwick/Tarnwick.ini", "[General]\ntw.welcomeShown=true\ntw.editor=terminal\n");
    script("xdg-terminal-exec", "exec \"$@\"");
    script("editor", "[ \"$1\" = --wait ] && printf 'from a terminal' >\"$2\"");
    auto program = startAtTheFile();
    editTheFile(program);
    expectOnHost("from a terminal");
    waitUntil([&] { return !isEditing(); });
    waitUntil([&] { return std::filesystem::is_empty(at("home/.cache/com.velmora.Tarnwick/edits")); });
    expectQuits(program);
}

} // namespace

} // namespace tw::test
