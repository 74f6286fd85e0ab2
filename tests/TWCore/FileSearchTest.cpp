#include "TWCore/Shell/FileSearch.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

using namespace std::string_view_literals;

using FileSearch::Found;
using FileSearch::Part;
using FileSearch::Question;
using FileSearch::Sought;
using FileSearch::Which;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

std::string searchCommand(Question const &question)
{
    return FileSearch::text(ShellDialect::posix, "/it's", question).value_or("none");
}

TEST(FileSearchTest, bytesAreOneWordAndThePartIsCutOut)
{
    auto const command = searchCommand({.sought = {.pattern = "-e 'x'"}, .part = {.from = 100, .to = 1100}});
    EXPECT_THAT(command, HasSubstr("{ dd bs=1 skip=100 count=0 2>/dev/null; dd bs=65536 count=1; } <'/it'\\''s' | "));
    EXPECT_THAT(command, HasSubstr("grep -obUaF -m 1 -e '-e '\\''x'\\''' "));
}

TEST(FileSearchTest, theRestOfAFileIsReadWithoutAPipe)
{
    EXPECT_THAT(searchCommand({.sought = {.pattern = "x"}, .part = {.from = 100, .to = 1100}}),
                AllOf(HasSubstr("tw_to=1100; "),
                      HasSubstr("[ \"$tw_size\" -ge 100 ] && [ \"$tw_size\" -le $tw_to ]; "
                                "then { dd bs=1 skip=100 count=0 "),
                      HasSubstr("; tw_search; } <'/it'\\''s'; else "), Not(HasSubstr("/proc"))));
}

TEST(FileSearchTest, memoryIsLimitedAndTheTimeOfAnExpressionToo)
{
    auto const bytes = searchCommand({.sought = {.pattern = "x"}, .part = {.from = 0, .to = 10}});
    EXPECT_THAT(bytes, AllOf(HasSubstr("ulimit -v 524288;"), Not(HasSubstr("ulimit -t"))));
    auto const expression =
        searchCommand({.sought = {.pattern = "x", .kind = Sought::Kind::expression}, .part = {.from = 0, .to = 10}});
    EXPECT_THAT(expression, HasSubstr("{ ulimit -t 20; ulimit -v 524288; } 2>/dev/null"));
}

TEST(FileSearchTest, whatNoCommandFindsIsNotAskedFor)
{
    for (auto const bytes : {"a\nb"sv, "a\0b"sv, ""sv})
        EXPECT_EQ(searchCommand({.sought = {.pattern = std::string(bytes)}, .part = {}}), "none");
    EXPECT_FALSE(FileSearch::text(ShellDialect::powershell, "/C:/a", {.sought = {.pattern = "x"}, .part = {}}));
}

TEST(FileSearchTest, anAnswerIsAnOffsetInThePart)
{
    Question const question{.sought = {.pattern = "x"}, .part = {.from = 1000, .to = 2000}};
    auto const offsetIn = [&](std::string_view output) {
        auto const answer = FileSearch::answer(output, question);
        return answer.found.match ? answer.found.match->offset : -1;
    };
    EXPECT_EQ(offsetIn("5\n"), 1005);
    EXPECT_EQ(offsetIn("1000\n"), -1) << "it is behind the part";
    EXPECT_EQ(offsetIn("none 2000\n"), -1);
    using enum FileSearch::Answer::Kind;
    auto const kindOf = [&](std::string_view output) { return FileSearch::answer(output, question).kind; };
    EXPECT_EQ(kindOf("none 2000\n"), searched);
    EXPECT_EQ(kindOf("1000\n"), searched);
    EXPECT_EQ(kindOf("slow\n"), tooSlow);
    EXPECT_EQ(kindOf("unreadable\n"), unreadable);
    EXPECT_EQ(kindOf("failed memory exhausted\n"), tooLong);
    EXPECT_EQ(kindOf("failed exceeded PCRE's line length limit\n"), tooLong);
    EXPECT_EQ(kindOf("failed Input/output error\n"), failed);
    EXPECT_EQ(kindOf("failed \n"), failed);
    for (auto const *const wrong : {"", "cannot", "-1", "5 6", "grep: x", "none", "none x"})
        EXPECT_EQ(kindOf(wrong), unknown) << wrong;
}

