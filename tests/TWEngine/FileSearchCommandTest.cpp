// The command that searches a file, run by the tools of a host.

#include "TWCore/Shell/FileSearch.h"
#include "tests/support/HostShell.h"

#include <fstream>

namespace tw::test {
namespace {

using SearchQuestion = FileSearch::Question;
using FileSearch::Sought;
using FileSearch::Which;
using SearchKind = FileSearch::Answer::Kind;

class FileSearchCommandTest : public HostShellTest {
protected:
    FileSearch::Answer ask(std::string const &path, SearchQuestion const &question)
    {
        auto const text = FileSearch::text(ShellDialect::posix, path, question);
        return FileSearch::answer(run(text.value()).output, question);
    }

    std::int64_t offsetOf(std::string const &path, SearchQuestion const &question)
    {
        auto const answer = ask(path, question);
        EXPECT_EQ(answer.kind, SearchKind::searched);
        return answer.found.match ? answer.found.match->offset : -1;
    }

    /// In place of grep, once it has been found to be a good one.
    void replaceGrep(std::string const &script)
    {
        replaceTool("grep", "[ \"$*\" = \"$1 x\" ] && exec /usr/bin/grep \"$@\"\n" + script);
    }

    static constexpr auto expression = Sought::Kind::expression;
};

TEST_F(FileSearchCommandTest, aMatchIsFoundFromBothEndsOfAPartWithAndWithoutAPipe)
{
    auto const path = folder.file("it's a log", std::string(1000, '\n') + "error 1\n" + std::string(1000, '\n') +
                                                    "error 2\nerror 3\n");
    for (auto const kind : {Sought::Kind::bytes, expression}) {
        Sought const sought{.pattern = "error", .kind = kind};
        EXPECT_EQ(offsetOf(path, {sought, {1, 1500}}), 1000);
        EXPECT_EQ(offsetOf(path, {sought, {1001, 2024}}), 2008);
        EXPECT_EQ(offsetOf(path, {sought, {1001, 2022}, Which::last}), 2016) << "the part ends before the file does";
        EXPECT_EQ(offsetOf(path, {sought, {1001, 2024}, Which::last}), 2016);
        EXPECT_EQ(offsetOf(path, {sought, {2017, 2024}}), -1);
        EXPECT_EQ(offsetOf(path, {sought, {300'000, 400'000}}), -1) << "the file has become shorter";
    }
}

TEST_F(FileSearchCommandTest, theRestOfAFileDoesNotGoThroughAPipe)
{
    replaceGrep("[ -f /dev/stdin ] && echo 7:x || echo 5:x");
    auto const path = folder.file("file", std::string(100, 'a'));
    EXPECT_EQ(offsetOf(path, {{"x"}, {10, 100}}), 17);
    EXPECT_EQ(offsetOf(path, {{"x"}, {10, 99}}), 15);
}

TEST_F(FileSearchCommandTest, whereTheKernelSaysHowFarItIsASearchGoesOnToTheEndOfTheFile)
{
    auto const path = folder.file("file", std::string(200'000, '\n') + "needle\n");
    constexpr std::int64_t size = 200'007;
    EXPECT_EQ(ask(path, {{"needle"}, {10, 100}}).found, FileSearch::Found{.to = 100});
    EXPECT_EQ(ask(path, {{"needle"}, {10, 100}, Which::first, {}, size}).found.match.value().offset, 200'000);
    EXPECT_EQ(ask(path, {{"needles"}, {10, 100}, Which::first, {}, size}).found, FileSearch::Found{.to = size});
    EXPECT_EQ(ask(path, {{"needles"}, {10, 100}, Which::first, {}, size - 1}).found, FileSearch::Found{.to = 100})
        << "the file has become longer";
    SearchQuestion const question{{"needles"}, {10, 100}, Which::first, {}, size};
    auto const text = "TMPDIR=/missing; " + FileSearch::text(ShellDialect::posix, path, question).value();
    EXPECT_EQ(FileSearch::answer(run(text).output, question).found.to, 100) << "nobody could end it";
}

TEST_F(FileSearchCommandTest, whatIsAroundAMatchComesWithItUnlessItIsAtHand)
{
    constexpr auto half = FileSearch::bytesAround / 2;
    std::string const head(2 * half + 3, 'a');
    auto const content = head + "needle" + std::string(2 * half, 'b') + "Nadel" + std::string(10, '\xff');
    auto const path = folder.file("file", content);
    auto const size = std::ssize(content);
    auto const middle = ask(path, {{"needle"}, {5, size}}).found.match.value();
    EXPECT_EQ(middle.offset, std::ssize(head));
    EXPECT_EQ(middle.around, content.substr(half, 2 * half));
    auto const last = ask(path, {{"Nadel"}, {5, size}}).found.match.value();
    EXPECT_EQ(last.around, content.substr(static_cast<std::size_t>(FileSearch::beginOfAround(last.offset))));
    auto const first = ask(path, {{"a"}, {5, size}}).found.match.value();
    EXPECT_EQ(first.around, content.substr(0, 2 * half));
    SearchQuestion atHand{{"needle"}, {5, size}, Which::first, {0, size}};
    EXPECT_EQ(ask(path, atHand).found.match.value().around, "");
    atHand.atHand = {0, middle.offset};
    EXPECT_EQ(ask(path, atHand).found.match.value().around, middle.around);
}

TEST_F(FileSearchCommandTest, aMatchComesAlsoWhereNothingCanSayWhatIsAroundIt)
{
    replaceTool("base64", "echo 'cannot do that' >&2; exit 1");
    auto const match = ask(folder.file("file", "a needle"), {{"needle"}, {0, 8}}).found.match.value();
    EXPECT_EQ(match.offset, 2);
    EXPECT_EQ(match.around, "");
}

TEST_F(FileSearchCommandTest, aLineThatNeedsTooMuchMemoryIsNoFileWithoutAMatch)
{
    auto const path = folder.file("file", "");
    constexpr std::int64_t size = FileSearch::mostBytesOfGrep + 100;
    std::filesystem::resize_file(path, size);
    std::ofstream(path, std::ios::app) << "x";
    for (auto const kind : {Sought::Kind::bytes, expression}) {
        for (auto const which : {Which::first, Which::last}) {
            EXPECT_EQ(ask(path, {{"x", kind}, {0, size + 1}, which}).kind, SearchKind::tooLong);
            EXPECT_EQ(ask(path, {{"x", kind}, {0, size - 100'000}, which}).kind, SearchKind::tooLong) << "by a pipe";
        }
    }
    EXPECT_EQ(offsetOf(path, {{"x"}, {size + 1 - FileSearch::pieceBytes, size + 1}}), size);
}

TEST_F(FileSearchCommandTest, anExpressionThatTriesTooManyWaysIsTooSlow)
{
    auto const path = folder.file("file", std::string(100, 'x'));
    EXPECT_EQ(ask(path, {{"(x+x+)+[yz]", expression}, {0, 100}}).kind, SearchKind::tooSlow);
    replaceGrep("kill -XCPU $$");
    EXPECT_EQ(ask(path, {{"x", expression}, {0, 100}}).kind, SearchKind::tooSlow);
    EXPECT_EQ(ask(path, {{"x"}, {0, 100}}).kind, SearchKind::failed) << "bytes have no limit of time";
}

TEST_F(FileSearchCommandTest, aGrepThatFailsSaysWhy)
{
    auto const path = folder.file("file", "x");
    replaceGrep("echo 'grep: (standard input): Input/output error' >&2; exit 2");
    for (auto const which : {Which::first, Which::last}) {
        auto const answer = ask(path, {{"x"}, {0, 1}, which});
        EXPECT_EQ(answer.kind, SearchKind::failed);
        EXPECT_EQ(answer.words, "Input/output error");
    }
    replaceGrep("echo 0:x; echo 'grep: memory exhausted' >&2; exit 2");
    EXPECT_EQ(offsetOf(path, {{"x"}, {0, 1}}), 0) << "the first match was found before";
    EXPECT_EQ(ask(path, {{"x"}, {0, 1}, Which::last}).kind, SearchKind::tooLong);
}

TEST_F(FileSearchCommandTest, aGrepThatCannotSayWhereAMatchIsIsNotAsked)
{
    replaceTool("grep", "echo x");
    EXPECT_EQ(ask(folder.file("file", "x"), {{"x"}, {0, 1}}).kind, SearchKind::unknown);
    EXPECT_EQ(ask(folder.path("missing"), {{"x"}, {0, 1}}).kind, SearchKind::unreadable);
}

TEST_F(FileSearchCommandTest, anOffsetOfManyGibibytesIsWhole)
{
    replaceGrep("echo 6000000000:x");
    auto const path = folder.file("file", "x");
    for (auto const which : {Which::first, Which::last})
        EXPECT_EQ(offsetOf(path, {{"x", expression}, {5'000'000'000, 20'000'000'000}, which}), 10'999'995'904);
}

} // namespace
} // namespace tw::test
