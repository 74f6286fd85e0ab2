#include "TWCore/Shell/FileQuestion.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

using FileQuestion::Answer;

TEST(FileQuestionTest, aPathIsOneWord)
{
    EXPECT_THAT(FileQuestion::text(ShellDialect::posix, "/a 'b'"), testing::StartsWith("p='/a '\\''b'\\'''; if [ -d"));
    EXPECT_THAT(FileQuestion::text(ShellDialect::powershell, "/C:/it's"), testing::HasSubstr("'C:/it''s'"));
}

TEST(FileQuestionTest, anAnswerSaysWhatCanBeRead)
{
    auto const file = FileQuestion::answer("file 53687091200\n");
    EXPECT_EQ(file.access, Answer::Access::readable);
    EXPECT_EQ(file.kind, EntryKind::file);
    EXPECT_EQ(file.size, 53'687'091'200);
    EXPECT_EQ(FileQuestion::answer("file 12 2053:99\n").size, 12);
    EXPECT_EQ(FileQuestion::answer("file 12 2053:99\n").identity, "2053:99");
    EXPECT_EQ(FileQuestion::answer("file \r\n").size, 0);
    EXPECT_EQ(FileQuestion::answer("file -5").size, 0);
    EXPECT_EQ(FileQuestion::answer("directory").kind, EntryKind::directory);
    EXPECT_EQ(FileQuestion::answer("special").kind, EntryKind::unknown);
    EXPECT_EQ(FileQuestion::answer("special").access, Answer::Access::readable);
    EXPECT_EQ(FileQuestion::answer("refused").access, Answer::Access::refused);
    EXPECT_EQ(FileQuestion::answer("missing").access, Answer::Access::missing);
    EXPECT_EQ(FileQuestion::answer("sh: stat: not found").access, Answer::Access::missing);
}

} // namespace
} // namespace tw::test
