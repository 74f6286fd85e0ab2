#include "Tarnwick/Toolkit/Dialogs/LoginSheet.h"

#include "TWCore/Async/Cancelled.h"
#include "TWCore/Async/Outcome.h"
#include "Tarnwick/Toolkit/Dialogs/SheetDialogs.h"
#include "Tarnwick/Toolkit/Dialogs/SheetText.h"
#include "Tarnwick/Toolkit/Program/QtMainContext.h"
#include "Tarnwick/Toolkit/Program/WindowLoginPrompter.h"
#include "tests/ui/QtLoop.h"

#include <QCheckBox>
#include <QFontInfo>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QTest>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

using QuestionKind = LoginQuestion::Kind;

/// Questions of logins over a window.
class LoginSheetTest : public testing::Test {
protected:
    using Answer = std::optional<LoginAnswer>;

    LoginSheetTest()
    {
        window->show();
        window->activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(window.get()));
        prompter.askOver(dialogs);
    }

    ~LoginSheetTest() override
    {
        window.reset();
        processPosted();
        while (mainContext.context()->runPending() > 0) {
        }
    }

    static LoginQuestion question(QuestionKind kind, std::string prompt)
    {
        LoginQuestion asked;
        asked.kind = kind;
        asked.host = "box";
        asked.prompt = std::move(prompt);
        return asked;
    }

    static LoginQuestion password() { return question(QuestionKind::password, "ann@box's password:"); }

    static LoginQuestion hostKey()
    {
        auto asked =
            question(QuestionKind::hostKey, "The authenticity of host 'box' can't be established.\n"
                                            "ED25519 key fingerprint is SHA256:abc.\n"
                                            "Are you sure you want to continue connecting (yes/no/[fingerprint])?");
        asked.fingerprint = "SHA256:abc";
        return asked;
    }

    static Task<void> keep(std::shared_ptr<Outcome<Answer>> outcome, Task<Answer> asking)
    {
        auto ended = co_await outcomeOf(std::move(asking));
        *outcome = std::move(ended);
    }

    void ask(LoginQuestion asked)
    {
        outcome = std::make_shared<Outcome<Answer>>();
        stop = std::stop_source();
        spawn({mainContext.context(), stop.get_token()}, keep(outcome, prompter.ask(std::move(asked))));
        processPosted();
    }

    bool isDone() const { return outcome->value || outcome->failure; }

    /// The text of the answer; nothing if the user refused.
    std::optional<std::string> answer()
    {
        processUntil([&] { return isDone(); });
        auto const given = outcome->take();
        return given ? std::optional(std::string(given->text.text())) : std::nullopt;
    }

    LoginSheet &sheet()
    {
        for (auto *const each : window->findChildren<LoginSheet *>()) {
            if (each->isVisible()) {
                EXPECT_TRUE(QTest::qWaitForWindowActive(each));
                return *each;
            }
        }
        throw std::logic_error("no question is on show");
    }

    QLineEdit &field() { return *sheet().findChild<QLineEdit *>(); }

    /// Null if there is none.
    template <class T>
    T *named(char const *text)
    {
        for (auto *const each : sheet().findChildren<T *>()) {
            if (each->text() == QString::fromUtf8(text))
                return each;
        }
        return nullptr;
    }

    QPushButton &button(char const *text)
    {
        auto *const found = named<QPushButton>(text);
        if (!found)
            throw std::logic_error(std::string("no such button: ") + text);
        return *found;
    }

    void press(Qt::Key key)
    {
        QTest::keyClick(sheet().focusWidget(), key);
        processPosted();
    }

    void type(char const *text)
    {
        QTest::keyClicks(sheet().focusWidget(), QString::fromUtf8(text));
        processPosted();
    }

    QtMainContext mainContext;
    std::unique_ptr<QWidget> window = std::make_unique<QWidget>();
    std::shared_ptr<SheetDialogs> dialogs = std::make_shared<SheetDialogs>(*window, std::make_shared<JobList>());
    WindowLoginPrompter prompter;
    std::shared_ptr<Outcome<Answer>> outcome;
    std::stop_source stop;
};

TEST_F(LoginSheetTest, theWordsAreThoseOfSSHAndTheTitleNamesTheHost)
{
    ask(password());
    EXPECT_EQ(sheet().windowTitle(), QStringLiteral("Log in to box"));
    EXPECT_EQ(sheet().findChild<SheetText *>()->toPlainText(), QStringLiteral("ann@box's password:"));
    EXPECT_EQ(sheet().windowModality(), Qt::WindowModal);
    press(Qt::Key_Escape);
    EXPECT_EQ(answer(), std::nullopt);
}

TEST_F(LoginSheetTest, whatIsTypedIsHiddenUntilItIsToBeShown)
{
    ask(password());
    EXPECT_EQ(field().echoMode(), QLineEdit::Password);
    named<QCheckBox>("Show")->click();
    EXPECT_EQ(field().echoMode(), QLineEdit::Normal);
    named<QCheckBox>("Show")->click();
    EXPECT_EQ(field().echoMode(), QLineEdit::Password);
    press(Qt::Key_Escape);
}

TEST_F(LoginSheetTest, returnAnswersWithTheTextAsItWasTyped)
{
    ask(password());
    type(" two  words ");
    press(Qt::Key_Return);
    EXPECT_EQ(answer(), " two  words ");
}

TEST_F(LoginSheetTest, anEmptyTextIsNotSent)
{
    ask(password());
    press(Qt::Key_Return);
    EXPECT_FALSE(isDone());
    EXPECT_FALSE(button("Log In").isEnabled());
    type("x");
    EXPECT_TRUE(button("Log In").isEnabled());
    press(Qt::Key_Escape);
}

