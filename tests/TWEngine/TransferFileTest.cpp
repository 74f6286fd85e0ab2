#include "TWEngine/SSH/TransferFile.h"

#include "TWCore/Model/ReadError.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestLoop.h"

#include <gtest/gtest.h>

namespace tw::test {
namespace {

class TransferFileTest : public testing::Test {
protected:
    EngineRuntime engine;
    TestLoop loop;
    TemporaryFolder folder;
};

TEST_F(TransferFileTest, whatWasWrittenIsThereBehindItsFinish)
{
    auto const path = folder.path("file");
    auto const file = loop.run(TransferFile::open(engine, path, TransferFile::Purpose::toWrite));
    ASSERT_TRUE(file);
    loop.run(TransferFile::writer(engine, file, path)("bytes"));
    loop.run(TransferFile::finish(engine, file, path));
    EXPECT_FALSE(file->descriptor);
    EXPECT_EQ(contentOf(path), "bytes");
}

TEST_F(TransferFileTest, aFileThatDoesNotCloseIsNoWholeFile)
{
    auto const broken = std::make_shared<TransferFile>();
    try {
        loop.run(TransferFile::finish(engine, broken, "/the/file"));
        FAIL() << "there is nothing to close";
    } catch (ReadError::NotReadable const &failure) {
        EXPECT_EQ(failure.path, "/the/file");
        EXPECT_EQ(failure.detail, "Bad file descriptor");
    }
}

} // namespace
} // namespace tw::test
