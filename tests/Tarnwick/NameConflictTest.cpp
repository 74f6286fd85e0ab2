#include "Tarnwick/Operations/ConflictAnswers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

using testing::ElementsAre;
using Answer = NameConflict::Answer;
using Comparison = NameConflict::Comparison;
using Occupant = FolderFacts::Occupant;

Occupant fileOf(std::int64_t size, std::int64_t mtime)
{
    return {.name = "a", .kind = EntryKind::file, .size = size, .mtime = mtime};
}

Occupant folderOf(std::int64_t mtime)
{
    return {.name = "a", .kind = EntryKind::directory, .size = 0, .mtime = mtime};
}

Comparison compared(Occupant source, Occupant target)
{
    return NameConflict{std::move(source), std::move(target)}.comparison();
}

TEST(NameConflictTest, theDateSaysWhichFileIsTheNewerOne)
{
    EXPECT_EQ(compared(fileOf(1, 20), fileOf(1, 10)), Comparison::newer);
    EXPECT_EQ(compared(fileOf(1, 10), fileOf(9, 20)), Comparison::older);
    EXPECT_EQ(compared(fileOf(1, -5), fileOf(1, -9)), Comparison::newer) << "before 1970 too";
}

TEST(NameConflictTest, filesOfOneDateAreTheSameIfTheirSizesAre)
{
    EXPECT_EQ(compared(fileOf(1, 10), fileOf(1, 10)), Comparison::same);
    EXPECT_EQ(compared(fileOf(1, 10), fileOf(2, 10)), Comparison::differs);
}

TEST(NameConflictTest, nothingIsSaidAboutTheDatesOfFolders)
{
    EXPECT_EQ(compared(folderOf(20), folderOf(10)), Comparison::folders);
    EXPECT_EQ(compared(folderOf(10), folderOf(10)), Comparison::folders);
}

TEST(NameConflictTest, aFolderIsNotComparedWithAFile)
{
    EXPECT_EQ(compared(folderOf(20), fileOf(0, 10)), Comparison::unlike);
}

ConflictAnswers threeNames()
{
    NameConflict const any{fileOf(1, 1), fileOf(1, 1)};
    return ConflictAnswers({any, any, any});
}

TEST(ConflictAnswersTest, atFirstNoNameHasAnAnswer)
{
    EXPECT_EQ(threeNames().openCount(), 3U);
    EXPECT_EQ(threeNames().answer(1), std::nullopt);
}

TEST(ConflictAnswersTest, theRestGetsOneAnswerAndSingleAnswersStay)
{
    auto answers = threeNames();
    answers.setAnswer(1, Answer::replace);
    answers.answerRest(Answer::skip);
    EXPECT_THAT(answers.all(), ElementsAre(Answer::skip, Answer::replace, Answer::skip));
    EXPECT_EQ(answers.openCount(), 0U);
}

TEST(ConflictAnswersTest, aFolderAndAFileDoNotReplaceEachOther)
{
    ConflictAnswers answers({{folderOf(1), fileOf(1, 1)}, {fileOf(1, 1), folderOf(1)}, {folderOf(1), folderOf(1)}});
    answers.setAnswer(0, Answer::replace);
    answers.answerRest(Answer::replace);
    EXPECT_EQ(answers.answer(0), std::nullopt);
    EXPECT_EQ(answers.answer(1), std::nullopt);
    EXPECT_EQ(answers.answer(2), Answer::replace);
    EXPECT_FALSE(answers.isReplaceOpen());
    answers.answerRest(Answer::keepBoth);
    EXPECT_THAT(answers.all(), ElementsAre(Answer::keepBoth, Answer::keepBoth, Answer::replace));
}

TEST(ConflictAnswersTest, anAnswerCanBeTakenBack)
{
    auto answers = threeNames();
    answers.setAnswer(1, Answer::replace);
    answers.setAnswer(1, std::nullopt);
    EXPECT_EQ(answers.openCount(), 3U);
}

TEST(ConflictAnswersTest, theNextNameWithoutAnAnswerIsLookedForRoundTheEnd)
{
    auto answers = threeNames();
    EXPECT_EQ(answers.nextOpen(0), 1U);
    answers.setAnswer(1, Answer::skip);
    EXPECT_EQ(answers.nextOpen(0), 2U);
    EXPECT_EQ(answers.nextOpen(2), 0U);
    answers.answerRest(Answer::skip);
    EXPECT_EQ(answers.nextOpen(0), std::nullopt);
}

} // namespace
} // namespace tw::test