TEST_F(LoginSheetTest, anAnswerIsRememberedOnlyIfTheUserTicksIt)
{
    auto asked = password();
    asked.canBeRemembered = true;
    ask(asked);
    auto *const remember = named<QCheckBox>("Remember in the key store");
    ASSERT_TRUE(remember);
    EXPECT_FALSE(remember->isChecked());
    remember->click();
    field().setText(QStringLiteral("word"));
    button("Log In").click();
    processUntil([&] { return isDone(); });
    EXPECT_TRUE(outcome->take()->remember);

    ask(asked);
    field().setText(QStringLiteral("word"));
    button("Log In").click();
    processUntil([&] { return isDone(); });
    EXPECT_FALSE(outcome->take()->remember);
}

TEST_F(LoginSheetTest, aCodeCannotBeRemembered)
{
    ask(question(QuestionKind::other, "(ann@box) Verification code:"));
    EXPECT_FALSE(named<QCheckBox>("Remember in the key store"));
    press(Qt::Key_Escape);
}

TEST_F(LoginSheetTest, aSecondAttemptSaysThatTheFirstWasNotAccepted)
{
    constexpr auto words = "⚠︎ That was not accepted. Try again.";
    ask(password());
    EXPECT_FALSE(named<QLabel>(words));
    press(Qt::Key_Escape);
    auto asked = password();
    asked.attempt = 2;
    ask(asked);
    EXPECT_TRUE(named<QLabel>(words));
    press(Qt::Key_Escape);
}

TEST_F(LoginSheetTest, aHostKeyIsAcceptedByName)
{
    ask(hostKey());
    EXPECT_EQ(sheet().windowTitle(), QStringLiteral("Unknown key of box"));
    EXPECT_EQ(sheet().findChild<SheetText *>()->toPlainText(),
              QStringLiteral("The authenticity of host 'box' can't be established.\n"
                             "ED25519 key fingerprint is SHA256:abc."));
    button("Accept Key").click();
    EXPECT_EQ(answer(), "yes");
}

TEST_F(LoginSheetTest, aHostKeyShowsItsFingerprintInAFontToCompare)
{
    ask(hostKey());
    auto *const fingerprint = named<QLabel>("SHA256:abc");
    ASSERT_TRUE(fingerprint);
    EXPECT_TRUE(QFontInfo(fingerprint->font()).fixedPitch());
    press(Qt::Key_Escape);
}

TEST_F(LoginSheetTest, returnDoesNotAcceptAHostKey)
{
    ask(hostKey());
    press(Qt::Key_Return);
    EXPECT_EQ(answer(), std::nullopt);
    ask(hostKey());
    button("Accept Key").setFocus();
    press(Qt::Key_Return);
    EXPECT_EQ(answer(), std::nullopt);
}

TEST_F(LoginSheetTest, aQuestionOfYesOrNoHasBoth)
{
    auto const allow = question(QuestionKind::confirm, "Allow use of key work?");
    ask(allow);
    button("Yes").click();
    EXPECT_EQ(answer(), "yes");
    ask(allow);
    button("No").click();
    EXPECT_EQ(answer(), "no");
    ask(allow);
    press(Qt::Key_Return);
    EXPECT_EQ(answer(), "no");
    ask(allow);
    press(Qt::Key_Escape);
    EXPECT_EQ(answer(), std::nullopt);
}

TEST_F(LoginSheetTest, thePasswordOfAnArchiveIsAskedForByItsName)
{
    auto ofArchive = question(QuestionKind::archive, "It is encrypted.");
    ofArchive.host = "a.7z";
    ofArchive.attempt = 2;
    ask(ofArchive);
    EXPECT_TRUE(named<QLabel>("Password of a.7z"));
    EXPECT_TRUE(named<QLabel>("⚠︎ That was not accepted. Try again."));
    EXPECT_FALSE(button("Unlock").isEnabled());
    type("secret");
    button("Unlock").click();
    EXPECT_EQ(answer(), "secret");
}

TEST_F(LoginSheetTest, aNoticeGoesByItself)
{
    ask(question(QuestionKind::notice, "Confirm user presence for key ED25519-SK SHA256:abc"));
    EXPECT_TRUE(sheet().findChildren<QLineEdit *>().empty());
    stop.request_stop();
    processUntil([&] { return isDone(); });
    EXPECT_THROW(outcome->take(), Cancelled);
    EXPECT_THROW(sheet(), std::logic_error);
}

TEST_F(LoginSheetTest, oneQuestionStandsAtATime)
{
    ask(password());
    auto const first = outcome;
    ask(question(QuestionKind::other, "Code:"));
    EXPECT_EQ(sheet().findChild<SheetText *>()->toPlainText(), QStringLiteral("ann@box's password:"));
    press(Qt::Key_Escape);
    EXPECT_TRUE(first->value);
    EXPECT_EQ(sheet().findChild<SheetText *>()->toPlainText(), QStringLiteral("Code:"));
    press(Qt::Key_Escape);
    EXPECT_EQ(answer(), std::nullopt);
}

TEST_F(LoginSheetTest, whatAHostSaysIsNotMarkupAndFitsOnTheScreen)
{
    ask(question(QuestionKind::other, "<b>bold</b> " + std::string(2000, 'x')));
    EXPECT_TRUE(sheet().findChild<SheetText *>()->toPlainText().startsWith(QStringLiteral("<b>bold</b>")));
    EXPECT_LT(sheet().width(), 600);
    EXPECT_LT(sheet().height(), sheet().screen()->availableGeometry().height());
    press(Qt::Key_Escape);
}

TEST_F(LoginSheetTest, withoutAWindowNobodyAnswers)
{
    dialogs.reset();
    ask(password());
    EXPECT_EQ(answer(), std::nullopt);
}

} // namespace
} // namespace tw::test
