#include "TWEngine/Passwords/LoginPrompt.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

using QuestionKind = LoginQuestion::Kind;
using testing::HasSubstr;
using testing::Not;

LoginQuestion read(std::string_view prompt, std::string_view hint = {})
{
    return LoginPrompt::read(prompt, hint);
}

/// As OpenSSH 9.2 prints it.
constexpr auto unknownHost = "The authenticity of host '[127.0.0.1]:41123 ([127.0.0.1]:41123)' can't be established.\n"
                             "ED25519 key fingerprint is SHA256:pvEfxz1vJjLNBbnQyOTvpXEEMvRMyLdY2xPjqPRWnZE.\n"
                             "This key is not known by any other names.\n"
                             "Are you sure you want to continue connecting (yes/no/[fingerprint])? ";

TEST(LoginPromptTest, promptsOfOpenSSHAreToldApart)
{
    struct Row {
        char const *prompt;
        QuestionKind kind;
    };

    Row const rows[] = {
        {"ann@box's password: ", QuestionKind::password},
        {"(ann@box) Password: ", QuestionKind::password},
        {"(ann@box) Password for ann@box: ", QuestionKind::password},
        {"(ann@box) ann@box's password: ", QuestionKind::password},
        {"Enter passphrase for key '/home/ann/.ssh/id_ed25519': ", QuestionKind::passphrase},
        {"Enter passphrase for key 'id_rsa': ", QuestionKind::passphrase},
        {unknownHost, QuestionKind::hostKey},
        {"(ann@box) Verification code: ", QuestionKind::other},
        {"(ann@box) One-time password (OATH) for `ann': ", QuestionKind::other},
        {"(ann@box) Duo two-factor login for ann\n\n 1. Duo Push\n\nPasscode or option (1-1): ", QuestionKind::other},
        {"Enter PIN for 'PIV Card': ", QuestionKind::other},
        {"Enter PIN for ED25519-SK key /home/ann/.ssh/id_ed25519_sk: ", QuestionKind::other},
        {"Enter ann@box's old password: ", QuestionKind::other},
        {"Enter ann@box's new password: ", QuestionKind::other},
        {"Retype ann@box's new password: ", QuestionKind::other},
        {"(ann@box) New password: ", QuestionKind::other},
        {"Accept updated hostkeys? (yes/no): ", QuestionKind::confirm},
        {"(ann@box) Do you accept the rules (yes/no)? ", QuestionKind::other},
        {"", QuestionKind::other},
    };
    for (auto const &row : rows)
        EXPECT_EQ(read(row.prompt).kind, row.kind) << row.prompt;
}

TEST(LoginPromptTest, aHintSaysWhatTheWordsDoNot)
{
    EXPECT_EQ(read("Confirm user presence for key ED25519-SK SHA256:abc", "none").kind, QuestionKind::notice);
    EXPECT_EQ(read("Allow shared connection to box? ", "confirm").kind, QuestionKind::confirm);
    EXPECT_EQ(read("ann@box's password: ", "confirm").kind, QuestionKind::confirm);
    EXPECT_EQ(read("ann@box's password: ", "unheard of").kind, QuestionKind::password);
}

TEST(LoginPromptTest, aHostCannotAskInTheNameOfSSH)
{
    EXPECT_EQ(read("(ann@box) Enter passphrase for key '/home/ann/.ssh/id_rsa': ").kind, QuestionKind::other);
    EXPECT_EQ(read(std::string("(ann@box) ") + unknownHost).kind, QuestionKind::other);
}

TEST(LoginPromptTest, aHostKeyHasItsTypeAndFingerprint)
{
    auto const question = read(unknownHost);
    EXPECT_EQ(question.keyType, "ED25519");
    EXPECT_EQ(question.fingerprint, "SHA256:pvEfxz1vJjLNBbnQyOTvpXEEMvRMyLdY2xPjqPRWnZE");
    auto const newer = read("The authenticity of host 'box (::1)' can't be established.\n"
                            "RSA key fingerprint is: SHA256:abc\n"
                            "Are you sure you want to continue connecting (yes/no/[fingerprint])? ");
    EXPECT_EQ(newer.keyType, "RSA");
    EXPECT_EQ(newer.fingerprint, "SHA256:abc");
    EXPECT_EQ(read("The authenticity of host 'box' can't be established.").fingerprint, "");
}

TEST(LoginPromptTest, aPassphraseBelongsToItsKey)
{
    EXPECT_EQ(read("Enter passphrase for key '/home/ann/it's mine': ").keyPath, "/home/ann/it's mine");
    EXPECT_TRUE(read("Enter passphrase for key '/home/ann/key': ").canBeRemembered);
}

TEST(LoginPromptTest, aKeyWhoseNameMayBeCutOffIsNotRemembered)
{
    auto const cut = "/" + std::string(99, 'x'); // ssh prints at most a hundred bytes
    EXPECT_FALSE(read("Enter passphrase for key '" + cut + "': ").canBeRemembered);
    EXPECT_TRUE(read("Enter passphrase for key '" + cut.substr(1) + "': ").kind == QuestionKind::passphrase);
    EXPECT_FALSE(read("Enter passphrase for key 'relative': ").canBeRemembered);
}

TEST(LoginPromptTest, onlyPasswordsAndPassphrasesAreRemembered)
{
    EXPECT_TRUE(read("ann@box's password: ").canBeRemembered);
    for (auto const *prompt : {"(ann@box) Verification code: ", "Enter PIN for 'card': ", unknownHost})
        EXPECT_FALSE(read(prompt).canBeRemembered) << prompt;
    EXPECT_FALSE(read("ann@box's password: ", "confirm").canBeRemembered);
}

TEST(LoginPromptTest, theWordsAreLinesInWhichNothingIsHidden)
{
    auto const question = read("(ann@box) one\r\n\ttwo\x1b[2J\xE2\x80\xAEthree\xFF\n\n");
    EXPECT_EQ(question.prompt, "(ann@box) one\ntwo\xE2\x90\x9B[2J\xEF\xBF\xBDthree\xEF\xBF\xBD");
}

TEST(LoginPromptTest, theWordsAreBounded)
{
    for (auto const *part : {"x", "\xE2\x82\xAC", "\x01", "\n"}) {
        std::string prompt = "begin ";
        while (prompt.size() < 100'000)
            prompt += part;
        auto const shown = read(prompt).prompt;
        EXPECT_LE(shown.size(), LoginPrompt::longest);
        EXPECT_THAT(shown, Not(HasSubstr("\xEF\xBF\xBD\xEF"))) << "a character is not cut";
        EXPECT_TRUE(shown.starts_with("begin"));
    }
}

} // namespace
} // namespace tw::test
