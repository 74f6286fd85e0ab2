#include "TWEngine/Viewing/ViewedFile.h"

#include "TWCore/Model/ReadError.h"
#include "TWEngine/Browsing/LocalProvider.h"
#include "tests/support/SSHProviderTest.h"

#include <gmock/gmock.h>

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
    constexpr std::int64_t far = 3 << 20;
    auto const path =
        folder.file("large", std::string(far, 'x') + "needle, Nadel: 'needle'\n" + std::string(far, '\0'));
    constexpr std::int64_t size = 2 * far + 24;
    using enum FileSearch::Which;
    for (auto const &place : places()) {
        auto const file = at(place, path);
        auto const found = [&](std::string bytes, FileSearch::Part part, FileSearch::Which which) {
            return loop.run(file->find(std::move(bytes), part, which)).value_or(-1);
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

TEST_F(ViewedFileTest, aMissingFileHasWords)
{
    for (auto const &place : places()) {
        auto const path = folder.path("missing");
        EXPECT_EQ(failureOf(*at(place, path)), "cannot read " + path + ": No such file or directory");
    }
}

} // namespace
} // namespace tw::test
