#include "tests/e2e/Child.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace tw::test {
namespace {

/// The program as ssh would start it, without a display.
class AskpassModeTest : public testing::Test {
protected:
    Child start(std::vector<std::string> arguments, std::string const &account) const
    {
        arguments.insert(arguments.begin(), TARNWICK_PROGRAM);
        return Child(std::move(arguments), {{"TW_ASKPASS_ACCOUNT", account},
                                            {"HOME", home.path()},
                                            {"DBUS_SESSION_BUS_ADDRESS", ""},
                                            {"DISPLAY", ""},
                                            {"WAYLAND_DISPLAY", ""}});
    }

    TemporaryFolder home;
};

TEST_F(AskpassModeTest, withAnAccountItAnswersNobodyButItsOwnSSH)
{
    auto program = start({"ann@box's password: "}, "box");
    EXPECT_EQ(program.waitForEnd(), 1);
    EXPECT_EQ(program.output(), "");
}

TEST_F(AskpassModeTest, withAnAccountItIsNoProgramForAnythingElse)
{
    auto program = start({"--version"}, "box");
    EXPECT_EQ(program.waitForEnd(), 1);
    EXPECT_EQ(program.output(), "");
}

TEST_F(AskpassModeTest, withAnEmptyAccountItStartsAsUsual)
{
    // Nothing is set to an empty text by the way a child is started here.
    Child program({"env", "TW_ASKPASS_ACCOUNT=", TARNWICK_PROGRAM, "--version"});
    EXPECT_EQ(program.waitForEnd(), 0);
    EXPECT_EQ(program.output(), "Tarnwick " TARNWICK_VERSION "\n");
}

} // namespace
} // namespace tw::test
