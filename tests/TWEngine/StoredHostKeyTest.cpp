#include "TWEngine/SSH/StoredHostKey.h"

#include "TWEngine/Runtime/EngineRuntime.h"
#include "tests/hosts/CommandOutcome.h"
#include "tests/hosts/KeyPair.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>

namespace tw::test {
namespace {

using ::testing::HasSubstr;

class StoredHostKeyTest : public testing::Test {
protected:
    EngineRuntime engine;
    TemporaryFolder const folder;
    KeyPair const key = KeyPair::generate(engine.io(), folder.path("key"));

    /// As ssh-keygen prints it among other words.
    std::string printedFingerprint()
    {
        return runCommand(engine.io(), {.program = "ssh-keygen", .arguments = {"-l", "-f", folder.path("key.pub")}})
            .output;
    }
};

TEST_F(StoredHostKeyTest, theFingerprintIsThatOfSshKeygen)
{
    auto const place =
        folder.file("known_hosts", "# hosts\n\n@cert-authority web,192.0.2.7 " + key.publicKey + " ann@desk\n");
    auto const fingerprint = StoredHostKey::fingerprintAt(place + ":3");
    EXPECT_EQ(fingerprint.size(), 50U) << fingerprint;
    EXPECT_THAT(printedFingerprint(), HasSubstr(" " + fingerprint + " "));
}

TEST_F(StoredHostKeyTest, aPlaceWithoutAKeyHasNoFingerprint)
{
    auto const place =
        folder.file("known_hosts", "# web " + key.publicKey + "\nweb ssh-ed25519 AAAA!\n" + key.publicKey);
    for (auto const *line : {":1", ":2", ":4", ":99999999999999999999999", ":0", ":-1", ":", "", ":1 "})
        EXPECT_EQ(StoredHostKey::fingerprintAt(place + line), "") << line;
    EXPECT_NE(StoredHostKey::fingerprintAt(place + ":3"), "");
    EXPECT_EQ(StoredHostKey::fingerprintAt(folder.path("missing:1")), "");
    EXPECT_EQ(StoredHostKey::fingerprintAt(folder.path() + ":1"), "");
}

TEST_F(StoredHostKeyTest, aPipeIsNotReadFrom)
{
    auto const pipe = folder.path("pipe");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(StoredHostKey::fingerprintAt(pipe + ":1"), "");
}

} // namespace
} // namespace tw::test
