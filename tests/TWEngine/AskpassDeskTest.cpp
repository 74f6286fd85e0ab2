#include "TWEngine/Passwords/AskpassDesk.h"

#include "TWEngine/Passwords/AskpassRequest.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "TWEngine/Runtime/WholeFile.h"
#include "tests/support/FakeLoginPrompter.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestLoop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <mutex>

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

namespace tw::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using Refusal = LoginDesk::Refusal;

/// A caller at the socket of a login, as the askpass program is one.
class Caller {
public:
    explicit Caller(std::string const &path) : socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
        path.copy(static_cast<char *>(address.sun_path), sizeof address.sun_path - 1);
        isConnected = ::connect(socket.get(), reinterpret_cast<sockaddr *>(&address), sizeof address) == 0;
    }

    void send(std::string const &bytes) const
    {
        // Nobody may read it any more.
        static_cast<void>(WholeFile::write(socket.get(), bytes));
    }

    /// What has arrived, and whether the other end has hung up.
    bool hasHungUp()
    {
        for (;;) {
            pollfd state{.fd = socket.get(), .events = POLLIN, .revents = 0};
            if (::poll(&state, 1, 0) == 0)
                return false;
            std::array<char, 256> bytes{};
            auto const count = ::read(socket.get(), bytes.data(), bytes.size());
            if (count <= 0)
                return true;
            received.append(bytes.data(), static_cast<std::size_t>(count));
        }
    }

    void hangUp() { socket = FileDescriptor(); }

    FileDescriptor socket;
    bool isConnected = false;
    std::string received;
};

/// A desk at which the test itself calls.
class AskpassDeskTest : public testing::Test {
protected:
    static constexpr auto password = "ann@box's password: ";
    static constexpr auto code = "(ann@box) Verification code: ";

    ~AskpassDeskTest() override
    {
        login.reset();
        loop.runUntil([&] { return fs::is_empty(sockets); });
        for (auto const &each : prompter->asked)
            loop.runUntil([&] { return !each->isOpen; });
    }

    std::shared_ptr<AskpassDesk> makeDesk(std::optional<std::string> helper = "/usr/bin/tarnwick")
    {
        return std::make_shared<AskpassDesk>(AskpassDesk::Collaborators{
            .engine = engine,
            .mainContext = loop.context(),
            .prompter = prompter,
            .helper = std::move(helper),
            .folder = [this] { return folderOfSockets; },
            .keyStore = {.read = [this](std::string const &account) { return saved(account); },
                         .isOpen = [this] { return isKeyStoreOpen.load(); },
                         .save = [this](std::string_view text,
                                        std::string const &account) { save(std::string(text), account); }},
            .callerOf = [this](pid_t) { return seenAs.load(); }});
    }

    std::unique_ptr<LoginDesk::Login> begin(std::shared_ptr<AskpassDesk> const &at)
    {
        auto const note = [this](std::string report) {
            loop.context()->post([this, report = std::move(report)] { reports.push_back(report); });
        };
        return loop.run(at->begin("box", {.questionOpened = [note] { note("opened"); },
                                          .questionClosed = [note] { note("closed"); },
                                          .refused =
                                              [note](Refusal why) {
                                                  note(why == Refusal::byUser ? "refused by user" : "refused by host");
                                              }}));
    }

    std::string variable(char const *name) const { return login->environment().at(name); }

    Caller call() const { return Caller(variable("TW_ASKPASS_SOCKET")); }

    Caller callWith(std::string const &prompt, std::string const &hint = {}) const
    {
        auto caller = call();
        caller.send(AskpassRequest{variable("TW_ASKPASS_TOKEN"), hint, prompt}.encoded());
        return caller;
    }

    FakeLoginPrompter::Asked &nextQuestion()
    {
        auto const before = answered;
        loop.runUntil([&] { return prompter->asked.size() > before; });
        ++answered;
        return *prompter->asked.back();
    }

    /// What a caller has got when the desk hangs up.
    std::string received(Caller &caller)
    {
        loop.runUntil([&] { return hungUp(caller); });
        return caller.received;
    }

    bool hungUp(Caller &caller)
    {
        // Nothing of the desk wakes the loop when it hangs up.
        loop.context()->post([] {});
        return caller.hasHungUp();
    }

    void waitForReport(std::string const &report)
    {
        loop.runUntil([&] { return std::ranges::find(reports, report) != reports.end(); });
    }

    std::string answerTo(std::string const &prompt, std::string const &text, bool remember = false)
    {
        auto caller = callWith(prompt);
        nextQuestion().answer(text, remember);
        return received(caller);
    }

    std::optional<SecretText> saved(std::string const &account)
    {
        std::lock_guard const lock(mutex);
        auto const found = keyStore.find(account);
        return found == keyStore.end() ? std::nullopt : std::optional(SecretText(found->second));
    }

    void save(std::string const &text, std::string const &account)
    {
        std::lock_guard const lock(mutex);
        keyStore[account] = text;
        loop.context()->post([this] { hasSaved = true; });
    }

