#include "TWEngine/Passwords/AskpassPrompt.h"

#include <gtest/gtest.h>

namespace tw::test {
namespace {

struct Question {
    char const *text;
    bool isForPassword;
};

class AskpassPromptTest : public testing::TestWithParam<Question> {};

TEST_P(AskpassPromptTest, onlyAQuestionForAPasswordIsAnswered)
{
    EXPECT_EQ(AskpassPrompt::asksForPassword(GetParam().text), GetParam().isForPassword) << GetParam().text;
}

INSTANTIATE_TEST_SUITE_P(
    OfOpenSSH, AskpassPromptTest,
    testing::Values(Question{"ann@box's password: ", true}, Question{"ann@10.0.0.1's password: ", true},
                    Question{"ann@fe80::1%eth0's password: ", true}, Question{"o'neil@box's password: ", true},
                    Question{"Enter passphrase for key '/home/ann/.ssh/id_ed25519': ", false},
                    Question{"Enter passphrase for key 'ann@box's password: ", false},
                    Question{"Enter passphrase for ann@box: ", false},
                    Question{"Bad passphrase, try again for /home/ann/.ssh/id_rsa: ", false},
                    Question{"Enter PIN for ED25519-SK key /home/ann/.ssh/id_sk: ", false},
                    Question{"Enter PIN for 'token': ", false},
                    Question{"Confirm user presence for key ED25519-SK SHA256:abc", false},
                    Question{"The authenticity of host 'box (10.0.0.1)' can't be established.\n"
                             "ED25519 key fingerprint is SHA256:abc.\n"
                             "This key is not known by any other names.\n"
                             "Are you sure you want to continue connecting "
                             "(yes/no/[fingerprint])? ",
                             false},
                    Question{"Please type 'yes', 'no' or the fingerprint: ", false},
                    Question{"Are you sure you want to continue connecting (yes/no)? ", false},
                    Question{"Allow use of key /home/ann/.ssh/id?\nKey fingerprint SHA256:abc.", false},
                    Question{"Accept updated hostkeys? (yes/no): ", false},
                    Question{"Enter ann@box's old password: ", false},
                    Question{"Enter ann@box's new password: ", false},
                    Question{"Retype ann@box's new password: ", false}));

INSTANTIATE_TEST_SUITE_P(
    OfAHost, AskpassPromptTest,
    testing::Values(
        Question{"Password: ", true}, Question{"Password:", true}, Question{"password: ", true},
        Question{"(ann@box) Password: ", true}, Question{"(ann@10.0.0.1) Password:", true},
        Question{"(ann@box) Password for ann@box:", true}, Question{"Password for ann@box: ", true},
        Question{"(ann@box) ann's password: ", true}, Question{"(ann@box) \r\nPassword: ", true},
        Question{"(ann@box) Verification code: ", false},
        Question{"(ann@box) One-time password (OATH) for `ann': ", false},
        Question{"(ann@box) One-time password: ", false}, Question{"(ann@box) Password & verification code: ", false},
        Question{"(ann@box) Password + token: ", false}, Question{"(ann@box) Passcode: ", false},
        Question{"(ann@box) Enter PASSCODE: ", false}, Question{"(ann@box) New password: ", false},
        Question{"(ann@box) Current password: ", false}, Question{"(ann@box) (current) UNIX password: ", false},
        Question{"(ann@box) Retype new password: ", false}, Question{"(ann@box) Passcode or option (1-3): ", false},
        Question{"(ann@box) Challenge 17 password for ann: ", false},
        Question{"(ann@box) Password for key of ann: ", false}, Question{"(ann@box) PIN: ", false},
        Question{"(ann@box) otp-md5 98 as8912 ext\nPassword: ", false}, Question{"(ann@box) Passwort: ", false}));

INSTANTIATE_TEST_SUITE_P(OfNobody, AskpassPromptTest,
                         testing::Values(Question{"", false}, Question{" ", false}, Question{":", false},
                                         Question{"(", false}, Question{"()", false}, Question{"() Password: ", false},
                                         Question{"'s password: ", false}, Question{"password", false},
                                         Question{"Password for : ", false}, Question{"Password? ", false}));

} // namespace
} // namespace tw::test