TEST(FileSearchTest, anAnswerSaysHowFarTheSearchWentButNotFartherThanItMay)
{
    Question question{.sought = {.pattern = "xy"}, .part = {.from = 1000, .to = 2000}};
    auto const foundBy = [&](std::string_view output) { return FileSearch::answer(output, question).found; };
    EXPECT_EQ(foundBy("none 2000\n").to, 2000);
    EXPECT_EQ(foundBy("none 9000\n").to, 2000);
    EXPECT_EQ(foundBy("7000\n"), (Found{.match = {}, .to = 2000}));
    question.farthest = 9000;
    EXPECT_EQ(foundBy("none 2000\n").to, 2000);
    EXPECT_EQ(foundBy("none 9000\n").to, 9000);
    EXPECT_EQ(foundBy("none 1\n").to, 2000);
    EXPECT_EQ(foundBy("none 9001\n").to, 9000);
    EXPECT_EQ(foundBy("7000\n").match.value().offset, 8000);
    EXPECT_FALSE(foundBy("7999\n").match) << "it ends behind the file";
}

TEST(FileSearchTest, aPositionIsANumberOrNotKnown)
{
    EXPECT_EQ(FileSearch::position("6000000000\n"), 6'000'000'000);
    for (auto const *const wrong : {"", "-1\n", "pos\n", "1 2\n"})
        EXPECT_EQ(FileSearch::position(wrong), std::nullopt) << wrong;
}

TEST(FileSearchTest, whatIsAroundAMatchComesWithIt)
{
    Question const question{.sought = {.pattern = "x"}, .part = {.from = 1000, .to = 2000}};
    auto const aroundIn = [&](std::string const &output) {
        auto const answer = FileSearch::answer(output, question);
        return answer.found.match ? answer.found.match->around : "no match";
    };
    EXPECT_EQ(aroundIn("5\nYWJj"), "abc");
    EXPECT_EQ(aroundIn("5\n"), "");
    EXPECT_EQ(aroundIn("5\nYWJ"), "") << "it was cut off";
    EXPECT_EQ(aroundIn("5\nsh: base64: not found\n"), "");
    EXPECT_EQ(aroundIn("5\n" + std::string((FileSearch::bytesAround + 3) / 3 * 4, 'A')), "") << "more than was wanted";
    EXPECT_EQ(FileSearch::beginOfAround(10), 0);
    EXPECT_EQ(FileSearch::beginOfAround(FileSearch::bytesAround / 2 + 7), 4) << "with a whole character of UTF-32";
}

TEST(FileSearchTest, aPartIsCutIntoPiecesThatOverlap)
{
    constexpr auto piece = FileSearch::pieceBytes;
    Question question{.sought = {.pattern = "abc"}, .part = {.from = 10, .to = 10 + piece + 2}};
    EXPECT_THAT(FileSearch::piecesOf(question), IsEmpty());
    question.part.to += piece;
    EXPECT_THAT(FileSearch::piecesOf(question), ElementsAre(Part{10, 12 + piece}, Part{10 + piece, 12 + 2 * piece}));
    question.which = Which::last;
    question.part.to += 1;
    EXPECT_THAT(FileSearch::piecesOf(question), ElementsAre(Part{10 + 2 * piece, 13 + 2 * piece},
                                                            Part{10 + piece, 12 + 2 * piece}, Part{10, 12 + piece}));
}

TEST(FileSearchTest, aFailureHasWords)
{
    auto const wordsFor = [](FileSearch::Answer const &answer) -> std::string {
        try {
            FileSearch::throwIfFailed(answer);
        } catch (std::exception const &failure) {
            return failure.what();
        }
        return {};
    };
    using enum FileSearch::Answer::Kind;
    EXPECT_EQ(wordsFor({.kind = tooLong}), "this file cannot be searched: one of its lines is too long");
    EXPECT_EQ(wordsFor({.kind = failed, .words = "Input/output error"}),
              "this file cannot be searched: Input/output error");
    EXPECT_EQ(wordsFor({.kind = failed}), "this file cannot be searched: grep has failed");
    EXPECT_EQ(wordsFor({.kind = tooSlow}), "the expression takes too long in this file");
    EXPECT_EQ(wordsFor({.kind = searched}), "");
}

} // namespace
} // namespace tw::test
