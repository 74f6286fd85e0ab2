#include "TWEngine/Passwords/SSHPassword.h"

#include "TWEngine/Runtime/ChildProcess.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "TWEngine/Runtime/FileDescriptor.h"
#include "tests/hosts/CommandOutcome.h"
#include "tests/hosts/PasswordHost.h"
#include "tests/hosts/PrivateKeyring.h"
#include "tests/hosts/WaitFor.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <thread>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace tw::test {
namespace {

using testing::HasSubstr;
using testing::Not;
using Store = PrivateKeyring::Store;

/// Reached by a hang only.
constexpr std::chrono::minutes hangLimit{1};
/// For what never answers.
constexpr std::chrono::milliseconds shortLimit{50};

/// Uses the key store of the session that it is given, in a process of its own: GLib shares one connection to the bus
/// in a whole process.
class StoreUser {
public:
    StoreUser(EngineRuntime &runtime, std::string busAddress, std::chrono::milliseconds atMost)
        : engine(runtime), address(std::move(busAddress)), limit(atMost)
    {
    }

    bool save(std::string const &password, std::string const &host = "box") const
    {
        return run("save", host, password) == "yes";
    }

    std::string read(std::string const &host = "box") const { return run("read", host); }

    bool exists(std::string const &host = "box") const { return run("exists", host) == "yes"; }

    bool remove(std::string const &host = "box") const { return run("remove", host) == "yes"; }

    std::string presence(std::string const &host = "box") const { return run("presence", host); }

    bool unlock(std::string const &host = "box") const { return run("unlock", host) == "yes"; }

    /// Gives up when its input is closed.
    std::shared_ptr<ChildProcess> startUnlocking() const
    {
        return *ChildProcess::start(
            engine.io(), {.program = passwordProgram(),
                          .arguments = {"--store", std::to_string(limit.count()), "unlock-while-input", "box"},
                          .environment = environment(),
                          .input = PipeEnd(),
                          .output = PipeEnd()});
    }

private:
    Environment environment() const
    {
        auto variables = inheritedEnvironment();
        variables["DBUS_SESSION_BUS_ADDRESS"] = address;
        variables.erase("XDG_RUNTIME_DIR");
        return variables;
    }

    std::string run(std::string const &operation, std::string const &host, std::string input = {}) const
    {
        auto const outcome = runCommand(engine.io(),
                                        {.program = passwordProgram(),
                                         .arguments = {"--store", std::to_string(limit.count()), operation, host},
                                         .environment = environment()},
                                        std::move(input));
        EXPECT_TRUE(outcome.status.isSuccess());
        EXPECT_EQ(outcome.error, "");
        return outcome.output;
    }

    EngineRuntime &engine;
    std::string const address;
    std::chrono::milliseconds const limit;
};

class SSHPasswordTest : public testing::Test {
protected:
    /// What the key store itself knows under these attributes.
    std::string search(std::vector<std::string> const &attributes)
    {
        std::string all = "dict:string:string:";
        for (auto const &text : attributes)
            all += (all.ends_with(':') ? "" : ",") + text;
        return keyring.call("/org/freedesktop/secrets", "org.freedesktop.Secret.Service.SearchItems", {all});
    }

