#include "TWEngine/Applications/DesktopExec.h"

#include "TWEngine/Applications/FileNature.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Words = std::vector<std::string>;

TEST(DesktopExecTest, codesAndQuotesBecomeArguments)
{
    struct Case {
        std::string exec;
        Words command;
    };

    std::string const path = "/tmp/a b%41\xff";
    std::string const address = "file:///tmp/a%20b%2541%FF";
    for (auto const &[exec, command] : std::vector<Case>{
             {"view %f", {"view", path}},
             {"view %F", {"view", path}},
             {"view %u", {"view", address}},
             {"view --new %U --end", {"view", "--new", address, "--end"}},
             {"view", {"view", path}},
             {"view --file=%f", {"view", "--file=" + path}},
             {"run @@u %U @@", {"run", "@@u", address, "@@"}},
             {R"("/opt/my view" "say \"x\"" %f)", {"/opt/my view", "say \"x\"", path}},
             {"view %i %c %k 100%% %f", {"view", "--icon", "eye", "The Viewer", "/apps/v.desktop", "100%", path}},
             {"view %d %D %n %N %v %m %f", {"view", path}},
             {R"(view "" %f)", {"view", "", path}},
         }) {
        DesktopExec::Entry const entry{.exec = exec, .name = "The Viewer", .icon = "eye", .file = "/apps/v.desktop"};
        EXPECT_EQ(DesktopExec::commandLine(entry, path), command) << exec;
    }
}

TEST(DesktopExecTest, aProgramStartsWithoutAFile)
{
    EXPECT_THAT(DesktopExec::commandLine({.exec = "view %U --quiet"}, std::nullopt), ElementsAre("view", "--quiet"));
    EXPECT_THAT(DesktopExec::commandLine({.exec = "view"}, std::nullopt), ElementsAre("view"));
}

TEST(DesktopExecTest, aMalformedLineIsNoCommand)
{
    for (auto const *const exec : {"", "  ", "view \"%f", "view \\"})
        EXPECT_THAT(DesktopExec::commandLine({.exec = exec}, "/a"), IsEmpty()) << exec;
}

TEST(DesktopExecTest, theFirstTerminalThereIsRunsTheCommand)
{
    auto const has = [](std::string const &wanted) {
        return [wanted](std::string const &program) { return program == wanted; };
    };
    EXPECT_THAT(DesktopExec::inTerminal({"top", "-d"}, has("xdg-terminal-exec")),
                ElementsAre("xdg-terminal-exec", "top", "-d"));
    EXPECT_THAT(DesktopExec::inTerminal({"top"}, has("gnome-terminal")), ElementsAre("gnome-terminal", "--", "top"));
    EXPECT_THAT(DesktopExec::inTerminal({"top"}, has("xterm")), ElementsAre("xterm", "-e", "top"));
    EXPECT_THAT(DesktopExec::inTerminal({"top"}, has("none")), IsEmpty());
}

TEST(FileNatureTest, whatExecutesIsToldFromWhatIsOnlyMarkedAsExecutable)
{
    using Kind = FileNature::Kind;

    struct Case {
        FileNature::Facts facts;
        Kind kind;
    };

    for (auto const &[facts, kind] : std::vector<Case>{
             {{"a.txt", "text", "text/plain", 0644}, Kind::document},
             {{"photo.jpg", "\xff\xd8\xff", "image/jpeg", 0777}, Kind::document}, // on a disk of another system
             {{"run.sh", "#!/bin/sh\n", "application/x-shellscript", 0755}, Kind::script},
             {{"run.sh", "#!/bin/sh\n", "application/x-shellscript", 0644}, Kind::document},
             {{"README", "see", "text/plain", 0755}, Kind::document},
             {{"tool",
               "\x7f"
               "ELF\x02",
               "application/x-executable", 0755},
              Kind::program},
             {{"tool",
               "\x7f"
               "ELF\x02",
               "application/octet-stream", 0600},
              Kind::program},
             {{"setup.exe", "MZ", "application/vnd.microsoft.portable-executable", 0644}, Kind::program},
             {{"app.jar", "PK", "application/x-java-archive", 0644}, Kind::program},
             {{"x.desktop", "", "text/plain", 0644}, Kind::launcher},
             {{"x", "[Desktop Entry]", "application/x-desktop", 0644}, Kind::launcher},
         })
        EXPECT_EQ(FileNature::of(facts).kind, kind) << facts.name << " " << facts.contentType;
}

} // namespace
} // namespace tw::test
