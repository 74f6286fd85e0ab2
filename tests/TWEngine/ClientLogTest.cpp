#include "TWEngine/SSH/ClientLog.h"

#include "TWEngine/Runtime/EngineRuntime.h"
#include "tests/hosts/CommandOutcome.h"
#include "tests/hosts/SSHClient.h"
#include "tests/hosts/TestHost.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>

namespace tw::test {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::StartsWith;
using Stages = std::vector<ClientStage>;

struct Heard {
    ClientReport report;
    Stages stages;
};

Heard hear(std::string_view bytes, std::size_t pieceSize)
{
    Heard heard;
    auto const log = ClientLog::maker()([&](ClientStage stage) { heard.stages.push_back(stage); });
    for (; !bytes.empty(); bytes.remove_prefix(std::min(pieceSize, bytes.size())))
        log->hear(bytes.substr(0, pieceSize));
    heard.report = log->report();
    return heard;
}

Heard hear(std::string_view bytes)
{
    return hear(bytes, std::string_view::npos);
}

constexpr std::string_view refusedLogin = "OpenSSH_9.2p1 Debian-2+deb12u10, OpenSSL 3.0.19 27 Jan 2026\r\n"
                                          "debug1: Connecting to web [192.0.2.7] port 22.\r\n"
                                          "debug1: SSH2_MSG_NEWKEYS sent\r\n"
                                          "debug1: SSH2_MSG_NEWKEYS received\r\n"
                                          "Staff only.\n"
                                          "debug1: Authentications that can continue: publickey,password,hostbased\r\n"
                                          "debug1: Offering public key: /home/a b/id ED25519 SHA256:16b+I explicit\r\n"
                                          "debug1: Offering public key: ann@desk RSA SHA256:hWAMJ agent\r\n"
                                          "debug1: Authentications that can continue: publickey,password\r\n"
                                          "ann@web: Permission denied (publickey,password).\r\n";

TEST(ClientLogTest, theLogIsReadAndTheRestIsWords)
{
    auto const heard = hear(refusedLogin);
    EXPECT_EQ(heard.report.words, "Staff only.\nann@web: Permission denied (publickey,password).\n");
    EXPECT_EQ(heard.stages, Stages{ClientStage::loggingIn});
    EXPECT_THAT(heard.report.offeredKeys, ElementsAre("/home/a b/id", "ann@desk"));
    EXPECT_THAT(heard.report.offeredMethods, ElementsAre("publickey", "password"));
}

TEST(ClientLogTest, theBytesMayBeCutAnywhere)
{
    auto const whole = hear(refusedLogin);
    for (std::size_t size = 1; size < 80; ++size) {
        auto const inPieces = hear(refusedLogin, size);
        EXPECT_EQ(inPieces.report, whole.report) << size;
        EXPECT_EQ(inPieces.stages, whole.stages) << size;
    }
}

TEST(ClientLogTest, everyVersionTellsThatTheLoginIsDone)
{
    constexpr std::array lines = {
        "debug1: Authentication succeeded (publickey).\r\n",
        "Authenticated to 127.0.0.1 ([127.0.0.1]:22).\r\n",
        "Authenticated to web (via proxy) using \"publickey\".\r\n",
        "Authenticated to web ([192.0.2.7]:22) using \"keyboard-interactive\".\n",
        "debug1: mux_client_request_session: master session id: 2\r\n",
    };
    for (auto const *line : lines) {
        auto const heard = hear(line);
        EXPECT_EQ(heard.stages, Stages{ClientStage::waitingForShell}) << line;
        EXPECT_EQ(heard.report.stage, ClientStage::waitingForShell) << line;
        EXPECT_EQ(heard.report.words, "") << line;
    }
}

TEST(ClientLogTest, aStageIsReachedOnceAndNeverTakenBack)
{
    EXPECT_EQ(hear("debug1: SSH2_MSG_NEWKEYS received\r\n"
                   "debug1: Authentication succeeded (publickey).\r\n"
                   "Authenticated to web ([192.0.2.7]:22).\r\n"
                   "debug1: SSH2_MSG_NEWKEYS received\r\n")
                  .stages,
              (Stages{ClientStage::loggingIn, ClientStage::waitingForShell}));
}

TEST(ClientLogTest, oneOfSeveralProofsIsNoLogin)
{
    EXPECT_THAT(hear("Authenticated using \"publickey\" with partial success.\r\n").stages, IsEmpty());
}

TEST(ClientLogTest, aLogLineMayFollowWordsWithoutALineEnd)
{
    EXPECT_EQ(hear("no shell heredebug1: channel 0: free: client-session, nchannels 1\r\n").report.words,
              "no shell here\n");
}

TEST(ClientLogTest, theLastWordsNeedNoLineEnd)
{
    EXPECT_EQ(hear("one\r\ntwo").report.words, "one\ntwo");
    EXPECT_EQ(hear("one\ndebu").report.words, "one\n");
}

TEST(ClientLogTest, whatAHostSaysBeforeTheProtocolIsWords)
{
    EXPECT_EQ(hear("debug1: kex_exchange_identification: banner line 0: Not allowed at this time\r\n"
                   "kex_exchange_identification: Connection closed by remote host\r\n")
                  .report.words,
              "Not allowed at this time\nkex_exchange_identification: Connection closed by remote host\n");
}

TEST(ClientLogTest, aKeyThatTheHostTakesIsKnown)
{
    EXPECT_EQ(hear("debug1: Server accepts key: /home/ann/.ssh/id RSA SHA256:abc explicit\r\n").report.acceptedKey,
              "/home/ann/.ssh/id");
    EXPECT_EQ(hear("debug1: Offering public key: RSA SHA256:abc /home/ann/.ssh/id\r\n").report.offeredKeys,
              std::vector<std::string>{"/home/ann/.ssh/id"});
}

TEST(ClientLogTest, aKeyThatDidNotSufficeIsNoLongerTheOneThatIsTaken)
{
    auto const report = hear("debug1: Server accepts key: /home/ann/.ssh/id RSA SHA256:abc explicit\r\n"
                             "Authenticated using \"publickey\" with partial success.\r\n"
                             "debug1: Authentications that can continue: keyboard-interactive\r\n"
                             "debug1: Next authentication method: keyboard-interactive\r\n")
                            .report;
    EXPECT_EQ(report.acceptedKey, "");
    EXPECT_EQ(report.triedMethod, "keyboard-interactive");
}

TEST(ClientLogTest, everythingThatAHostCanMakeGrowIsBounded)
{
    std::string const endless(100'000, 'x');
    EXPECT_THAT(hear(endless).report.words, SizeIs(ClientLog::maxWordBytes));
    EXPECT_THAT(hear("debug1: Offering public key: " + endless + "\n").report.offeredKeys, IsEmpty());
    std::string lines;
    std::string methods = "debug1: Authentications that can continue: ";
    for (int number = 0; number < 1000; ++number) {
        lines += "the line with the number " + std::to_string(number) + "\r\n" + "debug1: Offering public key: key\r\n";
        methods += "a,";
    }
    auto const report = hear(lines + methods + "\r\n").report;
    EXPECT_THAT(report.words, SizeIs(ClientLog::maxWordBytes));
    EXPECT_THAT(report.words, EndsWith("the line with the number 999\n"));
    EXPECT_THAT(report.offeredKeys, SizeIs(ClientLog::maxListed));
    EXPECT_THAT(report.offeredMethods, SizeIs(ClientLog::maxListed));
}

class ClientLogOfHostTest : public testing::Test {
protected:
    EngineRuntime engine;
    TestHost host{engine};
    SSHClient client;

    Heard run(std::vector<std::string> options)
    {
        client.add("web", host.address());
        std::vector<std::string> arguments{"-o", "LogLevel=DEBUG1", "-o", "BatchMode=yes"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        arguments.insert(arguments.end(), {"--", "web", "echo words of the host >&2"});
        return hear(runCommand(engine.io(), {.program = client.program(), .arguments = std::move(arguments)}).error);
    }
};

TEST_F(ClientLogOfHostTest, theClientOfThisMachineTellsEveryStage)
{
    auto const heard = run({});
    EXPECT_EQ(heard.stages, (Stages{ClientStage::loggingIn, ClientStage::waitingForShell}));
    EXPECT_EQ(heard.report.words, "words of the host\n");
    EXPECT_THAT(heard.report.offeredKeys, ElementsAre(host.address().identityFile));
    EXPECT_EQ(heard.report.acceptedKey, host.address().identityFile);
}

TEST_F(ClientLogOfHostTest, aClientOfASharedConnectionIsLoggedInAtOnce)
{
    TemporaryFolder const folder;
    std::vector<std::string> const shared{"-o", "ControlMaster=auto", "-o", "ControlPath=" + folder.path("socket"),
                                          "-o", "ControlPersist=60"};
    EXPECT_EQ(run(shared).stages, (Stages{ClientStage::loggingIn, ClientStage::waitingForShell}));
    auto const second = run(shared);
    EXPECT_EQ(second.stages, Stages{ClientStage::waitingForShell});
    EXPECT_EQ(second.report.words, "words of the host\n");
}

TEST_F(ClientLogOfHostTest, aRefusedKeyIsNamed)
{
    host.setLogin(TestHost::Login::refused);
    auto const heard = run({});
    EXPECT_EQ(heard.stages, Stages{ClientStage::loggingIn});
    EXPECT_THAT(heard.report.offeredKeys, ElementsAre(host.address().identityFile));
    EXPECT_EQ(heard.report.acceptedKey, "");
    EXPECT_THAT(heard.report.offeredMethods, Each("publickey"));
}

TEST_F(ClientLogOfHostTest, aChangedKeyIsKnownByTheFingerprintOfTheOldOne)
{
    client.add("web", host.address(), SSHClient::Knowledge::another);
    auto const heard = hear(
        runCommand(engine.io(), {.program = client.program(),
                                 .arguments = {"-o", "LogLevel=DEBUG1", "-o", "BatchMode=yes", "--", "web", "true"}})
            .error);
    EXPECT_THAT(heard.report.words, HasSubstr("REMOTE HOST IDENTIFICATION HAS CHANGED"));
    EXPECT_THAT(heard.report.storedFingerprint, StartsWith("SHA256:"));
    EXPECT_THAT(heard.report.words, Not(HasSubstr(heard.report.storedFingerprint)));
}

} // namespace
} // namespace tw::test
