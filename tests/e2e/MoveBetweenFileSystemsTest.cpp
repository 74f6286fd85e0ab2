// Moves of real files between two file systems of this machine.

#include "TWEngine/Browsing/LocalProvider.h"
#include "TWEngine/Browsing/LocalSurvey.h"
#include "TWEngine/Transfer/TransferEngine.h"
#include "Tarnwick/Operations/ClaimedNames.h"
#include "Tarnwick/Operations/CopyMove.h"
#include "tests/support/FakeDialogs.h"
#include "tests/support/RecordingDisplay.h"
#include "tests/support/SurveyTree.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestLoop.h"
#include "tests/support/WithoutPrivileges.h"

#include <gmock/gmock.h>

#include <filesystem>

#include <sys/stat.h>

namespace tw::test {
namespace {

namespace fs = std::filesystem;

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

/// A pane on `folder`, whose files go to `other`.
class MoveBetweenFileSystemsTest : public testing::Test {
protected:
    ~MoveBetweenFileSystemsTest() override
    {
        dialogs->close();
        loop.runUntil([&] { return !moving || moving->isDone(); });
        pane->detach(display);
        pane.reset();
        loop.run(browser->shutdown());
    }

    void waitUntil(std::function<bool()> const &holds)
    {
        loop.runUntil([&] {
            loop.run(engine.clock()->sleep(std::chrono::milliseconds(1)));
            return holds();
        });
    }

    /// Moves all that is in `folder`.
    void moveAll()
    {
        pane->attach(display);
        pane->navigate(folder.path());
        loop.runUntil([&] { return pane->model().snapshot().has_value(); });
        pane->markAll(PaneModel::Marks::insert);
        OperationContext context{.operands = pane->operands(),
                                 .pane = pane,
                                 .panes = {pane},
                                 .dialogs = dialogs,
                                 .target = pane->operands(),
                                 .makeTransfer = [this] { return std::make_shared<TransferEngine>(engine, programs); },
                                 .claims = std::make_shared<ClaimedNames>()};
        moving.emplace(loop.start(moveOperands(std::move(context))));
        loop.runUntil([&] { return !dialogs->prompts.empty(); });
        dialogs->prompts.back().answer(other.path());
    }

    /// A cp that copies the file "a", begins with "z", and then takes forever.
    void stallBehindTheFirstBytesOfZ()
    {
        programs.cp = scripts.file(
            "cp", "#!/bin/sh\nfor word; do case $word in --target-directory=*) to=${word#*=};; esac; done\n"
                  "cp -a -- a \"$to\"\nhead -c 5 z >\"$to/z\"\nexec sleep 600\n");
        ::chmod(programs.cp.c_str(), 0700);
    }

    /// The "z" that is under way has its first bytes.
    bool hasBegunWithZ() const
    {
        for (auto const &each : fs::directory_iterator(other.path())) {
            std::error_code none;
            if (fs::file_size(each.path() / "z", none) == 5 && !none)
                return true;
        }
        return false;
    }

    WithoutPrivileges const user;
    EngineRuntime engine;
    TestLoop loop;
    TemporaryFolder folder;
    TemporaryFolder other{anotherFileSystem(folder.path())};
    TemporaryFolder scripts;
    TransferTools programs = TransferTools::find();
    MemoryDefaults defaults;
    std::shared_ptr<FakeDialogs> dialogs = std::make_shared<FakeDialogs>();
    RecordingDisplay display;
    std::shared_ptr<Browser> browser = std::make_shared<Browser>(
        std::make_shared<LocalProvider>(engine),
        Browser::Collaborators{.strand = Strand(loop.context()), .clock = engine.clock(), .store = nullptr},
        Browser::Config{});
    std::shared_ptr<PaneController> pane = PaneController::create(
        {.mainContext = loop.context(), .clock = engine.clock(), .defaults = defaults}, browser, "local");
    std::optional<Started<void>> moving;
};

TEST_F(MoveBetweenFileSystemsTest, aTreeArrivesWithAllThatIsInItAndGoesFromItsSource)
{
    fillTree(folder);
    auto names = namesOnDisk(folder.path());
    std::erase_if(names, [](auto const &name) { return name.starts_with('.'); }); // the pane does not show them
    auto const hidden = namesOnDisk(folder.path()).size() - names.size();
    auto const before = localSurvey(folder.path(), names, {});
    moveAll();
    loop.runUntil([&] { return moving->isDone(); });
    EXPECT_THAT(dialogs->works, SizeIs(1)) << "it is shown";
    EXPECT_THAT(dialogs->errors, IsEmpty());
    EXPECT_EQ(localSurvey(other.path(), names, {}), before);
    EXPECT_EQ(namesOnDisk(other.path()), names) << "nothing else is left";
    EXPECT_EQ(namesOnDisk(folder.path()).size(), hidden);
}

TEST_F(MoveBetweenFileSystemsTest, foldersThatTheirOwnerCannotWriteToArriveAndGo)
{
    folder.folder("locked/inner");
    folder.file("locked/inner/file", "content");
    for (auto const *name : {"locked/inner", "locked"})
        fs::permissions(folder.path(name), fs::perms(0555));
    moveAll();
    loop.runUntil([&] { return moving->isDone(); });
    EXPECT_THAT(dialogs->errors, IsEmpty());
    EXPECT_THAT(namesOnDisk(other.path()), ElementsAre("locked"));
    EXPECT_EQ(contentOf(other.path("locked/inner/file")), "content");
    for (auto const *name : {"locked/inner", "locked"})
        EXPECT_EQ(fs::status(other.path(name)).permissions(), fs::perms(0555));
    EXPECT_THAT(namesOnDisk(folder.path()), IsEmpty());
}

TEST_F(MoveBetweenFileSystemsTest, aCancelInTheMiddleOfAFileKeepsTheSourceAndWhatHasArrivedWhole)
{
    folder.file("a", "arrives");
    folder.file("z", "long, long");
    stallBehindTheFirstBytesOfZ();
    moveAll();
    waitUntil([&] { return hasBegunWithZ(); });
    dialogs->works.front()->cancel();
    waitUntil([&] { return moving->isDone(); });
    EXPECT_EQ(display.status, "⚠︎ move 2 items cancelled: 1 of 2 files copied");
    EXPECT_THAT(namesOnDisk(other.path()), ElementsAre("a"));
    EXPECT_EQ(contentOf(other.path("a")), "arrives");
    EXPECT_EQ(contentOf(folder.path("a")), "arrives");
    EXPECT_EQ(contentOf(folder.path("z")), "long, long");
}

} // namespace
} // namespace tw::test
