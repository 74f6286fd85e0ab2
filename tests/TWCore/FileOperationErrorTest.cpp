#include "TWCore/Model/FileOperationError.h"

namespace tw::test {

TEST(FileOperationErrorTest, aFailureSaysWhatFailedOnWhat)
{
    FileOperationError::Failed const error("rename", "/a/b", "No such file or directory");

    EXPECT_STREQ(error.what(), "rename failed on /a/b: No such file or directory");
    EXPECT_EQ(error.operation, "rename");
    EXPECT_EQ(error.path, "/a/b");
    EXPECT_EQ(error.detail, "No such file or directory");
}

TEST(FileOperationErrorTest, whatIsUnsupportedIsNamed)
{
    EXPECT_STREQ(FileOperationError::Unsupported("links").what(), "not supported: links");
}

TEST(FileOperationErrorTest, aCancelledOneSaysSo)
{
    EXPECT_STREQ(FileOperationError::Cancelled().what(), "cancelled");
    EXPECT_THROW(throw FileOperationError::Cancelled(), FileOperationError);
}

} // namespace tw::test
