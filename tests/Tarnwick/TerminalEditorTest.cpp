#include "Tarnwick/Editing/TerminalEditor.h"

#include "tests/support/ChildProcessTest.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

namespace tw::test {
namespace {

using testing::HasSubstr;

class TerminalEditorTest : public ChildProcessTest {
protected:
    /// Runs the command as a terminal does.
    std::shared_ptr<ChildProcess> edit(std::string const &editor, std::string const &mark)
    {
        auto command = TerminalEditor::command(editor, path, mark);
        return start({.program = command.front(), .arguments = {command.begin() + 1, command.end()}});
    }

    TemporaryFolder folder;
    std::string const path = folder.file("it's a \"file\" $HOME", "old");
    std::string const mark = folder.path("mark");
};

TEST_F(TerminalEditorTest, theEditorIsAShellCommandAndItsEndIsNoted)
{
    for (std::string const editor : {"printf new >", "sh -c 'printf newer >\"$1\"; exit 3' sh"}) {
        wait(edit(editor, mark));
        EXPECT_THAT(contentOf(path), HasSubstr("new"));
    }
    EXPECT_EQ(contentOf(path), "newer");
    EXPECT_EQ(contentOf(mark), "..");
}

TEST_F(TerminalEditorTest, aTerminalThatIsClosedEndsItsEditor)
{
    auto const child = edit("kill -HUP $$; :", mark);
    wait(child);
    EXPECT_EQ(contentOf(mark), ".");
}

TEST_F(TerminalEditorTest, nobodyNeedsToKnowTheEndForALocalFile)
{
    wait(edit(":", ""));
    EXPECT_FALSE(std::filesystem::exists(mark));
}

} // namespace
} // namespace tw::test
