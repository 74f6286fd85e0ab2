#include "tests/e2e/HostTest.h"

#include <gmock/gmock.h>

#include <csignal>

namespace tw::test {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;

/// A host that the program cannot reach without asking, and a user at the keyboard.
class HostLoginTest : public HostTest {
protected:
    /// The pane with the host has the keyboard from the start on.
    Child startOnHost() const { return start({"--left", alias + ":" + remote(), "--right", at("right")}); }

    /// Waits until a strip shows these words.
    static void expectStrip(Child &program, std::string const &words)
    {
        program.waitForLine(
            [ending = " strip shows " + words](std::string const &text) { return text.ends_with(ending); });
    }

    /// Waits until the sheet of a title is on screen, and answers the words in it.
    static std::string wordsOfSheet(Child &program, std::string const &title)
    {
        return program.waitForLine([start = " sheet shows " + title + ' '](std::string const &text) {
            return text.find(start) != std::string::npos;
        });
    }

    /// From now on the key that the host accepts has the passphrase "open". The path of the key.
    std::string protectKey() const
    {
        auto key = host.address().identityFile;
        outputOf({"ssh-keygen", "-q", "-p", "-P", "", "-N", "open", "-f", key});
        return key;
    }

    std::string knownKeys() const { return contentOf(client.home() + "/.ssh/known_hosts_" + alias); }

    std::string const asking = alias + ": the login waits for your answer. Escape gives up.";
    std::string const loginTitle = "Log in to " + alias;
    std::string const keyTitle = "Unknown key of " + alias;
};

TEST_F(HostLoginTest, aKeyWithAPassphraseOpensTheFolderOnceItIsTyped)
{
    auto const key = protectKey();
    auto program = startOnHost();
    expectStrip(program, "The key " + std::filesystem::path(key).filename().string() + " for " + alias +
                             " needs its passphrase. Log in to give it, or add the key to your agent.");
    expectPainted(program, at("home"));
    press({"Return"});
    EXPECT_THAT(wordsOfSheet(program, loginTitle), HasSubstr("Enter passphrase for key '" + key + "'"));
    expectStrip(program, asking);
    answer(loginTitle, {"o", "p", "e", "n", "Return"});
    expectPainted(program, remote());
    press({"Down", "Return"});
    expectPainted(program, remote("first"));
    expectQuits(program);
}

TEST_F(HostLoginTest, anUnknownKeyIsShownAndOnlyAcceptedByName)
{
    client.add(alias, host.address().through(line.port()), SSHClient::Knowledge::none, "StrictHostKeyChecking ask\n");
    auto const cancelled = "The login to " + alias + " was cancelled. Log in to be asked again.";
    auto program = startOnHost();
    expectStrip(program, "The key of " + alias + " is not known yet. Log in to see it and to decide.");
    expectPainted(program, at("home"));
    press({"Return"});
    EXPECT_THAT(wordsOfSheet(program, keyTitle), HasSubstr("key fingerprint is SHA256:"));
    expectStrip(program, asking);
    answer(keyTitle, {"Return"});
    expectStrip(program, cancelled);
    press({"Return"});
    wordsOfSheet(program, keyTitle);
    expectStrip(program, asking);
    answer(keyTitle, {"Tab", "Return"}); // on Accept Key
    expectStrip(program, cancelled);
    EXPECT_THAT(knownKeys(), IsEmpty());

    press({"Return"});
    wordsOfSheet(program, keyTitle);
    answer(keyTitle, {"Tab", "space"});
    expectPainted(program, remote());
    EXPECT_THAT(knownKeys(), HasSubstr(host.address().hostKey));
    expectQuits(program);
}

TEST_F(HostLoginTest, aLoginThatAsksHoldsUpNeitherTheEndNorLeavesAClient)
{
    protectKey();
    auto program = startOnHost();
    expectPainted(program, at("home"));
    press({"Return"});
    wordsOfSheet(program, loginTitle);
    program.signal(SIGTERM);
    EXPECT_EQ(program.waitForEnd(), 0) << program.output();
    line.waitUntil([](Traffic const &traffic) { return traffic.open == 0; });
}

} // namespace
} // namespace tw::test
