#include "TWEngine/Passwords/AskpassGuard.h"

#include <gtest/gtest.h>

#include <map>

namespace tw::test {
namespace {

/// A made-up line of processes, from the one that asks upwards; "?" is one whose program cannot be read.
class AskpassGuardTest : public testing::Test {
protected:
    static constexpr auto own = "/usr/bin/tarnwick";
    static constexpr auto ssh = "/usr/bin/ssh";
    static constexpr auto shell = "/usr/bin/dash";

    /// Has the numbers 100, 99, ... and ends at 1.
    void line(std::vector<std::string> const &programs)
    {
        pid_t process = self;
        for (auto const &program : programs) {
            executables[process] = program;
            parents[process] = process - 1;
            --process;
        }
        parents[process + 1] = 1;
    }

    bool accepts() const { return AskpassGuard::calledByOurOwnSSH(self, table); }

    bool accepts(std::vector<std::string> const &callers)
    {
        auto all = callers;
        all.insert(all.begin(), own);
        line(all);
        return accepts();
    }

    bool isForJumpHost(std::vector<std::string> const &callers)
    {
        accepts(callers);
        return AskpassGuard::calledForJumpHost(self, table);
    }

    static constexpr pid_t self = 100;
    std::map<pid_t, std::string> executables;
    std::map<pid_t, pid_t> parents;
    std::map<pid_t, ino_t> inodes;
    ProcessTable const table{.executableOf = [this](pid_t process) -> std::optional<ProcessTable::Executable> {
                                 auto const found = executables.find(process);
                                 if (found == executables.end() || found->second == "?")
                                     return std::nullopt;
                                 return ProcessTable::Executable{.path = found->second, .inode = inodes[process]};
                             },
                             .parentOf = [this](pid_t process) -> std::optional<pid_t> {
                                 auto const found = parents.find(process);
                                 return found == parents.end() ? std::nullopt : std::optional(found->second);
                             }};
};

TEST_F(AskpassGuardTest, anSSHOfOursIsAnswered)
{
    EXPECT_TRUE(accepts({ssh, own}));
    EXPECT_TRUE(accepts({"/opt/openssh/bin/ssh", own})) << "wherever it is installed";
}

TEST_F(AskpassGuardTest, anSftpOfOursIsAnswered)
{
    EXPECT_TRUE(accepts({"/usr/bin/sftp", own}));
    EXPECT_TRUE(accepts({ssh, "/usr/bin/sftp", own}));
}

TEST_F(AskpassGuardTest, shellsMayStandBetween)
{
    EXPECT_TRUE(accepts({shell, ssh, shell, own}));
}

TEST_F(AskpassGuardTest, ourselvesWithoutAnSSHBetweenIsRefused)
{
    EXPECT_FALSE(accepts({own}));
    EXPECT_FALSE(accepts({shell, own}));
    EXPECT_FALSE(accepts({own, ssh, own})) << "the first of ours that is met decides";
}

TEST_F(AskpassGuardTest, anSSHOfSomebodyElseIsRefused)
{
    EXPECT_FALSE(accepts({ssh, shell, "/usr/bin/xterm"}));
    EXPECT_FALSE(accepts({ssh}));
    EXPECT_FALSE(accepts({shell}));
    EXPECT_FALSE(accepts({}));
}

TEST_F(AskpassGuardTest, anSSHAboveOursDoesNotCount)
{
    EXPECT_FALSE(accepts({shell, own, ssh}));
}

TEST_F(AskpassGuardTest, anotherProgramOfOurNameIsNotOurs)
{
    EXPECT_FALSE(accepts({ssh, "/home/ann/tarnwick"}));
    EXPECT_FALSE(accepts({ssh, "/usr/bin/tarnwick2"}));
}

TEST_F(AskpassGuardTest, anotherFileOfOurPathIsNotOurs)
{
    inodes = {{self, 7}, {self - 2, 8}};
    EXPECT_FALSE(accepts({ssh, own}));
    inodes[self - 2] = 7;
    EXPECT_TRUE(accepts({ssh, own}));
}

TEST_F(AskpassGuardTest, onlyTheWholeNameIsThatOfSSH)
{
    for (auto const *name : {"/usr/bin/ssh-agent", "/usr/bin/assh", "/ssh/x", "/usr/bin/sshd", "/usr/bin/SSH"})
        EXPECT_FALSE(accepts({name, own})) << name;
    EXPECT_TRUE(accepts({"ssh", own}));
}

TEST_F(AskpassGuardTest, whatCannotBeReadIsPassedOver)
{
    EXPECT_TRUE(accepts({"?", ssh, "?", own}));
    EXPECT_FALSE(accepts({"?", own}));
}

TEST_F(AskpassGuardTest, withoutAnOwnPathNobodyIsAnswered)
{
    line({"?", ssh, "?"});
    EXPECT_FALSE(accepts());
    line({"?", ssh, own});
    EXPECT_FALSE(accepts());
}

TEST_F(AskpassGuardTest, sixStepsAreLookedUp)
{
    EXPECT_TRUE(accepts({ssh, shell, shell, shell, shell, own}));
    EXPECT_FALSE(accepts({ssh, shell, shell, shell, shell, shell, own}));
}

TEST_F(AskpassGuardTest, theFirstProcessIsNoOneToAsk)
{
    accepts({ssh, own});
    for (pid_t const number : {1, 0, -1}) {
        executables[number] = own;
        parents[number] = 50;
        parents[self - 1] = number;
        EXPECT_FALSE(accepts()) << number;
    }
}

TEST_F(AskpassGuardTest, aProcessThatIsItsOwnParentIsRefused)
{
    accepts({ssh, own});
    parents[self - 1] = self - 1;
    EXPECT_FALSE(accepts());
}

TEST_F(AskpassGuardTest, aParentThatIsUnknownIsRefused)
{
    accepts({ssh, own});
    parents.erase(self - 1);
    EXPECT_FALSE(accepts());
    parents.erase(self);
    EXPECT_FALSE(accepts());
}

TEST_F(AskpassGuardTest, anSSHBelowAnSSHAsksForAHostInBetween)
{
    EXPECT_TRUE(isForJumpHost({ssh, ssh, own}));
    EXPECT_TRUE(isForJumpHost({ssh, shell, ssh, own}));
    EXPECT_FALSE(isForJumpHost({ssh, own}));
    EXPECT_FALSE(isForJumpHost({ssh, "/usr/bin/sftp", own}));
    EXPECT_FALSE(isForJumpHost({ssh, shell, own, ssh}));
}

TEST_F(AskpassGuardTest, thisTestWasNotCalledByAnSSHOfItsOwn)
{
    EXPECT_FALSE(AskpassGuard::calledByOurOwnSSH());
}

// Seen from one process.

TEST_F(AskpassGuardTest, aProcessAnswersTheSSHThatItHasStarted)
{
    accepts({ssh, own});
    EXPECT_EQ(AskpassGuard::callerBelow(self - 2, self, table), AskpassGuard::Caller::host);
}

TEST_F(AskpassGuardTest, anotherProcessOfTheSameProgramDoesNotAnswer)
{
    accepts({ssh, own, shell, own});
    EXPECT_EQ(AskpassGuard::callerBelow(self - 2, self, table), AskpassGuard::Caller::host);
    EXPECT_EQ(AskpassGuard::callerBelow(self - 10, self, table), AskpassGuard::Caller::stranger);
}

TEST_F(AskpassGuardTest, aProcessAnswersNobodyWithoutAnSSHInBetween)
{
    accepts({shell, own});
    EXPECT_EQ(AskpassGuard::callerBelow(self - 2, self, table), AskpassGuard::Caller::stranger);
    EXPECT_EQ(AskpassGuard::callerBelow(self, self, table), AskpassGuard::Caller::stranger);
}

TEST_F(AskpassGuardTest, theSSHOfAnSSHAsksForTheHostInBetween)
{
    accepts({ssh, shell, ssh, own});
    EXPECT_EQ(AskpassGuard::callerBelow(self - 4, self, table), AskpassGuard::Caller::jumpHost);
}

} // namespace
} // namespace tw::test
