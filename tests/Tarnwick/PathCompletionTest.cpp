#include "Tarnwick/Panes/PathCompletion.h"

#include "tests/support/Listings.h"

#include <gtest/gtest.h>

namespace tw::test {
namespace {

using Turn = PathCompletion::Turn;

PathCompletion completed(std::string typed, std::vector<ListedEntry> const &rows)
{
    return {std::move(typed), listing("/srv", rows)};
}

std::string textOf(std::string typed, std::vector<ListedEntry> const &rows)
{
    return completed(std::move(typed), rows).text();
}

TEST(PathCompletionTest, theOnlyNameIsCompletedWithASlash)
{
    EXPECT_EQ(textOf("/srv/da", {directory("data"), directory("logs")}), "/srv/data/");
    EXPECT_EQ(textOf("~/d", {directory("data")}), "~/data/");
    EXPECT_EQ(textOf("d", {directory("data")}), "data/");
}

TEST(PathCompletionTest, ofSeveralNamesWhatTheyHaveInCommon)
{
    EXPECT_EQ(textOf("/srv/d", {directory("data-1"), directory("data-2")}), "/srv/data-");
}

TEST(PathCompletionTest, whatIsCommonEndsWithAWholeCharacter)
{
    EXPECT_EQ(textOf("/srv/", {directory("가"), directory("각")}), "/srv/가") << "the bytes have a beginning in common";
    EXPECT_EQ(textOf("/srv/x", {directory("xä"), directory("xö")}), "/srv/xä");
}

TEST(PathCompletionTest, thenTheNamesComeOneAfterTheOtherInBothDirections)
{
    auto completion = completed("/srv/d", {directory("dc"), directory("da"), directory("db")});
    EXPECT_EQ(completion.text(), "/srv/da") << "nothing more is common, so the first comes at once";
    completion.turn(Turn::forward);
    EXPECT_EQ(completion.text(), "/srv/db");
    completion.turn(Turn::forward);
    completion.turn(Turn::forward);
    EXPECT_EQ(completion.text(), "/srv/da");
    completion.turn(Turn::backward);
    EXPECT_EQ(completion.text(), "/srv/dc");
}

TEST(PathCompletionTest, oneOfTheNamesIsChosenAndTurningGoesOnFromIt)
{
    auto completion = completed("/srv/x", {directory("xya"), directory("xyb"), directory("xyc")});
    EXPECT_EQ(completion.text(), "/srv/xy");
    EXPECT_EQ(completion.chosen(), std::nullopt);
    completion.choose(1);
    EXPECT_EQ(completion.text(), "/srv/xyb");
    EXPECT_EQ(completion.chosen(), 1U);
    completion.turn(Turn::forward);
    EXPECT_EQ(completion.text(), "/srv/xyc");
    EXPECT_EQ(completion.choices(), (std::vector<std::string>{"xya", "xyb", "xyc"}));
}

TEST(PathCompletionTest, backwardsFromWhatIsCommonTheLastNameComesFirst)
{
    auto completion = completed("/srv/", {directory("xa"), directory("xb")});
    EXPECT_EQ(completion.text(), "/srv/x");
    completion.turn(Turn::backward);
    EXPECT_EQ(completion.text(), "/srv/xb");
}

TEST(PathCompletionTest, foldersAndLinksCountAndFilesDoNot)
{
    EXPECT_EQ(textOf("/srv/d", {file("data"), symlink("dir")}), "/srv/dir/");
    EXPECT_TRUE(completed("/srv/d", {file("data")}).isEmpty());
    EXPECT_EQ(textOf("/srv/d", {file("data")}), "/srv/d");
}

TEST(PathCompletionTest, hiddenFoldersCountBehindADot)
{
    EXPECT_TRUE(completed("/srv/", {directory(".git")}).isEmpty());
    EXPECT_EQ(textOf("/srv/.", {directory(".git")}), "/srv/.git/");
}

TEST(PathCompletionTest, aNameThatCannotBeReadInTheFieldIsLeftOut)
{
    EXPECT_TRUE(completed("/srv/", {directory("\xff"), directory("a\nb"), directory("a\u202Eb")}).isEmpty());
}

TEST(PathCompletionTest, aNameThatWouldReadAsAHostIsLeftOut)
{
    EXPECT_TRUE(completed("a", {directory("a:b")}).isEmpty());
    EXPECT_EQ(textOf("./a", {directory("a:b")}), "./a:b/");
}

TEST(PathCompletionTest, theNamesToGoThroughAreBounded)
{
    std::vector<ListedEntry> rows;
    for (auto number = 10'000; number < 12'000; ++number)
        rows.push_back(directory(std::to_string(number)));
    auto completion = completed("/srv/", rows);
    EXPECT_EQ(completion.text(), "/srv/1");
    completion.turn(Turn::backward);
    EXPECT_EQ(completion.text(), "/srv/10999");
}

} // namespace
} // namespace tw::test
