#include "TWEngine/Passwords/LoginDialogue.h"

#include "TWEngine/Passwords/LoginPrompt.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

using Asker = LoginDialogue::Asker;
using testing::IsEmpty;
using testing::Optional;

class LoginDialogueTest : public testing::Test {
protected:
    static constexpr auto password = "ann@box's password: ";
    static constexpr auto passphrase = "Enter passphrase for key '/keys/one': ";
    static constexpr auto code = "(ann@box) Verification code: ";

    std::optional<LoginQuestion> ask(std::string const &prompt, Asker asker = Asker::host)
    {
        return dialogue.ask(LoginPrompt::read(prompt, {}), asker);
    }

    /// Asks, and answers if that is wanted. Returns the attempt; 0 if nothing more may be asked.
    int attempt(std::string const &prompt, std::string const &text = "wrong", bool remember = false,
                Asker asker = Asker::host)
    {
        auto const question = ask(prompt, asker);
        if (!question)
            return 0;
        dialogue.answer(*question, asker, {.text = SecretText(text), .remember = remember});
        return question->attempt;
    }

    /// What would be stored.
    std::map<std::string, std::string> remembered()
    {
        std::map<std::string, std::string> texts;
        for (auto const &[account, text] : dialogue.takeRemembered())
            texts.emplace(account, text.text());
        return texts;
    }

    LoginDialogue dialogue{"box"};
};

TEST_F(LoginDialogueTest, aQuestionNamesTheHostAsTheUserCallsIt)
{
    EXPECT_EQ(ask(code)->host, "box");
    EXPECT_EQ(ask(code)->prompt, "(ann@box) Verification code:");
}

TEST_F(LoginDialogueTest, theSameQuestionAgainMeansThatTheAnswerWasRefused)
{
    EXPECT_EQ(attempt(password), 1);
    EXPECT_EQ(attempt(password), 2);
    EXPECT_EQ(attempt(password), 3);
}

TEST_F(LoginDialogueTest, threeRefusalsEndIt)
{
    attempt(password);
    attempt(password);
    attempt(password);
    EXPECT_EQ(attempt(password), 0);
    EXPECT_EQ(attempt(code), 1) << "the owner ends it; a further question is its own";
}

TEST_F(LoginDialogueTest, refusalsOfDifferentAnswersCountTogether)
{
    attempt(passphrase);
    attempt(passphrase);
    attempt(password);
    attempt(password);
    attempt(code);
    EXPECT_EQ(attempt(code), 0);
}

TEST_F(LoginDialogueTest, aPasswordAskedForInOtherWordsWasRefused)
{
    attempt("(ann@box) Password: ");
    EXPECT_EQ(attempt(password), 2);
}

TEST_F(LoginDialogueTest, anotherQuestionIsNoRefusal)
{
    EXPECT_EQ(attempt(passphrase), 1);
    EXPECT_EQ(attempt("Enter passphrase for key '/keys/two': "), 1);
    EXPECT_EQ(attempt(password), 1);
    EXPECT_EQ(attempt(code), 1);
    EXPECT_EQ(attempt("(ann@box) Pin: "), 1);
}

TEST_F(LoginDialogueTest, aQuestionThatWasNotAnsweredIsAskedAgainAsTheFirst)
{
    ask(password);
    EXPECT_EQ(ask(password)->attempt, 1);
}

TEST_F(LoginDialogueTest, yesAndNoAreNeverRefused)
{
    constexpr auto hostKey = "The authenticity of host 'box' can't be established.";
    for (int time = 0; time < 10; ++time)
        EXPECT_EQ(attempt(hostKey, "yes"), 1);
}

TEST_F(LoginDialogueTest, aHostThatAsksForEverIsLeft)
{
    for (int question = 0; question < LoginDialogue::mostQuestions; ++question)
        EXPECT_EQ(attempt("(ann@box) Question " + std::to_string(question) + ": "), 1);
    EXPECT_EQ(attempt("(ann@box) Another: "), 0);
}

TEST_F(LoginDialogueTest, onlyTheAnswersThatAreToBeRememberedAreKept)
{
    attempt(passphrase, "phrase", true);
    attempt(password, "word");
    attempt(code, "123", true);
    EXPECT_EQ(remembered(), (std::map<std::string, std::string>{{"/keys/one", "phrase"}}));
    EXPECT_THAT(remembered(), IsEmpty()) << "they are moved out";
}

TEST_F(LoginDialogueTest, aPasswordIsKeptUnderItsHost)
{
    attempt(password, "word", true);
    EXPECT_EQ(remembered(), (std::map<std::string, std::string>{{"box", "word"}}));
}

TEST_F(LoginDialogueTest, anAnswerThatWasRefusedIsNotKept)
{
    attempt(password, "wrong", true);
    attempt(password, "right");
    EXPECT_THAT(remembered(), IsEmpty());
}

TEST_F(LoginDialogueTest, thePasswordOfAHostInBetweenIsNeitherKeptNorTakenForTheHosts)
{
    EXPECT_FALSE(ask("ann@jump's password: ", Asker::hostInBetween)->canBeRemembered);
    attempt("ann@jump's password: ", "jump", true, Asker::hostInBetween);
    EXPECT_EQ(attempt(password, "word", true), 1);
    EXPECT_EQ(attempt("ann@jump's password: ", "jump", true, Asker::hostInBetween), 2);
    EXPECT_EQ(remembered(), (std::map<std::string, std::string>{{"box", "word"}}));
}

TEST_F(LoginDialogueTest, aPassphraseIsTheSameForEveryHost)
{
    EXPECT_TRUE(ask(passphrase, Asker::hostInBetween)->canBeRemembered);
}

} // namespace
} // namespace tw::test
