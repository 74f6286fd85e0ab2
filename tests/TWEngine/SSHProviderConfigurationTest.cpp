#include "tests/support/SSHProviderTest.h"

namespace tw::test {
namespace {

/// Hosts for which the user's configuration asks for what a person at a terminal wants.
class SSHProviderConfigurationTest : public SSHProviderTest, public testing::WithParamInterface<char const *> {
protected:
    SSHProviderConfigurationTest()
    {
        reach();
        client.add("host", host->address().through(line->port()), SSHClient::Knowledge::right, lines());
    }

    /// The configuration, with the port of the line, which is taken, in place of TAKEN.
    std::string lines() const
    {
        std::string text = GetParam();
        constexpr std::string_view mark = "TAKEN";
        if (auto const at = text.find(mark); at != std::string::npos)
            text.replace(at, mark.size(), std::to_string(line->port()));
        return text;
    }
};

TEST_P(SSHProviderConfigurationTest, sessionsAndTransfersAreAsTheyWouldBeWithoutIt)
{
    auto const provider = connected({.knowsSessionType = true});
    auto const bytes = std::string("\r\n\0\x04\xff", 5);
    auto const path = folder.file("file", bytes);
    EXPECT_EQ(run(provider, "tty"), "not a tty\n");
    EXPECT_EQ(loop.run(provider->readChunk(path, 0, bytes.size())), bytes);
    loop.run(provider->download(path, local.path("copy")));
    EXPECT_EQ(contentOf(local.path("copy")), bytes);
    loop.run(provider->upload(local.path("copy"), folder.path("back")));
    EXPECT_EQ(contentOf(folder.path("back")), bytes);
}

INSTANTIATE_TEST_SUITE_P(Lines, SSHProviderConfigurationTest,
                         testing::Values("RequestTTY force", "RequestTTY force\nRemoteCommand cat",
                                         "PermitLocalCommand yes\nLocalCommand echo printed by the local command",
                                         "LocalForward 127.0.0.1:TAKEN 127.0.0.1:1\nExitOnForwardFailure yes",
                                         "ForkAfterAuthentication yes", "StdinNull yes", "SessionType none",
                                         "ControlMaster yes\nControlPath none"));

} // namespace
} // namespace tw::test
