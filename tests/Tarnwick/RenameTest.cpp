#include "Tarnwick/Operations/Rename.h"

#include "TWCore/Model/FileOperationError.h"
#include "Tarnwick/Operations/ClaimedNames.h"
#include "tests/support/FakeDialogs.h"
#include "tests/support/PaneTest.h"

#include <gmock/gmock.h>

namespace tw::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class RenameTest : public PaneTest {
protected:
    RenameTest() { show({"a", "b", "c"}); }

    ~RenameTest() override
    {
        dialogs->close();
        loop.drain();
    }

    void begin(std::string from, std::string to)
    {
        OperationContext context{.operands = pane->operands(),
                                 .pane = pane,
                                 .panes = {pane},
                                 .dialogs = dialogs,
                                 .claims = std::make_shared<ClaimedNames>()};
        operation = loop.start(performRename(std::move(context), std::move(from), std::move(to)));
        loop.drain();
    }

    void endWrite()
    {
        provider->writes.back().succeed();
        loop.drain();
    }

    void failWrite()
    {
        provider->writes.back().fail(
            std::make_exception_ptr(FileOperationError::Failed("rename", "/x/a", "File exists")));
        loop.drain();
    }

    std::shared_ptr<FakeDialogs> dialogs = std::make_shared<FakeDialogs>();
    std::optional<Started<void>> operation;
};

TEST_F(RenameTest, theNewNameStandsUnderTheCursor)
{
    begin("a", "new");
    ASSERT_THAT(provider->writes, SizeIs(1));
    EXPECT_EQ(provider->writes.front().what, "rename /x/a /x/new");
    endWrite();
    answer({"b", "c", "new"});
    EXPECT_EQ(cursorName(), "new");
    EXPECT_TRUE(operation->isDone());
    EXPECT_THAT(dialogs->errors, IsEmpty());
}

TEST_F(RenameTest, marksOnOtherNamesStay)
{
    press(Key::end);
    press(Key::insert);
    begin("a", "new");
    endWrite();
    answer({"b", "c", "new"});
    EXPECT_THAT(marked(), ElementsAre("c"));
}

TEST_F(RenameTest, aFailureIsShownAndTheCursorIsOnTheOldName)
{
    begin("b", "c");
    failWrite();
    ASSERT_THAT(dialogs->errors, SizeIs(1));
    EXPECT_EQ(dialogs->errors.front().question, "rename failed on /x/a: File exists");
    answer({"a", "b", "c"});
    EXPECT_EQ(cursorName(), "b");
    dialogs->errors.front().answer({});
    loop.drain();
    EXPECT_TRUE(operation->isDone());
}

TEST_F(RenameTest, aNameThatCannotBeNeverReachesTheWriter)
{
    for (auto const *const name : {"a/b", "..", "/"}) {
        begin("a", name);
        EXPECT_THAT(dialogs->errors.back().question, HasSubstr("rename failed on /x/a: ")) << name;
    }
    EXPECT_THAT(provider->writes, IsEmpty());
}

TEST_F(RenameTest, whatThePaneDoesMeanwhileChangesNothing)
{
    begin("a", "new");
    pane->navigate("/y");
    answer({"other"});
    endWrite();
    EXPECT_EQ(provider->writes.front().what, "rename /x/a /x/new");
    EXPECT_EQ(pane->pathOnShow(), "/y");
    EXPECT_TRUE(operation->isDone());
}

} // namespace
} // namespace tw::test