    EngineRuntime engine;
    PrivateKeyring keyring{engine};
    StoreUser const store{engine, keyring.address(), hangLimit};
};

TEST_F(SSHPasswordTest, atFirstThereIsNone)
{
    EXPECT_FALSE(store.exists());
    EXPECT_EQ(store.read(), "(none)");
    EXPECT_FALSE(store.remove());
}

TEST_F(SSHPasswordTest, whatIsSavedIsRead)
{
    EXPECT_TRUE(store.save("secret"));
    EXPECT_TRUE(store.exists());
    EXPECT_EQ(store.read(), "secret");
}

TEST_F(SSHPasswordTest, anyTextComesBack)
{
    for (std::string const password : {" ", "gr\xC3\xBC\xC3\x9F \xF0\x9F\x94\x91 \xED\x95\x9C", "'\"\\$(x)%s\t", "-x",
                                       "a very long one, of a person who has read about passphrases"}) {
        EXPECT_TRUE(store.save(password));
        EXPECT_EQ(store.read(), password);
    }
}

TEST_F(SSHPasswordTest, savingTwiceReplaces)
{
    EXPECT_TRUE(store.save("first"));
    EXPECT_TRUE(store.save("second"));
    EXPECT_EQ(store.read(), "second");
    EXPECT_TRUE(store.remove());
    EXPECT_FALSE(store.exists()) << "there was one item";
}

TEST_F(SSHPasswordTest, savingNothingForgets)
{
    EXPECT_TRUE(store.save(""));
    EXPECT_TRUE(store.save("secret"));
    EXPECT_TRUE(store.save(""));
    EXPECT_FALSE(store.exists());
}

TEST_F(SSHPasswordTest, removingTellsWhetherThereWasOne)
{
    store.save("secret");
    EXPECT_TRUE(store.remove());
    EXPECT_FALSE(store.remove());
    EXPECT_EQ(store.read(), "(none)");
}

TEST_F(SSHPasswordTest, aHostHasItsOwn)
{
    store.save("one", "box");
    store.save("two", "ann@box");
    store.save("three", "ssh://ann@b\xC3\xBC"
                        "chse:22");
    EXPECT_EQ(store.read("box"), "one");
    EXPECT_EQ(store.read("ann@box"), "two");
    EXPECT_EQ(store.read("ssh://ann@b\xC3\xBC"
                         "chse:22"),
              "three");
    EXPECT_FALSE(store.exists("bo"));
    EXPECT_FALSE(store.exists("Box"));
    EXPECT_TRUE(store.remove("box"));
    EXPECT_TRUE(store.exists("ann@box"));
}

TEST_F(SSHPasswordTest, aHostThatCannotBeSaidHasNone)
{
    for (std::string const host : {"", "\xFF"}) {
        EXPECT_FALSE(store.save("secret", host));
        EXPECT_FALSE(store.exists(host));
        EXPECT_EQ(store.read(host), "(none)");
        EXPECT_FALSE(store.remove(host));
    }
}

TEST_F(SSHPasswordTest, aPasswordThatIsNoTextIsNotSaved)
{
    EXPECT_FALSE(store.save("\xFF"));
    EXPECT_FALSE(store.exists());
}

TEST_F(SSHPasswordTest, anItemIsFoundByItsServiceAndItsAccount)
{
    EXPECT_THAT(search({"service", "Tarnwick SSH", "account", "box"}), Not(HasSubstr("object path")));
    store.save("secret");
    EXPECT_THAT(search({"service", "Tarnwick SSH", "account", "box"}), HasSubstr("object path"));
    EXPECT_THAT(search({"service", "another", "account", "box"}), Not(HasSubstr("object path")));
}

TEST_F(SSHPasswordTest, inALockedStoreAPasswordIsSeenAndNotRead)
{
    store.save("secret");
    keyring.lock();
    EXPECT_TRUE(store.exists());
    EXPECT_EQ(store.read(), "(none)");
    EXPECT_FALSE(store.remove());
    EXPECT_FALSE(store.save("another"));
    EXPECT_TRUE(store.exists());
}

TEST_F(SSHPasswordTest, whatCanBeReadNeedsNoPrompt)
{
    EXPECT_EQ(store.presence(), "none");
    EXPECT_FALSE(store.unlock());
    store.save("secret");
    EXPECT_EQ(store.presence(), "readable");
    EXPECT_TRUE(store.unlock());
}

TEST_F(SSHPasswordTest, aLockedStoreStaysLockedIfThePromptIsDismissed)
{
    store.save("secret");
    keyring.lock();
    EXPECT_EQ(store.presence(), "locked");
    EXPECT_FALSE(store.unlock());
    EXPECT_EQ(store.presence(), "locked");
    EXPECT_EQ(store.read(), "(none)") << "reading never asks";
}

class SSHPasswordPromptTest : public testing::Test {
protected:
    EngineRuntime engine;
};

TEST_F(SSHPasswordPromptTest, anAnsweredPromptUnlocks)
{
    PrivateKeyring keyring(engine, Store::promptIsAnswered);
    StoreUser const store(engine, keyring.address(), hangLimit);
    EXPECT_EQ(store.presence(), "locked");
    EXPECT_EQ(keyring.promptsShown(), 0U);
    EXPECT_TRUE(store.unlock());
    EXPECT_EQ(keyring.promptsShown(), 1U);
    EXPECT_EQ(keyring.promptsDismissed(), 0U);
    EXPECT_EQ(store.presence(), "readable");
}

TEST_F(SSHPasswordPromptTest, aHostWithoutAPasswordIsNoReasonForAPrompt)
{
    PrivateKeyring keyring(engine, Store::promptIsAnswered);
    StoreUser const store(engine, keyring.address(), hangLimit);
    EXPECT_FALSE(store.unlock("another"));
    EXPECT_EQ(keyring.promptsShown(), 0U);
}

TEST_F(SSHPasswordPromptTest, aPromptWithoutAnAnswerIsDismissedAtTheLimit)
{
    PrivateKeyring keyring(engine, Store::promptStays);
    StoreUser const store(engine, keyring.address(), shortLimit);
    EXPECT_FALSE(store.unlock());
    EXPECT_EQ(keyring.promptsShown(), 1U);
    EXPECT_EQ(keyring.promptsDismissed(), 1U);
}

TEST_F(SSHPasswordPromptTest, aPromptThatNobodyWaitsForIsDismissed)
{
    PrivateKeyring keyring(engine, Store::promptStays);
    auto const waiting = StoreUser(engine, keyring.address(), hangLimit).startUnlocking();
    while (keyring.promptsShown() == 0)
        std::this_thread::yield();
    waiting->closeInput();
    EXPECT_EQ(waitFor(waiting->read(ChildOutput::standard)), "no");
    waitFor(waiting->wait());
    EXPECT_EQ(keyring.promptsDismissed(), 1U);
}

TEST_F(SSHPasswordTest, severalThreadsMayAskAtOnce)
{
    store.save("secret");
    std::vector<std::jthread> threads;
    std::atomic<int> right = 0;
    constexpr int count = 4;
    for (int thread = 0; thread < count; ++thread)
        threads.emplace_back([&] { right += store.read() == "secret" && store.exists() ? 1 : 0; });
    threads.clear();
    EXPECT_EQ(right, count);
}

// Where there is no key store, or none that answers.

/// A bus that does not get beyond a point.
class MuteSocket {
public:
    enum class Until {
        taken, ///< nobody is even taken in
        let,   ///< every client is let in, and hears no more
        refused
    };

