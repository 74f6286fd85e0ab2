#include "TWEngine/Viewing/ViewedFile.h"

#include "TWCore/Model/ReadError.h"
#include "TWCore/Shell/ByteExpression.h"
#include "TWEngine/Browsing/LocalProvider.h"
#include "tests/support/SSHProviderTest.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>

#include <sys/stat.h>
#include <unistd.h>

namespace tw::test {
namespace {

/// Files of this machine, seen as such and as those of a host.
class ViewedFileTest : public SSHProviderTest {
protected:
    ViewedFileTest() { reach(); }

    std::vector<std::shared_ptr<FileSystemReader>> places()
    {
        return {std::make_shared<LocalProvider>(engine), connected()};
    }

    std::shared_ptr<ViewedFile> at(std::shared_ptr<FileSystemReader> place, std::string path)
    {
        return ViewedFile::at(engine, std::move(place), std::move(path));
    }

    std::string failureOf(ViewedFile &file)
    {
        try {
            loop.run(file.look());
        } catch (ReadError const &error) {
            return error.what();
        }
        return {};
    }
};

TEST_F(ViewedFileTest, aLinkIsWhatItLeadsTo)
{
    auto const path = folder.file("it's a file", "0123456789");
    auto const link = folder.link("link", path);
    for (auto const &place : places()) {
        auto const file = at(place, link);
        auto const facts = loop.run(file->look());
        EXPECT_EQ(facts.kind, EntryKind::file);
        EXPECT_EQ(facts.size, 10);
        EXPECT_EQ(loop.run(file->read(7, 100)), "789");
        EXPECT_EQ(loop.run(file->read(10, 100)), "");
    }
}

TEST_F(ViewedFileTest, whatIsNoFileIsKnownWithoutBeingOpened)
{
    auto const fifo = folder.path("fifo");
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    for (auto const &place : places()) {
        EXPECT_NE(loop.run(at(place, fifo)->look()).kind, EntryKind::file);
        EXPECT_NE(loop.run(at(place, "/dev/zero")->look()).kind, EntryKind::file);
        EXPECT_EQ(loop.run(at(place, folder.path())->look()).kind, EntryKind::directory);
    }
}

TEST_F(ViewedFileTest, bytesAreFoundInAPartFromBothEnds)
{
    constexpr std::int64_t far = 600 << 10;
    auto const path =
        folder.file("large", std::string(far, 'x') + "needle, Nadel: 'needle'\n" + std::string(far, '\0'));
    constexpr std::int64_t size = 2 * far + 24;
    using enum FileSearch::Which;
    for (auto const &place : places()) {
        auto const file = at(place, path);
        auto const found = [&](std::string bytes, FileSearch::Part part, FileSearch::Which which) {
            auto const match = loop.run(file->find({{.pattern = std::move(bytes)}, part, which})).match;
            return match ? match->offset : -1;
        };
        EXPECT_EQ(found("needle", {0, size}, first), far);
        EXPECT_EQ(found("needle", {far + 1, size}, first), far + 16);
        EXPECT_EQ(found("needle", {0, size}, last), far + 16);
        EXPECT_EQ(found("needle", {0, far + 5}, first), -1) << "not whole";
        EXPECT_EQ(found("xneedle", {0, size}, first), far - 1);
        EXPECT_EQ(found("'\n", {0, size}, first), far + 22) << "over the end of a line";
        EXPECT_EQ(found("needles", {0, size}, first), -1);
        EXPECT_EQ(found("needles", {0, size}, last), -1);
    }
}

TEST_F(ViewedFileTest, anExpressionIsFoundAlikeEverywhere)
{
    constexpr std::int64_t far = 300 << 10;
    std::string text;
    while (std::ssize(text) < far)
        text += "a line of a log\n";
    auto const path = folder.file("log", text + "x error 17 y\n" + text + "error 4\n");
    auto const size = 2 * far + 13 + 8;
    using enum FileSearch::Which;
    for (auto const &place : places()) {
        auto const file = at(place, path);
        auto const found = [&](std::string pattern, FileSearch::Part part, FileSearch::Which which) {
            auto const answer = loop.run(file->find(
                {{.pattern = std::move(pattern), .kind = FileSearch::Sought::Kind::expression}, part, which}));
            return answer.match ? answer.match->offset : -1;
        };
        EXPECT_EQ(found("error \\d+", {0, size}, first), far + 2);
        EXPECT_EQ(found("error \\d+", {far + 3, size}, first), 2 * far + 13);
        EXPECT_EQ(found("(?i)ERROR", {0, size}, last), 2 * far + 13);
        EXPECT_EQ(found("error", {0, 2 * far + 13}, last), far + 2);
        EXPECT_EQ(found("error 17", {0, far + 5}, first), far + 2) << "it begins in the part";
        EXPECT_EQ(found("^rror", {far + 3, size}, first), -1) << "no line begins there";
        EXPECT_EQ(found("[\\xC0-\\xFF]", {0, size}, first), -1);
        auto const trap = at(place, folder.file("trap", std::string(100, 'x')));
        EXPECT_THROW(
            loop.run(trap->find({{.pattern = "(x+x+)+[yz]", .kind = FileSearch::Sought::Kind::expression}, {0, 100}})),
            ByteExpression::TooSlow);
    }
}

TEST_F(ViewedFileTest, aChangeIsReportedWhereverTheFileIs)
{
    auto const path = folder.file("log", "one\n");
    for (auto const &place : places()) {
        auto const file = at(place, path);
        auto const before = loop.run(file->next(std::nullopt));
        EXPECT_EQ(before.size, static_cast<std::int64_t>(std::filesystem::file_size(path)));
        auto const growing = loop.start(file->next(before));
        loop.drain();
        std::ofstream log(path, std::ios::app);
        log << "two\n" << std::flush; // and stays open, as the log of a service does
        finish(growing);
        EXPECT_EQ(growing.value().size, before.size + 4);
        EXPECT_EQ(growing.value().identity, before.identity);
        auto const replaced = loop.start(file->next(growing.value()));
        loop.drain();
        std::filesystem::rename(folder.file("new", "another\n"), path);
        finish(replaced);
        EXPECT_NE(replaced.value().identity, before.identity);
        EXPECT_EQ(replaced.value().size, 8);
    }
}

TEST_F(ViewedFileTest, aLineThatIsCutFailsWithWordsAndTheNextReadingWorks)
{
    auto const path = folder.file("file", "0123456789");
    auto const provider = connected();
    auto const file = at(provider, path);
    EXPECT_EQ(loop.run(file->read(0, 5)), "01234");
    line->stall();
    auto const reading = loop.start(file->read(5, 5));
    loop.drain();
    line->cut();
    line->resume();
    loop.runUntil([&] { return reading.isDone(); });
    EXPECT_EQ(loop.run(file->read(5, 5)), "56789");
}

TEST_F(ViewedFileTest, theLogOfTheKernelIsNoFile)
{
    for (auto const &place : places())
        EXPECT_NE(loop.run(at(place, "/proc/kmsg")->look()).kind, EntryKind::file);
}

TEST_F(ViewedFileTest, aMissingFileHasWords)
{
    for (auto const &place : places()) {
        auto const path = folder.path("missing");
        EXPECT_EQ(failureOf(*at(place, path)), "cannot read " + path + ": No such file or directory");
        EXPECT_THROW(loop.run(at(place, path)->find({{.pattern = "x"}, {0, 10}})), ReadError);
    }
}

} // namespace
} // namespace tw::test
