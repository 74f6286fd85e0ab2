#include "TWEngine/Applications/DesktopApplications.h"

#include "TWCore/Model/ReadError.h"
#include "TWEngine/Applications/ApplicationError.h"
#include "TWEngine/Platform/Scratch.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestLoop.h"

#include <glib.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <optional>

#include <sys/stat.h>
#include <sys/wait.h>

namespace tw::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsSupersetOf;
using testing::Not;

/// A program that writes its arguments and its token into the pipe beside it.
std::string speakingProgram(TemporaryFolder const &folder, std::string const &name)
{
    auto const pipe = folder.path(name + ".said");
    EXPECT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    auto script = folder.file(name, "#!/bin/sh\nprintf '%s\\n' \"$@\" \"$DESKTOP_STARTUP_ID\" >'" + pipe + "'\n");
    EXPECT_EQ(::chmod(script.c_str(), 0755), 0);
    return script;
}

/// Waits until the program says something.
std::string whatItSaid(TemporaryFolder const &folder, std::string const &name)
{
    return contentOf(folder.path(name + ".said"));
}

/// The entries lie where GLib looks for those of the user, which this process keeps in a folder of its own. They are
/// written before GLib reads them: it learns of a later one by and by.
class DesktopApplicationsTest : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        programs = std::make_unique<TemporaryFolder>();
        auto const entries = std::string(g_get_user_data_dir()) + "/applications/";
        std::filesystem::create_directories(entries);
        std::ofstream(entries + "eye.desktop") << entryOf("Eye", "Icon=eye\nKeywords=look;\n");
        std::ofstream(entries + "pen.desktop") << entryOf("Pen", "");
        std::ofstream(entries + "ghost.desktop") << entryOf("Ghost", "NoDisplay=true\n");
        std::ofstream(entries + "mimeapps.list") << "[Added Associations]\ntext/plain=eye.desktop;pen.desktop;\n"
                                                    "[Default Applications]\ntext/plain=pen.desktop\n";
    }

    static void TearDownTestSuite() { programs.reset(); }

    static std::string entryOf(std::string const &name, std::string const &more)
    {
        return "[Desktop Entry]\nType=Application\nName=" + name + "\nExec=" + speakingProgram(*programs, name) +
               " %f\n" + more;
    }

    static inline std::unique_ptr<TemporaryFolder> programs;

    TemporaryFolder folder;
    TestLoop loop;
    EngineRuntime engine;
    DesktopApplications applications{engine};
};

TEST_F(DesktopApplicationsTest, theViewersOfATypeAreListedWithTheUsualOneFirst)
{
    auto const names = [](std::vector<Application> const &all) {
        std::vector<std::string> found;
        for (auto const &each : all)
            found.push_back(each.name + (each.isDefault ? "!" : ""));
        return found;
    };
    EXPECT_THAT(names(loop.run(applications.forType("text/plain"))), ElementsAre("Pen!", "Eye"));
    EXPECT_THAT(names(loop.run(applications.forName("a.txt"))), ElementsAre("Pen!", "Eye"));
    auto const all = loop.run(applications.all());
    EXPECT_THAT(names(all), IsSupersetOf({"Eye", "Pen"}));
    EXPECT_THAT(names(all), Not(Contains("Ghost")));
    auto const eye = std::ranges::find(all, "eye.desktop", &Application::identifier);
    ASSERT_NE(eye, all.end());
    EXPECT_EQ(eye->icon, "eye");
    EXPECT_THAT(eye->keywords, HasSubstr("look"));
}

TEST_F(DesktopApplicationsTest, aFileOpensWithTheUsualProgramOrTheOneThatWasChosen)
{
    auto const path = folder.file("a b.txt", "text");
    auto opened = loop.run(applications.open({.path = path, .contentType = "text/plain"}));
    EXPECT_EQ(opened.name, "Pen");
    EXPECT_EQ(whatItSaid(*programs, "Pen"), path + "\n\n");
    opened =
        loop.run(applications.open({.path = path, .application = "eye.desktop", .activationToken = "tarnwick_TIME7"}));
    EXPECT_EQ(opened.name, "Eye");
    EXPECT_EQ(whatItSaid(*programs, "Eye"), path + "\ntarnwick_TIME7\n");
}