    explicit MuteSocket(Until until)
    {
        sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
        path().copy(static_cast<char *>(address.sun_path), sizeof address.sun_path - 1);
        if (::bind(listener.get(), reinterpret_cast<sockaddr *>(&address), sizeof address) != 0 ||
            ::listen(listener.get(), SOMAXCONN) != 0)
            throw std::runtime_error("no socket could be made");
        if (until != Until::taken)
            host = std::jthread([this, until] { serve(until); });
    }

    ~MuteSocket()
    {
        ::shutdown(listener.get(), SHUT_RDWR); // the host stops waiting for somebody
    }

    MuteSocket(MuteSocket const &) = delete;
    MuteSocket &operator=(MuteSocket const &) = delete;

    std::string address() const { return "unix:path=" + path(); }

    /// How many have begun to talk as on a bus.
    int begun() const { return haveBegun; }

private:
    std::string path() const { return folder.path("bus"); }

    void serve(Until until)
    {
        for (;;) {
            FileDescriptor const guest(::accept4(listener.get(), nullptr, nullptr, SOCK_CLOEXEC));
            if (!guest)
                return;
            std::array<char, 4096> heard{};
            for (auto count = ::read(guest.get(), heard.data(), heard.size()); count > 0;
                 count = ::read(guest.get(), heard.data(), heard.size())) {
                std::string_view const words(heard.data(), static_cast<std::size_t>(count));
                haveBegun += words.contains("BEGIN") ? 1 : 0;
                auto const answer = answerTo(words, until);
                (void)!::send(guest.get(), answer.data(), answer.size(), MSG_NOSIGNAL);
            }
        }
    }

    static std::string_view answerTo(std::string_view words, Until until)
    {
        if (words.contains("NEGOTIATE_UNIX_FD"))
            return "AGREE_UNIX_FD\r\n";
        if (words.contains("AUTH EXTERNAL") && until == Until::let)
            return "OK 0123456789abcdef0123456789abcdef\r\n";
        return words.contains("AUTH") ? "REJECTED EXTERNAL\r\n" : "";
    }

    TemporaryFolder const folder;
    FileDescriptor const listener{::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)};
    std::atomic<int> haveBegun = 0;
    std::jthread host;
};

class SSHPasswordWithoutStoreTest : public testing::Test {
protected:
    void expectNone(std::string const &address, std::chrono::milliseconds limit)
    {
        StoreUser const store(engine, address, limit);
        EXPECT_FALSE(store.exists());
        EXPECT_EQ(store.read(), "(none)");
        EXPECT_FALSE(store.remove());
        EXPECT_FALSE(store.save("secret"));
        EXPECT_TRUE(store.save("")) << "there is nothing to forget";
    }

    EngineRuntime engine;
};

TEST_F(SSHPasswordWithoutStoreTest, withoutABusThereAreNone)
{
    for (auto const *address : {"", "unix:path=/nowhere/bus", "nonsense", "unix:", "autolaunch:"})
        expectNone(address, hangLimit);
}

TEST_F(SSHPasswordWithoutStoreTest, aBusThatTakesNobodyInIsGivenUp)
{
    MuteSocket const mute(MuteSocket::Until::taken);
    expectNone(mute.address(), shortLimit);
}

TEST_F(SSHPasswordWithoutStoreTest, aBusThatTakesOneInAndSaysNoMoreIsGivenUp)
{
    MuteSocket const mute(MuteSocket::Until::let);
    expectNone(mute.address(), shortLimit);
    EXPECT_GT(mute.begun(), 0) << "it was not let in";
}

TEST_F(SSHPasswordWithoutStoreTest, aBusThatLetsNobodyInIsNone)
{
    MuteSocket const mute(MuteSocket::Until::refused);
    expectNone(mute.address(), hangLimit);
    EXPECT_EQ(mute.begun(), 0);
}

TEST_F(SSHPasswordWithoutStoreTest, aBusWithoutAStoreHasNone)
{
    PrivateKeyring const keyring(engine, Store::absent);
    expectNone(keyring.address(), hangLimit);
}

TEST_F(SSHPasswordWithoutStoreTest, aStoreThatNeverComesUpIsGivenUp)
{
    PrivateKeyring const keyring(engine, Store::mute);
    expectNone(keyring.address(), shortLimit);
}

} // namespace
} // namespace tw::test
