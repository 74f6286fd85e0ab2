#include "TWEngine/Passwords/SavedPasswords.h"

#include "tests/hosts/StandInSSH.h"
#include "tests/support/SSHProviderTest.h"

#include <filesystem>
#include <thread>

namespace tw::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

/// A provider over a stand-in for ssh, which writes down how it is started.
class SavedPasswordsTest : public SSHProviderTest {
protected:
    std::string sshProgram() const override { return standIn.program(); }

    Provider providerWith(SavedPasswords passwords, RemoteShellOptions options = {})
    {
        return keep(std::make_shared<SSHProvider>(SSHProvider::Collaborators{.engine = engine,
                                                                             .sshProgram = sshProgram(),
                                                                             .sockets = sockets,
                                                                             .savedPasswords = std::move(passwords)},
                                                  "box", std::move(options)));
    }

    /// Answers for every host, and remembers who was asked for and where.
    SavedPasswords answering(bool isSaved)
    {
        return {.exists =
                    [this, isSaved](std::string const &host) {
                        asked.push_back(host);
                        askedOn = std::this_thread::get_id();
                        return isSaved;
                    },
                .helper = "/usr/bin/helper"};
    }

    /// Of the shell that serves a session.
    std::string variable(Provider const &provider, std::string const &name)
    {
        return run(provider, "printf %s \"$" + name + '"');
    }

    void connect(Provider const &provider) { loop.run(provider->connect()); }

    StandInSSH standIn;
    std::vector<std::string> asked;
    std::thread::id askedOn;
};

TEST_F(SavedPasswordsTest, aHostWithASavedPasswordIsAskedForIt)
{
    auto const provider = providerWith(answering(true));
    connect(provider);
    EXPECT_THAT(asked, ElementsAre("box"));
    EXPECT_EQ(variable(provider, "SSH_ASKPASS"), "/usr/bin/helper");
    EXPECT_EQ(variable(provider, "SSH_ASKPASS_REQUIRE"), "force");
    EXPECT_EQ(variable(provider, "TW_ASKPASS_ACCOUNT"), "box");
    EXPECT_THAT(standIn.starts().front(), Contains("BatchMode=no"));
    EXPECT_THAT(standIn.starts().front(), Contains("NumberOfPasswordPrompts=1"));
}

TEST_F(SavedPasswordsTest, aHostWithoutOneIsNot)
{
    auto const provider = providerWith(answering(false));
    connect(provider);
    EXPECT_THAT(asked, ElementsAre("box"));
    EXPECT_EQ(variable(provider, "TW_ASKPASS_ACCOUNT"), "");
    EXPECT_THAT(standIn.starts().front(), Contains("BatchMode=yes"));
}

TEST_F(SavedPasswordsTest, byDefaultNoHostHasOne)
{
    auto const provider = providerWith({});
    connect(provider);
    EXPECT_THAT(standIn.starts().front(), Contains("BatchMode=yes"));
}

TEST_F(SavedPasswordsTest, withoutAHelperNobodyIsAsked)
{
    auto passwords = answering(true);
    passwords.helper.reset();
    auto const provider = providerWith(std::move(passwords));
    connect(provider);
    EXPECT_THAT(asked, IsEmpty());
    EXPECT_THAT(standIn.starts().front(), Contains("BatchMode=yes"));
}

TEST_F(SavedPasswordsTest, anAccountOfTheCallersOwnStands)
{
    auto const provider =
        providerWith(answering(true), {.askpassHelper = "/usr/bin/other", .askpassAccount = "another"});
    connect(provider);
    EXPECT_THAT(asked, IsEmpty());
    EXPECT_EQ(variable(provider, "TW_ASKPASS_ACCOUNT"), "another");
    EXPECT_EQ(variable(provider, "SSH_ASKPASS"), "/usr/bin/other");
}

TEST_F(SavedPasswordsTest, nobodyIsAskedBeforeTheConnectionIsWanted)
{
    auto const provider = providerWith(answering(true));
    EXPECT_THAT(asked, IsEmpty());
}

TEST_F(SavedPasswordsTest, theKeyStoreIsWaitedForOnAThreadOfItsOwn)
{
    auto const provider = providerWith(answering(true));
    connect(provider);
    EXPECT_NE(askedOn, std::this_thread::get_id());
    EXPECT_EQ(engine.workers().posted(), 1U);
}

TEST_F(SavedPasswordsTest, theHelperIsThisProgram)
{
    EXPECT_EQ(SavedPasswords::ownExecutable(), std::filesystem::read_symlink("/proc/self/exe").string());
    EXPECT_EQ(SavedPasswords::ofThisSession().helper, SavedPasswords::ownExecutable());
}

} // namespace
} // namespace tw::test
