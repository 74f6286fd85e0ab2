#include "TWEngine/Passwords/SavedPasswords.h"

#include "tests/hosts/StandInSSH.h"
#include "tests/support/SSHProviderTest.h"

#include <filesystem>
#include <thread>

namespace tw::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using Presence = SSHPassword::Presence;

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

    /// Answers for every host, and notes which hosts were asked for, and on which thread.
    SavedPasswords answering(Presence presence)
    {
        found = presence;
        return {.find =
                    [this](std::vector<std::string> const &accounts) {
                        asked.insert(asked.end(), accounts.begin(), accounts.end());
                        askedOn = std::this_thread::get_id();
                        return SSHPassword::Found{found, accounts.front()};
                    },
                .unlock = [this](std::string host) { return answerPrompt(this, std::move(host)); },
                .helper = "/usr/bin/helper"};
    }

    static Task<bool> answerPrompt(SavedPasswordsTest *test, std::string host)
    {
        test->prompted.push_back(std::move(host));
        co_return test->promptUnlocks;
    }

    std::string failureOf(Provider const &provider)
    {
        try {
            connect(provider);
        } catch (RemoteShellError::ConnectFailed const &failure) {
            return failure.what();
        }
        return "";
    }

    /// Of the shell that serves a session.
    std::string variable(Provider const &provider, std::string const &name)
    {
        return run(provider, "printf %s \"$" + name + '"');
    }

    void connect(Provider const &provider) { loop.run(provider->connect()); }

    StandInSSH standIn;
    Presence found = Presence::none;
    std::vector<std::string> asked;
    std::thread::id askedOn;
    std::vector<std::string> prompted;
    bool promptUnlocks = false;
};

TEST_F(SavedPasswordsTest, aHostWithASavedPasswordIsAskedForIt)
{
    auto const provider = providerWith(answering(Presence::readable));
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
    auto const provider = providerWith(answering(Presence::none));
    connect(provider);
    EXPECT_THAT(asked, ElementsAre("box"));
    EXPECT_EQ(variable(provider, "TW_ASKPASS_ACCOUNT"), "");
    EXPECT_THAT(standIn.starts().front(), Contains("BatchMode=yes"));
}

TEST_F(SavedPasswordsTest, aLockedPasswordIsUnlockedBeforeTheConnection)
{
    promptUnlocks = true;
    auto const provider = providerWith(answering(Presence::locked));
    connect(provider);
    EXPECT_THAT(prompted, ElementsAre("box"));
    EXPECT_EQ(variable(provider, "TW_ASKPASS_ACCOUNT"), "box");
    EXPECT_THAT(standIn.starts().front(), Contains("BatchMode=no"));
}

TEST_F(SavedPasswordsTest, aPasswordThatCanBeReadNeedsNoPrompt)
{
    auto const provider = providerWith(answering(Presence::readable));
    connect(provider);
    EXPECT_THAT(prompted, IsEmpty());
}

TEST_F(SavedPasswordsTest, withoutTheLockedPasswordAKeyIsTried)
{
    auto const provider = providerWith(answering(Presence::locked));
    connect(provider);
    EXPECT_THAT(prompted, ElementsAre("box"));
    EXPECT_EQ(variable(provider, "TW_ASKPASS_ACCOUNT"), "");
    EXPECT_THAT(standIn.starts().front(), Contains("BatchMode=yes"));
}

TEST_F(SavedPasswordsTest, theErrorSaysThatTheKeyStoreIsLocked)
{
    standIn.behave({.fault = StandInSSH::Fault::refuse, .message = "Permission denied\n"});
    auto const provider = providerWith(answering(Presence::locked));
    auto const locked = failureOf(provider);
    EXPECT_THAT(locked, HasSubstr("Permission denied"));
    EXPECT_THAT(locked, HasSubstr("key store with the password of this host is locked"));

    found = Presence::readable;
    auto const readable = failureOf(provider);
    EXPECT_THAT(readable, HasSubstr("Permission denied"));
    EXPECT_THAT(readable, Not(HasSubstr("locked")));
}

TEST_F(SavedPasswordsTest, byDefaultNoHostHasOne)
{
    auto const provider = providerWith({});
    connect(provider);
    EXPECT_THAT(standIn.starts().front(), Contains("BatchMode=yes"));
}

TEST_F(SavedPasswordsTest, withoutAHelperNobodyIsAsked)
{
    auto passwords = answering(Presence::readable);
    passwords.helper.reset();
    auto const provider = providerWith(std::move(passwords));
    connect(provider);
    EXPECT_THAT(asked, IsEmpty());
    EXPECT_THAT(standIn.starts().front(), Contains("BatchMode=yes"));
}

TEST_F(SavedPasswordsTest, anAccountOfTheCallersOwnStands)
{
    auto const provider =
        providerWith(answering(Presence::readable), {.askpassHelper = "/usr/bin/other", .askpassAccount = "another"});
    connect(provider);
    EXPECT_THAT(asked, IsEmpty());
    EXPECT_EQ(variable(provider, "TW_ASKPASS_ACCOUNT"), "another");
    EXPECT_EQ(variable(provider, "SSH_ASKPASS"), "/usr/bin/other");
}

TEST_F(SavedPasswordsTest, nobodyIsAskedBeforeTheConnectionIsWanted)
{
    auto const provider = providerWith(answering(Presence::readable));
    EXPECT_THAT(asked, IsEmpty());
}

TEST_F(SavedPasswordsTest, theKeyStoreIsWaitedForOnAThreadOfItsOwn)
{
    auto const provider = providerWith(answering(Presence::readable));
    connect(provider);
    EXPECT_NE(askedOn, std::this_thread::get_id());
    EXPECT_GT(engine.workers().posted(), 0U);
}

TEST_F(SavedPasswordsTest, theHelperIsThisProgram)
{
    EXPECT_EQ(SavedPasswords::ownExecutable(), std::filesystem::read_symlink("/proc/self/exe").string());
    EXPECT_EQ(SavedPasswords::ofThisSession(engine).helper, SavedPasswords::ownExecutable());
}

} // namespace
} // namespace tw::test
