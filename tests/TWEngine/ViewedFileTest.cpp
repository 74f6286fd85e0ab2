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

TEST_F(ViewedFileTest, aMissingFileHasWords)
{
    for (auto const &place : places()) {
        auto const path = folder.path("missing");
        EXPECT_EQ(failureOf(*at(place, path)), "cannot read " + path + ": No such file or directory");
    }
}

} // namespace
} // namespace tw::test
