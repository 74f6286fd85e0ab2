// Moves of real files between real hosts, with what can go wrong on the way.

#include "Tarnwick/Operations/ClaimedNames.h"
#include "Tarnwick/Operations/CopyMove.h"
#include "Tarnwick/Operations/TransferRun.h"
#include "tests/support/FakeDialogs.h"
#include "tests/support/RecordingDisplay.h"
#include "tests/support/TransferTest.h"

namespace tw::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// Two panes, one on `folder` of a host and one on `local` of another host, which is the same machine.
class MoveBetweenHostsTest : public TransferTest {
protected:
    MoveBetweenHostsTest()
    {
        reach();
        client.add("other", host->address());
        programs = tools();
    }

    ~MoveBetweenHostsTest() override
    {
        dialogs->close();
        if (moving)
            finish(*moving);
        for (auto *side : {&source, &target}) {
            side->pane->detach(side->display);
            side->pane.reset();
            loop.run(side->browser->shutdown());
        }
    }

    struct Side {
        std::shared_ptr<Browser> browser;
        std::shared_ptr<PaneController> pane;
        RecordingDisplay display;
    };

    void show(Side &side, std::string const &name, std::string const &path)
    {
        auto const provider = makeProvider(name);
        loop.run(provider->connect());
        side.browser = std::make_shared<Browser>(
            provider,
            Browser::Collaborators{.strand = Strand(loop.context()), .clock = engine.clock(), .store = nullptr},
            Browser::Config{});
        side.pane = PaneController::create(
            {.mainContext = loop.context(), .clock = engine.clock(), .defaults = defaults}, side.browser, name);
        side.pane->attach(side.display);
        side.pane->navigate(path);
        loop.runUntil([&] { return side.pane->model().snapshot().has_value(); });
    }

    void showBoth()
    {
        show(source, "host", folder.path());
        show(target, "other", local.path());
    }

    /// Many small files in a folder, and a name before and behind it.
    void makeFiles(int count)
    {
        folder.folder("a");
        folder.file("a/file", "the first");
        folder.folder("many");
        for (int number = 0; number < count; ++number)
            folder.file("many/file " + std::to_string(number), std::string(1000, 'x'));
        folder.file("z", "the last");
    }

    enum class Line { source, target };

    /// The client of the transfer on one side loses its connection after so many bytes.
    void cutAfter(std::size_t bytes, Line line = Line::source)
    {
        auto const head = "head -c " + std::to_string(bytes);
        auto const cut =
            line == Line::source ? "*-cf*) sh -c \"$word\" | " + head : "*-xpf*) " + head + " | sh -c \"$word\"";
        auto const path = scripts.file("ssh", "#!/bin/sh\nfor word; do :; done\ncase $word in " + cut +
                                                  "; exit 255;; *) exec sh -c \"$word\";; esac\n");
        ::chmod(path.c_str(), 0755);
        programs.ssh = path;
    }

    void moveAll() { moveAllTo(local.path()); }

    void moveAllTo(std::string const &folderThere)
    {
        source.pane->markAll(PaneModel::Marks::insert);
        OperationContext context{.operands = source.pane->operands(),
                                 .pane = source.pane,
                                 .panes = {source.pane, target.pane},
                                 .dialogs = dialogs,
                                 .target = target.pane->operands(),
                                 .makeTransfer = [this] { return std::make_shared<TransferEngine>(engine, programs); },
                                 .claims = std::make_shared<ClaimedNames>()};
        context.target.names.clear();
        auto const asked = dialogs->prompts.size();
        moving.emplace(loop.start(moveOperands(std::move(context))));
        loop.runUntil([&] { return dialogs->prompts.size() > asked; });
        dialogs->prompts.back().answer(folderThere);
    }

    std::set<std::string> filesIn(std::string const &path) const { return namesIn(path); }

    MemoryDefaults defaults;
    TransferTools programs;
    TemporaryFolder scripts;
    std::shared_ptr<FakeDialogs> dialogs = std::make_shared<FakeDialogs>();
    Side source;
    Side target;
    std::optional<Started<void>> moving;
};

