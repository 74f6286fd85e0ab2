#include "TWEngine/Runtime/WholeFile.h"

#include "TWEngine/Runtime/FileDescriptor.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <thread>

#include <fcntl.h>
#include <unistd.h>

namespace tw::test {
namespace {

class WholeFileTest : public testing::Test {
protected:
    WholeFileTest()
    {
        int ends[2];
        if (::pipe2(ends, O_CLOEXEC) == 0) {
            readEnd = FileDescriptor(ends[0]);
            writeEnd = FileDescriptor(ends[1]);
        }
    }

    FileDescriptor readEnd;
    FileDescriptor writeEnd;
};

TEST_F(WholeFileTest, moreThanAPipeHoldsGoesThroughInPieces)
{
    std::string const text(3'000'000, 'x');
    std::jthread const writer([&] {
        EXPECT_EQ(WholeFile::write(writeEnd.get(), text), 0);
        writeEnd = FileDescriptor();
    });
    std::string bytes;
    EXPECT_EQ(WholeFile::readUpTo(readEnd.get(), bytes.max_size(), bytes), 0);
    EXPECT_EQ(bytes, text);
}

TEST_F(WholeFileTest, noMoreIsReadThanIsWanted)
{
    ASSERT_EQ(WholeFile::write(writeEnd.get(), "0123456789"), 0);
    std::string bytes = "ab";
    EXPECT_EQ(WholeFile::readUpTo(readEnd.get(), 6, bytes), 0);
    EXPECT_EQ(bytes, "ab0123");
    EXPECT_EQ(WholeFile::readUpTo(readEnd.get(), 6, bytes), 0);
    EXPECT_EQ(bytes, "ab0123");
}

TEST_F(WholeFileTest, whatIsClosedIsAtItsEndForTheReader)
{
    ASSERT_EQ(WholeFile::write(writeEnd.get(), "x"), 0);
    EXPECT_EQ(WholeFile::close(std::move(writeEnd)), 0);
    std::string bytes;
    EXPECT_EQ(WholeFile::readUpTo(readEnd.get(), bytes.max_size(), bytes), 0);
    EXPECT_EQ(bytes, "x");
}

TEST_F(WholeFileTest, whatTheSystemRefusesIsTold)
{
    EXPECT_EQ(WholeFile::close(FileDescriptor()), EBADF);
    FileDescriptor const full(::open("/dev/full", O_WRONLY | O_CLOEXEC));
    EXPECT_EQ(WholeFile::write(full.get(), "x"), ENOSPC);
    EXPECT_EQ(WholeFile::write(full.get(), ""), 0);
    TemporaryFolder const folder;
    FileDescriptor const directory(::open(folder.path().c_str(), O_RDONLY | O_CLOEXEC));
    std::string bytes = "kept";
    EXPECT_EQ(WholeFile::readUpTo(directory.get(), 10, bytes), EISDIR);
    EXPECT_EQ(bytes, "kept");
}

} // namespace
} // namespace tw::test