    TemporaryFolder folder;
    std::string const sockets = folder.folder("sockets");
    std::optional<std::string> folderOfSockets = sockets;
    TestLoop loop;
    std::shared_ptr<FakeLoginPrompter> const prompter = std::make_shared<FakeLoginPrompter>();
    std::size_t answered = 0;
    std::atomic<AskpassGuard::Caller> seenAs = AskpassGuard::Caller::host;
    std::atomic<bool> isKeyStoreOpen = true;
    std::vector<std::string> reports;
    bool hasSaved = false;

    std::mutex mutex;
    // Under the mutex.
    std::map<std::string, std::string> keyStore;

    EngineRuntime engine; // ends first, and with it its threads
    std::shared_ptr<AskpassDesk> const desk = makeDesk();
    std::unique_ptr<LoginDesk::Login> login = begin(desk);
};

TEST_F(AskpassDeskTest, theEnvironmentMakesSSHAskTheHelper)
{
    EXPECT_EQ(variable("SSH_ASKPASS"), "/usr/bin/tarnwick");
    EXPECT_EQ(variable("SSH_ASKPASS_REQUIRE"), "force");
    EXPECT_TRUE(variable("TW_ASKPASS_SOCKET").starts_with(sockets + "/"));
    EXPECT_EQ(variable("TW_ASKPASS_TOKEN").size(), 32U);
}

TEST_F(AskpassDeskTest, theSocketIsTheUsersAloneAndGoesWithTheLogin)
{
    auto const path = variable("TW_ASKPASS_SOCKET");
    EXPECT_EQ(fs::status(path).permissions(), fs::perms::owner_read | fs::perms::owner_write);
    login.reset();
    EXPECT_FALSE(fs::exists(path));
}

TEST_F(AskpassDeskTest, eachLoginHasASocketAndATokenOfItsOwn)
{
    auto const other = begin(desk);
    EXPECT_NE(other->environment().at("TW_ASKPASS_TOKEN"), variable("TW_ASKPASS_TOKEN"));
    EXPECT_NE(other->environment().at("TW_ASKPASS_SOCKET"), variable("TW_ASKPASS_SOCKET"));
}

TEST_F(AskpassDeskTest, aQuestionReachesTheUserAndTheAnswerTheCaller)
{
    auto caller = callWith(password);
    auto const &asked = nextQuestion();
    EXPECT_EQ(asked.question.kind, LoginQuestion::Kind::password);
    EXPECT_EQ(asked.question.host, "box");
    EXPECT_EQ(asked.question.prompt, "ann@box's password:");
    EXPECT_TRUE(asked.question.canBeRemembered);
    asked.answer("correct h\xC3\xB6rse");
    EXPECT_EQ(received(caller), "correct h\xC3\xB6rse\n");
}

TEST_F(AskpassDeskTest, whileAQuestionIsOpenTheOwnerKnows)
{
    auto caller = callWith(password);
    auto const &asked = nextQuestion();
    waitForReport("opened");
    EXPECT_THAT(reports, ElementsAre("opened"));
    asked.answer("word");
    waitForReport("closed");
    EXPECT_THAT(reports, ElementsAre("opened", "closed"));
    received(caller);
}

TEST_F(AskpassDeskTest, anAnswerThatWasRefusedIsAskedForAgain)
{
    answerTo(password, "wrong");
    auto caller = callWith(password);
    EXPECT_EQ(nextQuestion().question.attempt, 2);
    login.reset();
    EXPECT_EQ(received(caller), "");
}

TEST_F(AskpassDeskTest, afterThreeRefusalsNobodyIsAskedAndTheCallerWaitsForTheEnd)
{
    for (int time = 0; time < 3; ++time)
        answerTo(password, "wrong");
    auto caller = callWith(password);
    waitForReport("refused by host");
    EXPECT_EQ(prompter->asked.size(), 3U);
    EXPECT_FALSE(caller.hasHungUp()) << "ssh would send an empty password";
    login.reset();
    EXPECT_EQ(received(caller), "");
}

TEST_F(AskpassDeskTest, aUserWhoCancelsEndsTheLogin)
{
    auto caller = callWith(password);
    nextQuestion().refuse();
    waitForReport("refused by user");
    EXPECT_FALSE(caller.hasHungUp());
    auto later = callWith(code);
    login.reset();
    EXPECT_EQ(received(caller), "");
    EXPECT_EQ(received(later), "");
    EXPECT_EQ(prompter->asked.size(), 1U);
}

TEST_F(AskpassDeskTest, anEmptyAnswerEndsTheLogin)
{
    auto caller = callWith(password);
    nextQuestion().answer("");
    waitForReport("refused by user");
}

TEST_F(AskpassDeskTest, aClosedWindowEndsTheLogin)
{
    auto caller = callWith(password);
    nextQuestion().closeWindow();
    waitForReport("refused by user");
}