TEST_F(MoveBetweenHostsTest, aFolderOfManyFilesArrivesWholeAndGoesFromItsSource)
{
    makeFiles(10'000);
    showBoth();
    moveAll();
    finish(*moving);
    EXPECT_THAT(dialogs->errors, IsEmpty());
    EXPECT_EQ(filesIn(local.path("many")).size(), 10'000U);
    EXPECT_EQ(contentOf(local.path("a/file")), "the first");
    EXPECT_EQ(contentOf(local.path("z")), "the last");
    EXPECT_THAT(filesIn(folder.path()), IsEmpty());
    loop.runUntil([&] { return source.pane->model().visibleNames().empty(); });
}

TEST_F(MoveBetweenHostsTest, betweenFileSystemsOfOneHostTheHostCopiesAndIsWatched)
{
    TemporaryFolder const other(anotherFileSystem(folder.path()));
    makeFiles(100);
    other.file("z", "old");
    show(source, "host", folder.path());
    show(target, "host", other.path());
    moveAllTo(other.path());
    loop.runUntil([&] { return !dialogs->conflicts.empty(); });
    dialogs->conflicts.back().answer(std::vector{NameConflict::Answer::replace});
    finish(*moving);
    EXPECT_EQ(dialogs->works.size(), 1U);
    EXPECT_THAT(dialogs->errors, IsEmpty());
    EXPECT_EQ(filesIn(other.path("many")).size(), 100U);
    EXPECT_EQ(contentOf(other.path("z")), "the last");
    EXPECT_THAT(filesIn(other.path()), ElementsAre("a", "many", "z"));
    EXPECT_THAT(filesIn(folder.path()), IsEmpty());
}

TEST_F(MoveBetweenHostsTest, aMoveThatIsCutInTheMiddleLosesNothingAndSaysSo)
{
    makeFiles(10'000);
    auto const all = filesIn(folder.path("many"));
    showBoth();
    constexpr std::size_t inTheMiddle = 12'000'000; // of 15 million; 8 MiB may be in flight
    for (auto const line : {Line::source, Line::target}) {
        std::filesystem::remove_all(local.path("many"));
        std::filesystem::remove_all(local.path("a"));
        cutAfter(inTheMiddle, line);
        auto const errors = dialogs->errors.size();
        moveAll();
        loop.runUntil([&] { return dialogs->errors.size() > errors; });
        auto &error = dialogs->errors.back();
        EXPECT_THAT(error.question,
                    HasSubstr(line == Line::source ? "read from remote failed" : "write to remote failed"));
        EXPECT_THAT(error.question, HasSubstr("Complete (1 item):\na\n"));
        EXPECT_THAT(error.question, HasSubstr("Perhaps there in part (1 item):\nmany\n"));
        EXPECT_THAT(error.question, HasSubstr("Untouched (1 item):\nz"));
        error.answer({});
        finish(*moving);
        EXPECT_EQ(filesIn(folder.path("many")), all) << "the source is whole";
        EXPECT_THAT(filesIn(folder.path()), ElementsAre("a", "many", "z"));
        EXPECT_EQ(contentOf(local.path("a/file")), "the first");
        EXPECT_FALSE(filesIn(local.path("many")).empty()) << "what has arrived stays";
        EXPECT_FALSE(std::filesystem::exists(local.path("z")));
    }
}

TEST_F(MoveBetweenHostsTest, aMoveThatIsCutIsDoneByTheNextOne)
{
    makeFiles(200);
    showBoth();
    auto const usual = programs;
    cutAfter(100'000);
    moveAll();
    loop.runUntil([&] { return !dialogs->errors.empty(); });
    dialogs->errors.front().answer({});
    finish(*moving);
    programs = usual;
    moveAll();
    loop.runUntil([&] { return !dialogs->conflicts.empty(); });
    dialogs->conflicts.front().answer(std::vector(2, NameConflict::Answer::replace));
    finish(*moving);
    EXPECT_THAT(dialogs->errors, testing::SizeIs(1)) << "of the first move";
    EXPECT_EQ(filesIn(local.path("many")).size(), 200U);
    EXPECT_THAT(filesIn(folder.path()), IsEmpty());
}

TEST_F(MoveBetweenHostsTest, aTakenNameIsKeptBesideTheOneThatIsThere)
{
    folder.file("z", "mine");
    local.file("z", "theirs");
    showBoth();
    moveAll();
    loop.runUntil([&] { return !dialogs->conflicts.empty(); });
    dialogs->conflicts.front().answer(std::vector{NameConflict::Answer::keepBoth});
    finish(*moving);
    EXPECT_THAT(dialogs->errors, IsEmpty());
    EXPECT_EQ(contentOf(local.path("z")), "theirs");
    EXPECT_EQ(contentOf(local.path("z(2)")), "mine");
    EXPECT_THAT(filesIn(local.path()), ElementsAre("z", "z(2)")) << "nothing of the staging folder";
    EXPECT_THAT(filesIn(folder.path()), IsEmpty());
}

} // namespace
} // namespace tw::test
