#include "TWEngine/Transfer/MemberGuard.h"

#include "TWEngine/Transfer/TarError.h"

#include <gtest/gtest.h>

namespace tw::test {
namespace {

using MemberKind = TarHeader::Kind;

TarMember folder(std::string name)
{
    return {MemberKind::folder, std::move(name)};
}

/// To these members of a stream, in this order.
std::string answerTo(std::vector<TarMember> const &members, ShellDialect target = ShellDialect::posix)
{
    MemberGuard guard({"photos", "a b", "..."}, target);
    try {
        for (auto const &member : members)
            guard.check(member);
    } catch (TarError const &error) {
        return error.what();
    }
    return "taken";
}

std::string answer(TarMember member, ShellDialect target = ShellDialect::posix)
{
    return answerTo({folder("photos"), folder("photos/2024"), std::move(member)}, target);
}

std::string answerTo(std::string name, ShellDialect target = ShellDialect::posix)
{
    return answer({.name = std::move(name)}, target);
}

TEST(MemberGuardTest, whatWasAskedForIsTaken)
{
    for (auto const *const name :
         {"photos", "photos/2024/a.jpg", "./photos/a", "a b", "...", "photos/..a", "photos/.a"})
        EXPECT_EQ(answerTo(name), "taken") << name;
}

TEST(MemberGuardTest, whatWasNotAskedForIsRefused)
{
    for (auto const *const name :
         {".ssh/authorized_keys", "photos2", "a", "", ".", "./.", "..", "../photos", "/photos", "//photos",
          "/etc/passwd", "photos/../.bashrc", "photos/..", "./../x", "photos/.", "photos/./a", "photos//a"})
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
    for (auto const *const name : {"photos\\..\\..\\x", "photos/a:stream", "C:/photos", "photos/a\\b"})
        EXPECT_NE(answerTo(name, ShellDialect::powershell), "taken") << name;
    EXPECT_EQ(answerTo("photos\\b", ShellDialect::powershell), "taken");
    EXPECT_EQ(answerTo("photos/a\\b"), "taken");
    EXPECT_EQ(answerTo("photos/a:b\\..\\c"), "taken");
}

TEST(MemberGuardTest, aMemberNeedsItsFolderBeforeIt)
{
    auto const refused = "the host sent what was not asked for: photos/in/evil";
    TarMember const evil{.name = "photos/in/evil"};
    EXPECT_EQ(answerTo({evil}), refused);
    EXPECT_EQ(answerTo({folder("photos"), evil}), refused);
    EXPECT_EQ(answerTo({folder("photos"), folder("photos/In"), evil}), refused);
    EXPECT_EQ(answerTo({folder("photos"), folder("photos/i"), folder("photos/inn"), evil}), refused);
    EXPECT_EQ(answerTo({folder("photos"), folder("photos/in"), evil}), "taken");
    EXPECT_EQ(answerTo({folder("./photos"), folder("./photos/in"), evil}), "taken");
}

TEST(MemberGuardTest, nothingComesBelowWhatHasReplacedAFolder)
{
    auto const refused = "the host sent what was not asked for: photos/in/evil";
    TarMember const evil{.name = "photos/in/evil"};
    for (auto const kind : {MemberKind::symbolicLink, MemberKind::hardLink, MemberKind::file, MemberKind::node}) {
        TarMember const other{kind, "photos/in", "photos"};
        EXPECT_EQ(answerTo({folder("photos"), other, evil}), refused);
        EXPECT_EQ(answerTo({folder("photos"), folder("photos/in"), other, evil}), refused);
        EXPECT_EQ(answerTo({folder("photos"), folder("photos/in"), {.name = "photos/in/a"}, other, evil}), refused);
        EXPECT_EQ(answerTo({folder("photos"), folder("photos/in"), {kind, "photos", "photos"}, evil}), refused);
        EXPECT_EQ(answerTo({folder("photos"), other, folder("photos/in"), evil}), "taken");
    }
}

TEST(MemberGuardTest, aNameCannotChangeTheLineOfItsMessage)
{
    EXPECT_EQ(answerTo("x\ny"), "the host sent what was not asked for: x␊y");
}

} // namespace
} // namespace tw::test
