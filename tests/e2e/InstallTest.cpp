#include "tests/e2e/Child.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace tw::test {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::Not;

constexpr auto version = "Tarnwick " TARNWICK_VERSION "\n";

/// The program as it is installed: an executable, and the library with the window that it loads.
class InstallTest : public testing::Test {
protected:
    InstallTest() { outputOf({"cmake", "--install", TARNWICK_BUILD, "--prefix", prefix.path()}); }

    TemporaryFolder prefix;
    std::string const program = prefix.path("bin/tarnwick");
};

TEST_F(InstallTest, theProgramFindsItsLibraryWhereverBothAre)
{
    EXPECT_EQ(outputOf({program, "--version"}), version);
    fs::rename(prefix.path("bin"), prefix.path("other"));
    EXPECT_EQ(outputOf({prefix.path("other/tarnwick"), "--version"}), version);
}

TEST_F(InstallTest, whatStartsClientsAndDecodesPicturesLiesWhereTheProgramLooksForIt)
{
    for (auto const *const each : {"starter", "decoder"})
        EXPECT_TRUE(fs::exists(fs::path(program).parent_path() / "../lib/tarnwick" / each)) << each;
}

TEST_F(InstallTest, aLinkToTheProgramFindsItToo)
{
    EXPECT_EQ(outputOf({prefix.link("link", program), "--version"}), version);
}

TEST_F(InstallTest, withoutItsLibraryItSaysSo)
{
    fs::remove_all(prefix.path("lib"));
    Child child({program, "--version"});
    EXPECT_EQ(child.waitForEnd(), 1);
    EXPECT_THAT(child.output(), HasSubstr("tarnwick: "));
    EXPECT_THAT(child.output(), HasSubstr("window.so"));
}

TEST_F(InstallTest, aProcessThatSSHAsksLoadsNoToolkit)
{
    auto const loaded = [this](Child::Environment changes, std::vector<std::string> const &arguments) {
        changes["LD_DEBUG"] = "files";
        auto all = arguments;
        all.insert(all.begin(), program);
        Child child(all, changes);
        child.waitForEnd();
        return child.output();
    };
    EXPECT_THAT(loaded({}, {"--version"}), HasSubstr("libQt6")) << "this is how it would be seen";
    auto const asked = loaded({{"TW_ASKPASS_ACCOUNT", "box"}}, {"ann@box's password: "});
    EXPECT_THAT(asked, HasSubstr("libsecret"));
    EXPECT_THAT(asked, Not(HasSubstr("libQt6")));
    EXPECT_THAT(asked, Not(HasSubstr("window.so")));
}

} // namespace
} // namespace tw::test
