#include "TWEngine/Passwords/ProcessTable.h"

#include "tests/support/ChildProcessTest.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>

#include <unistd.h>

namespace tw::test {
namespace {

class ProcessTableTest : public ChildProcessTest {
protected:
    ProcessTable const table = ProcessTable::ofThisSystem();
};

TEST(ProcessTableStatTest, theParentStandsBehindTheNameAndTheState)
{
    EXPECT_EQ(ProcessTable::parentInStat("7 (cat) R 12 7 7 0"), 12);
    EXPECT_EQ(ProcessTable::parentInStat("1 (init) S 0 1 1"), 0);
    EXPECT_EQ(ProcessTable::parentInStat("7 (cat) R 12"), 12);
}

TEST(ProcessTableStatTest, aNameWithBracketsAndNumbersIsNoParent)
{
    EXPECT_EQ(ProcessTable::parentInStat("7 (a) S 99 (b) R 12 7"), 12);
    EXPECT_EQ(ProcessTable::parentInStat("7 ()) S 99) R 12 7"), 12);
    EXPECT_EQ(ProcessTable::parentInStat("7 (a\n) S 99\n) R 12 7"), 12);
}

TEST(ProcessTableStatTest, whatIsNoStatHasNoParent)
{
    for (auto const *text : {"", "7", "7 (cat", "7 (cat)", "7 (cat) R", "7 (cat) R ", "7 (cat) R x", "7 (cat) R 12x",
                             "7 (cat)  R 12", "7 (cat) R 99999999999999999999 7", "7 cat R 12"})
        EXPECT_EQ(ProcessTable::parentInStat(text), std::nullopt) << text;
}

TEST_F(ProcessTableTest, aProcessKnowsItsParentAndItsProgram)
{
    EXPECT_EQ(table.parentOf(::getpid()), ::getppid());
    auto const own = table.executableOf(::getpid());
    ASSERT_TRUE(own);
    EXPECT_EQ(own->path, std::filesystem::read_symlink("/proc/self/exe").string());
    EXPECT_NE(own->inode, 0U);
    auto const child = startCat();
    EXPECT_EQ(table.parentOf(child->processId()), ::getpid());
    EXPECT_NE(table.executableOf(child->processId()), own);
    child->closeInput();
    wait(child);
}

TEST_F(ProcessTableTest, ofAProcessThatIsNotThereNothingIsKnown)
{
    constexpr pid_t nobody = 0x7FFFFFFF;
    EXPECT_EQ(table.parentOf(nobody), std::nullopt);
    EXPECT_EQ(table.executableOf(nobody), std::nullopt);
}

TEST_F(ProcessTableTest, linksToAProgramAreResolved)
{
    TemporaryFolder const folder;
    auto const child = start({.program = folder.link("cat", "/bin/cat"), .input = PipeEnd{}});
    auto const executable = table.executableOf(child->processId());
    ASSERT_TRUE(executable);
    EXPECT_EQ(executable->path, std::filesystem::canonical("/bin/cat").string());
    child->closeInput();
    wait(child);
}

TEST_F(ProcessTableTest, aProgramThatWasDeletedIsUnknown)
{
    TemporaryFolder const folder;
    auto const copy = folder.path("cat");
    std::filesystem::copy_file("/bin/cat", copy);
    auto const child = start({.program = copy, .input = PipeEnd{}});
    EXPECT_TRUE(table.executableOf(child->processId()));
    std::filesystem::remove(copy);
    EXPECT_EQ(table.executableOf(child->processId()), std::nullopt);
    folder.file("cat (deleted)", "#!/bin/sh\n");
    EXPECT_EQ(table.executableOf(child->processId()), std::nullopt) << "a file with the name that the system makes up";
    child->closeInput();
    wait(child);
}

} // namespace
} // namespace tw::test