TEST_F(AskpassDeskTest, aCallerThatGoesTakesItsQuestionWithIt)
{
    auto caller = callWith("Confirm user presence for key ED25519-SK SHA256:abc", "none");
    auto const &asked = nextQuestion();
    EXPECT_EQ(asked.question.kind, LoginQuestion::Kind::notice);
    caller.hangUp();
    loop.runUntil([&] { return !asked.isOpen; });
    waitForReport("closed");
    EXPECT_THAT(reports, ElementsAre("opened", "closed"));
    EXPECT_EQ(answerTo(password, "word"), "word\n") << "the login goes on";
}

TEST_F(AskpassDeskTest, theEndOfTheLoginTakesItsQuestionAway)
{
    auto caller = callWith(password);
    auto const &asked = nextQuestion();
    login.reset();
    loop.runUntil([&] { return !asked.isOpen; });
    EXPECT_EQ(received(caller), "");
}

TEST_F(AskpassDeskTest, theEndOfTheProgramEndsEveryLogin)
{
    auto const other = begin(desk);
    auto caller = callWith(password);
    nextQuestion();
    desk->endAll();
    EXPECT_TRUE(fs::is_empty(sockets));
    EXPECT_EQ(received(caller), "");
}

// Who gets no answer.

TEST_F(AskpassDeskTest, aWrongTokenGetsNoAnswer)
{
    auto const right = variable("TW_ASKPASS_TOKEN");
    for (auto const &token : {std::string(), right.substr(1), right + "0", std::string(32, '0')}) {
        auto caller = call();
        caller.send(AskpassRequest{token, "", password}.encoded());
        EXPECT_EQ(received(caller), "");
    }
    EXPECT_THAT(prompter->asked, IsEmpty());
}

TEST_F(AskpassDeskTest, aCallerFromAnotherTreeOfProcessesGetsNoAnswer)
{
    seenAs = AskpassGuard::Caller::stranger;
    auto caller = callWith(password);
    EXPECT_EQ(received(caller), "");
    EXPECT_THAT(prompter->asked, IsEmpty());
    EXPECT_EQ(AskpassDesk::callerBelowUs(::getpid()), AskpassGuard::Caller::stranger);
}

TEST_F(AskpassDeskTest, aRequestWithoutEndGetsNoAnswer)
{
    auto caller = call();
    caller.send(std::string(AskpassRequest::longest + 1, 'x'));
    EXPECT_EQ(received(caller), "");
}

TEST_F(AskpassDeskTest, moreCallersThanSSHHasGetNoAnswer)
{
    std::vector<Caller> silent;
    for (int each = 0; each < 4; ++each)
        silent.push_back(call());
    auto caller = callWith(password);
    EXPECT_EQ(received(caller), "");
    silent.front().hangUp();
    // Until the desk has seen it.
    loop.runUntil([&] {
        auto another = callWith(password);
        loop.runUntil([&] { return !prompter->asked.empty() || hungUp(another); });
        return !prompter->asked.empty();
    });
}

TEST_F(AskpassDeskTest, withoutAHelperOrAFolderThereIsNoLogin)
{
    EXPECT_EQ(begin(makeDesk(std::nullopt)), nullptr);
    folderOfSockets = std::nullopt;
    EXPECT_EQ(begin(makeDesk()), nullptr);
    folderOfSockets = folder.path(std::string(108, 'x'));
    EXPECT_EQ(begin(makeDesk()), nullptr);
}

// The key store.

TEST_F(AskpassDeskTest, whatIsSavedAnswersTheFirstQuestionAndTheUserTheNext)
{
    save("saved", "box");
    auto first = callWith(password);
    EXPECT_EQ(received(first), "saved\n");
    EXPECT_THAT(reports, IsEmpty());
    auto second = callWith(password);
    auto const &asked = nextQuestion();
    EXPECT_EQ(asked.question.attempt, 2) << "the saved one was refused";
    asked.answer("new");
    EXPECT_EQ(received(second), "new\n");
}

TEST_F(AskpassDeskTest, aPassphraseIsSavedUnderItsKey)
{
    save("phrase", "/keys/one");
    auto caller = callWith("Enter passphrase for key '/keys/one': ");
    EXPECT_EQ(received(caller), "phrase\n");
}

TEST_F(AskpassDeskTest, theSavedPasswordIsNotForAHostInBetween)
{
    save("saved", "box");
    seenAs = AskpassGuard::Caller::jumpHost;
    auto caller = callWith("ann@jump's password: ");
    EXPECT_FALSE(nextQuestion().question.canBeRemembered);
}

TEST_F(AskpassDeskTest, anAnswerIsStoredWhenTheLoginHasSucceeded)
{
    answerTo(password, "word", true);
    EXPECT_FALSE(saved("box"));
    login->succeed();
    login.reset();
    loop.runUntil([&] { return hasSaved; });
    std::lock_guard const lock(mutex);
    EXPECT_THAT(keyStore, ElementsAre(Pair("box", "word")));
}

TEST_F(AskpassDeskTest, withoutAnOpenKeyStoreNothingCanBeRemembered)
{
    isKeyStoreOpen = false;
    auto caller = callWith(password);
    EXPECT_FALSE(nextQuestion().question.canBeRemembered);
}

} // namespace
} // namespace tw::test