TEST_F(DesktopApplicationsTest, whatCannotBeStartedSaysWhy)
{
    EXPECT_THROW(loop.run(applications.open({.path = "/a", .application = "nobody.desktop"})),
                 ApplicationError::CannotStart);
    EXPECT_THROW(loop.run(applications.open({.path = "/a", .contentType = "application/x-tarnwick-unknown"})),
                 ApplicationError::NothingOpens);
}

TEST_F(DesktopApplicationsTest, theNatureOfAFileIsReadFromIt)
{
    auto const script = folder.file("run.sh", "#!/bin/sh\n");
    ASSERT_EQ(::chmod(script.c_str(), 0755), 0);
    auto nature = loop.run(applications.natureOf(folder.link("link", script)));
    EXPECT_EQ(nature.kind, FileNature::Kind::script);
    EXPECT_TRUE(nature.mayBeExecuted);
    EXPECT_FALSE(nature.isMarkedAsFetched);
    Scratch::markAsFetched(script, "web");
    nature = loop.run(applications.natureOf(script));
    EXPECT_FALSE(nature.mayBeExecuted);
    EXPECT_EQ(nature.isMarkedAsFetched, Scratch::isMarkedAsFetched(script));
    EXPECT_EQ(loop.run(applications.natureOf(folder.file("new.txt"))).contentType, "text/plain") << "an empty file";
    EXPECT_EQ(loop.run(applications.natureOfBeginning("run.sh", "#!/bin/sh\n", 0755)).kind, FileNature::Kind::script);
}

TEST_F(DesktopApplicationsTest, whatIsNoFileIsNotWaitedFor)
{
    auto const pipe = folder.path("pipe");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_THROW(loop.run(applications.natureOf(pipe)), ApplicationError::NothingOpens);
    EXPECT_THROW(loop.run(applications.natureOf("/dev/zero")), ApplicationError::NothingOpens);
    EXPECT_THROW(loop.run(applications.natureOf(folder.path("none"))), ReadError::NotReadable);
}

TEST_F(DesktopApplicationsTest, aLauncherAndAProgramRun)
{
    auto const launcher = folder.file("x.desktop", "[Desktop Entry]\nType=Application\nName=X\nExec=" +
                                                       speakingProgram(folder, "runner") + " started %U\n");
    loop.run(applications.run(launcher, FileNature::Kind::launcher, {}));
    EXPECT_EQ(whatItSaid(folder, "runner"), "started\n\n");
    loop.run(applications.run(speakingProgram(folder, "plain"), FileNature::Kind::program, "token"));
    EXPECT_EQ(whatItSaid(folder, "plain"), "token\n");
    EXPECT_THROW(loop.run(applications.run(folder.file("empty.desktop"), FileNature::Kind::launcher, {})),
                 ApplicationError::CannotStart);
}

TEST_F(DesktopApplicationsTest, aProgramOutlivesTheEndOfThisOne)
{
    auto const said = folder.path("said");
    auto const asked = folder.path("asked");
    ASSERT_EQ(::mkfifo(said.c_str(), 0600), 0);
    ASSERT_EQ(::mkfifo(asked.c_str(), 0600), 0);
    auto const script =
        folder.file("patient", "#!/bin/sh\necho $$ >'" + said + "'\nread code <'" + asked + "'\nexit $code\n");
    ASSERT_EQ(::chmod(script.c_str(), 0755), 0);
    auto own = std::make_optional<EngineRuntime>();
    loop.run(DesktopApplications(*own).run(script, FileNature::Kind::program, {}));
    auto const process = std::stoi(contentOf(said));

    own->io().childSessions().kill();
    own.reset();
    std::fstream answer(asked); // for both ways, which waits for no reader
    answer << "7\n" << std::flush;
    int status = 0;
    ASSERT_EQ(::waitpid(process, &status, 0), process);
    ASSERT_TRUE(WIFEXITED(status)) << "signal " << WTERMSIG(status);
    EXPECT_EQ(WEXITSTATUS(status), 7);
}

} // namespace
} // namespace tw::test
