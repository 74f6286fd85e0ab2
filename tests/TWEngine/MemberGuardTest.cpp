#include "TWEngine/Transfer/MemberGuard.h"

#include "TWEngine/Transfer/TarError.h"

#include <gtest/gtest.h>

namespace tw::test {
namespace {

using MemberKind = TarHeader::Kind;

std::string answer(TarMember const &member, ShellDialect target = ShellDialect::posix)
{
    try {
        MemberGuard({"photos", "a b", "..."}, target).check(member);
    } catch (TarError const &error) {
        return error.what();
    }
    return "taken";
}

std::string answerTo(std::string name, ShellDialect target = ShellDialect::posix)
{
    return answer({.name = std::move(name)}, target);
}

TEST(MemberGuardTest, whatWasAskedForIsTaken)
{
    for (auto const *const name : {"photos", "photos/2024/a.jpg", "./photos/a", "a b", "...", "photos/..a", "photos/."})
        EXPECT_EQ(answerTo(name), "taken") << name;
}

TEST(MemberGuardTest, whatWasNotAskedForIsRefused)
{
    for (auto const *const name : {".ssh/authorized_keys", "photos2", "a", "", ".", "./.", "..", "../photos", "/photos",
                                   "//photos", "/etc/passwd", "photos/../.bashrc", "photos/..", "./../x"})
        EXPECT_EQ(answerTo(name), "the host sent what was not asked for: " + std::string(name)) << name;
}

TEST(MemberGuardTest, aHardLinkOutOfTheNamesIsRefused)
{
    EXPECT_EQ(answer({MemberKind::hardLink, "photos/a", "photos/b"}), "taken");
    EXPECT_EQ(answer({MemberKind::hardLink, "photos/a", "/etc/passwd"}),
              "the host sent a link to what was not asked for: /etc/passwd");
    EXPECT_EQ(answer({MemberKind::hardLink, "photos/a", "photos/../../x"}),
              "the host sent a link to what was not asked for: photos/../../x");
    EXPECT_EQ(answer({MemberKind::symbolicLink, "photos/a", "/etc/passwd"}), "taken");
}

TEST(MemberGuardTest, windowsKnowsMoreWaysOut)
{
    for (auto const *const name : {"photos\\..\\..\\x", "photos/a:stream", "C:/photos"})
        EXPECT_NE(answerTo(name, ShellDialect::powershell), "taken") << name;
    EXPECT_EQ(answerTo("photos/a\\b", ShellDialect::powershell), "taken");
    EXPECT_EQ(answerTo("photos/a:b\\..\\c"), "taken");
}

TEST(MemberGuardTest, aNameCannotChangeTheLineOfItsMessage)
{
    EXPECT_EQ(answerTo("x\ny"), "the host sent what was not asked for: x␊y");
}

} // namespace
} // namespace tw::test
