#include "TWCore/Model/FileOperationError.h"
#include "TWEngine/Browsing/Browser.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "Tarnwick/Editing/EditSessions.h"
#include "tests/support/DiskRows.h"
#include "tests/support/ManualClock.h"
#include "tests/support/ShellHost.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestLoop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

#include <sys/stat.h>
#include <unistd.h>

namespace tw::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;
using EditQuestion = EditState::Question;

class RemoteEditSessionTest : public testing::Test {
protected:
    ~RemoteEditSessionTest() override
    {
        edits->leaveForNextStart();
        edits.reset();
        auto const ended = loop.start(browser->shutdown());
        loop.drain();
        clock->advance(std::chrono::seconds(10));
        loop.runUntil([&] { return ended.isDone(); });
        loop.settle(engine);
    }

    std::shared_ptr<EditSessions> newSessions()
    {
        return std::make_shared<EditSessions>(
            RemoteEditSession::Ports{
                .engine = engine,
                .mainContext = loop.context(),
                .clock = clock,
                .host = [this](std::string const & /*connection*/) { return reached(browser); },
                .claim = [this](auto const & /*host*/, auto const &path) { return claimed(isBeingWritten, path); }},
            place);
    }

    static Task<std::shared_ptr<Browser>> reached(std::shared_ptr<Browser> host) { co_return host; }

    static Task<std::shared_ptr<void const>> claimed(bool isBeingWritten, std::string path)
    {
        if (isBeingWritten)
            throw FileOperationError::Failed("write", path, "another operation is writing it");
        co_return nullptr;
    }

    EditSessions::Session edit(std::string const &path)
    {
        return edits->add(loop.run(edits->fetch(host, "web", path)));
    }

    /// As editors do that write in place.
    static void save(EditSessions::Session const &session, std::string const &content)
    {
        std::ofstream(session->localPath(), std::ios::trunc) << content;
    }

    /// Lets time pass until a condition holds, a hundred times as fast as it does: the looks at the copy come with it.
    void passTimeUntil(std::function<bool()> const &condition)
    {
        loop.runUntil([&] {
            if (condition())
                return true;
            loop.run(engine.clock()->sleep(std::chrono::milliseconds(1)));
            clock->advance(std::chrono::milliseconds(100));
            loop.context()->post([] {});
            return false;
        });
    }

    void passTimeUntilStatus(EditSessions::Session const &session, std::string const &beginning)
    {
        passTimeUntil([&] { return session->state().status.english().starts_with(beginning); });
    }

    int uploads() const { return static_cast<int>(std::ranges::count(host->requests, "run")) - questions; }

    TemporaryFolder folder;
    TestLoop loop;
    EngineRuntime engine;
    std::shared_ptr<ManualClock> clock = std::make_shared<ManualClock>();
    std::shared_ptr<ShellHost> host = std::make_shared<ShellHost>(engine);
    std::shared_ptr<Browser> browser = std::make_shared<Browser>(
        host, Browser::Collaborators{.strand = Strand(loop.context()), .clock = clock}, Browser::Config{});
    EditStaging::Place place{.base = folder.path("edits")};
    std::shared_ptr<EditSessions> edits = newSessions();
    int questions = 1;           ///< commands that change nothing
    bool isBeingWritten = false; ///< the file on the host, by another operation
};

TEST_F(RemoteEditSessionTest, eachSettledSaveReachesTheHost)
{
    auto const path = folder.file("a b.txt", "old");
    auto const session = edit(path);
    struct stat status{};
    ASSERT_EQ(::stat(session->localPath().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0600U);
    EXPECT_EQ(session->state().status, "watching for saves…");
    EXPECT_FALSE(session->isUnsaved());
    save(session, "new");
    passTimeUntilStatus(session, "changed — waiting");
    EXPECT_TRUE(session->isUnsaved());
    EXPECT_EQ(contentOf(path), "old");
    passTimeUntilStatus(session, "saved to web at ");
    EXPECT_EQ(contentOf(path), "new");
    EXPECT_FALSE(session->isUnsaved());
    // Through a temporary name, in the same second.
    std::ofstream(session->localPath() + "~") << "newer";
    std::filesystem::rename(session->localPath() + "~", session->localPath());
    passTimeUntil([&] { return contentOf(path) == "newer"; });
    passTimeUntil([&] { return !session->isUnsaved(); });
    EXPECT_EQ(uploads(), 2);
    EXPECT_THAT(namesOnDisk(folder.path()), ElementsAre("a b.txt", "edits"));
}

TEST_F(RemoteEditSessionTest, everyWayToSaveIsOneUpload)
{
    struct Editor {
        char const *name;
        std::function<void(std::string const &path)> save;
    };

    auto const write = [](std::string const &path) { std::ofstream(path, std::ios::trunc) << "new"; };
    for (auto const &editor : std::vector<Editor>{
             {"in place", write},
             {"through a temporary name",
              [&](std::string const &path) {
                  write(path + ".tmp");
                  std::filesystem::rename(path + ".tmp", path);
              }},
             {"with a backup",
              [&](std::string const &path) {
                  std::filesystem::rename(path, path + "~");
                  write(path);
              }},
             {"deleted and made again",
              [&](std::string const &path) {
                  std::filesystem::remove(path);
                  write(path);
              }},
             {"beside a lock that stays",
              [&](std::string const &path) {
                  write(path + ".lock");
                  write(path);
              }},
         }) {
        SCOPED_TRACE(editor.name);
        auto const path = folder.file("a", "old");
        auto const session = edit(path);
        auto const uploadsBefore = uploads();
        editor.save(session->localPath());
        passTimeUntil([&] { return contentOf(path) == "new" && !session->isUnsaved(); });
        EXPECT_EQ(uploads() - uploadsBefore, 1);
        session->discard();
        ++questions; // of the next one
    }
}

TEST_F(RemoteEditSessionTest, aSaveInTenStepsIsOneUpload)
{
    auto const path = folder.file("a", "old");
    auto const session = edit(path);
    auto changes = 0;
    edits->onChanged = [&] { ++changes; };
    for (auto step = 0; step < 10; ++step) {
        auto const before = changes;
        std::ofstream(session->localPath(), step == 0 ? std::ios::trunc : std::ios::app) << "part ";
        loop.runUntil([&] { return changes > before; });
        clock->advance(SaveWatch::settleTime / 2);
    }
    passTimeUntil([&] { return !session->isUnsaved(); });
    EXPECT_EQ(contentOf(path).size(), 50U);
    EXPECT_EQ(uploads(), 1);
}

TEST_F(RemoteEditSessionTest, aCopyThatIsDeletedAndNeverWrittenChangesNothing)
{
    auto const path = folder.file("a", "old");
    auto const session = edit(path);
    std::filesystem::remove(session->localPath());
    session->uploadNow();
    passTimeUntilStatus(session, "⚠︎ upload failed: ");
    EXPECT_EQ(contentOf(path), "old");
    session->done();
    loop.runUntil([&] { return edits->all().empty(); });
}

TEST_F(RemoteEditSessionTest, aClockThatWasSetBackHidesNoSave)
{
    auto const path = folder.file("a", "old");
    auto const session = edit(path);
    auto const now = std::filesystem::file_time_type::clock::now();
    for (auto const &[content, time] : {std::pair("one", now), std::pair("two", now - std::chrono::hours(1))}) {
        save(session, content);
        std::filesystem::last_write_time(session->localPath(), time);
        passTimeUntil([&] { return contentOf(path) == content && !session->isUnsaved(); });
    }
    EXPECT_EQ(uploads(), 2);
}

TEST_F(RemoteEditSessionTest, twentySessionsUploadAtTheSameTime)
{
    constexpr auto count = 20;
    std::vector<EditSessions::Session> all;
    for (auto index = 0; index < count; ++index)
        all.push_back(edit(folder.file("file " + std::to_string(index), "old")));
    for (auto const &session : all)
        save(session, "new of " + session->state().path);
    passTimeUntil([&] {
        return std::ranges::all_of(all, [](auto const &session) {
            auto const &path = session->state().path;
            return contentOf(path) == "new of " + path && !session->isUnsaved();
        });
    });
    questions = count;
    EXPECT_EQ(uploads(), count);
}

TEST_F(RemoteEditSessionTest, anEditorInATerminalEndsItsSession)
{
    auto const path = folder.file("a", "old");
    auto const session = edit(path);
    session->expectEditorsEnd();
    session->expectEditorsEnd();
    auto const endEditor = [mark = EditStaging::endMark(session->staged())] {
        std::ofstream(mark, std::ios::app) << '.';
    };
    endEditor();
    save(session, "first");
    passTimeUntil([&] { return contentOf(path) == "first" && !session->isUnsaved(); });
    EXPECT_THAT(edits->all(), SizeIs(1)) << "one of two editors is still open";
    save(session, "last");
    endEditor();
    passTimeUntil([&] { return edits->all().empty(); });
    EXPECT_EQ(contentOf(path), "last");
}

TEST_F(RemoteEditSessionTest, aConflictKeepsTheSessionOfAnEditorThatHasEnded)
{
    auto const path = folder.file("a", "old");
    auto const session = edit(path);
    session->expectEditorsEnd();
    folder.file("a", "theirs");
    save(session, "mine");
    std::ofstream(EditStaging::endMark(session->staged())) << '.';
    passTimeUntil([&] { return session->state().question == EditQuestion::conflict; });
    session->overwrite();
    passTimeUntilStatus(session, "saved to web");
    EXPECT_EQ(contentOf(path), "mine");
}

TEST_F(RemoteEditSessionTest, aSaveThatTheButtonUploadedIsNotWaitedForAgain)
{
    auto const path = folder.file("a", "old");
    auto const session = edit(path);
    save(session, "new");
    session->uploadNow();
    loop.runUntil([&] { return contentOf(path) == "new" && !session->state().isUploading; });
    for (int looks = 0; looks < 5; ++looks) {
        clock->advance(std::chrono::seconds(1));
        loop.settle(engine);
    }
    EXPECT_THAT(session->state().status.english(), StartsWith("saved to web at "));
    EXPECT_EQ(uploads(), 1);
}

TEST_F(RemoteEditSessionTest, aSaveDuringAnUploadIsUploadedAfterIt)
{
    auto const path = folder.file("a", "old");
    auto const session = edit(path);
    host->before = [&](auto const &) {
        save(session, "second");
        host->before = [](auto const &) {};
    };
    save(session, "first");
    passTimeUntil([&] { return contentOf(path) == "second"; });
    passTimeUntil([&] { return !session->isUnsaved(); });
    EXPECT_EQ(uploads(), 2);
}

TEST_F(RemoteEditSessionTest, aLargeCopyIsUploadedBesideTheFileFirst)
{
    auto const path = folder.file("a", "old");
    auto const session = edit(path);
    std::string const large(EditCommand::mostContentInRequest + 1, 'x');
    save(session, large);
    passTimeUntilStatus(session, "saved to web");
    EXPECT_EQ(contentOf(path), large);
    EXPECT_THAT(host->requests, ElementsAre("run", "download", "run", "upload", "run"));

    host->before = [](std::string const &request) {
        if (request == "upload")
            throw std::runtime_error("the line was cut");
    };
    save(session, large + large);
    passTimeUntilStatus(session, "⚠︎ upload failed: the line was cut");
    EXPECT_EQ(contentOf(path), large);
    EXPECT_THAT(namesOnDisk(folder.path()), ElementsAre("a", "edits")) << "nothing of it stays";
    host->before = [](auto const &) {};
    session->uploadNow();
    passTimeUntilStatus(session, "saved to web");
    EXPECT_EQ(contentOf(path), large + large);
}

TEST_F(RemoteEditSessionTest, nothingIsUploadedWhileAnotherOperationWritesTheFile)
{
    auto const path = folder.file("a", "old");
    auto const session = edit(path);
    isBeingWritten = true;
    save(session, "new");
    passTimeUntilStatus(session, "⚠︎ upload failed: write failed on " + path + ": another operation is writing it");
    EXPECT_EQ(contentOf(path), "old");
    isBeingWritten = false;
    session->uploadNow();
    passTimeUntilStatus(session, "saved to web");
    EXPECT_EQ(contentOf(path), "new");
}

TEST_F(RemoteEditSessionTest, whatSomebodyElseHasWrittenIsAskedAbout)
{
    auto const path = folder.file("a", "old");
    auto const session = edit(path);
    folder.file("a", "theirs");
    save(session, "mine");
    passTimeUntilStatus(session, "⚠︎ it was changed on web meanwhile");
    EXPECT_EQ(session->state().question, EditQuestion::conflict);
    EXPECT_EQ(contentOf(path), "theirs");

    session->done();
    loop.runUntil([&] { return session->state().question == EditQuestion::leaving; });
    session->stay();
    EXPECT_EQ(session->state().question, EditQuestion::conflict) << "it is still to be decided";
    EXPECT_THAT(session->state().status.english(), StartsWith("⚠︎ it was changed"));

    folder.file("a", "theirs again");
    session->overwrite();
    passTimeUntil([&] { return session->state().question == EditQuestion::conflict; });
    EXPECT_EQ(contentOf(path), "theirs again") << "the user has not seen that one";

    session->saveBeside();
    passTimeUntilStatus(session, "saved to web");
    EXPECT_EQ(contentOf(path), "theirs again");
    auto const beside = session->state().path;
    EXPECT_THAT(beside, StartsWith(path + " (conflict 20"));
    EXPECT_EQ(contentOf(beside), "mine");
    save(session, "mine too");
    passTimeUntil([&] { return contentOf(beside) == "mine too"; });
    passTimeUntil([&] { return !session->isUnsaved(); });
}

TEST_F(RemoteEditSessionTest, anAgreedVersionIsOverwritten)
{
    auto const path = folder.file("a", "old");
    auto const session = edit(path);
    ASSERT_EQ(::unlink(path.c_str()), 0);
    save(session, "mine");
    passTimeUntilStatus(session, "⚠︎ it was deleted on web meanwhile");
    session->overwrite();
    passTimeUntilStatus(session, "saved to web");
    EXPECT_EQ(contentOf(path), "mine");
}

TEST_F(RemoteEditSessionTest, anUploadWhoseAnswerIsLostIsNoConflict)
{
    auto const path = folder.file("a", "old");
    auto const session = edit(path);
    host->after = [&] {
        host->after = [] {};
        throw std::runtime_error("the line was cut");
    };
    save(session, "mine");
    passTimeUntilStatus(session, "⚠︎ upload failed");
    EXPECT_EQ(contentOf(path), "mine");
    session->uploadNow();
    passTimeUntilStatus(session, "saved to web");
    EXPECT_EQ(session->state().question, EditQuestion::none);
}

TEST_F(RemoteEditSessionTest, doneEndsItAndAsksBeforeItLosesASave)
{
    auto const path = folder.file("a", "old");
    auto const session = edit(path);
    save(session, "mine");
    session->done();
    loop.runUntil([&] { return session->state().question == EditQuestion::leaving; });
    session->stay();
    EXPECT_EQ(session->state().question, EditQuestion::none);
    session->done();
    loop.runUntil([&] { return session->state().question == EditQuestion::leaving; });
    session->uploadNow();
    passTimeUntil([&] { return edits->all().empty(); });
    EXPECT_EQ(contentOf(path), "mine");
    engine.workers().waitUntilIdle();
    EXPECT_THAT(namesOnDisk(place.base), IsEmpty()) << "the copy goes with its session";

    auto const second = edit(path);
    save(second, "discarded");
    second->done();
    loop.runUntil([&] { return second->state().question == EditQuestion::leaving; });
    second->discard();
    EXPECT_THAT(edits->all(), IsEmpty());
    EXPECT_EQ(contentOf(path), "mine");
}

TEST_F(RemoteEditSessionTest, filesOfOneNameHaveCopiesOfTheirOwn)
{
    auto const one = edit(folder.file("a", "one"));
    folder.folder("b");
    auto const two = edit(folder.file("b/a", "two"));
    EXPECT_EQ(contentOf(one->localPath()), "one");
    EXPECT_EQ(contentOf(two->localPath()), "two");
    EXPECT_EQ(edits->find("web", folder.path("a")), one);
    EXPECT_EQ(edits->find("other", folder.path("a")), nullptr);
    host->before = [](auto const &) { throw std::runtime_error("no"); };
    EXPECT_THROW(loop.run(edits->fetch(host, "web", folder.path("a"))), std::runtime_error);
    host->before = [](auto const &) {};
    engine.workers().waitUntilIdle();
    EXPECT_THAT(namesOnDisk(place.base), SizeIs(2)) << "nothing stays of a fetch that failed";
}

/// Of another process, or of the same number before the machine was started again.
TEST_F(RemoteEditSessionTest, aSaveThatAKilledProgramHasLeftIsOfferedAgain)
{
    auto const own = place;
    auto const other = EditStaging::Place{.base = place.base, .process = 99'999'999}; // above the highest of Linux
    auto const earlier = EditStaging::Place{.base = place.base, .boot = "earlier"};
    for (auto const &owner : {other, earlier}) {
        place = owner;
        auto const killed = newSessions();
        auto const left = killed->add(loop.run(killed->fetch(host, "web", folder.file("a\xff", "old"))));
        killed->add(loop.run(killed->fetch(host, "web", folder.file("b", "old"))));
        auto const gone = killed->add(loop.run(killed->fetch(host, "web", folder.file("c", "old"))));
        std::ofstream(left->localPath(), std::ios::trunc) << "saved";
        std::filesystem::remove(gone->localPath());

        place = own;
        edits = newSessions();
        edits->resume();
        loop.runUntil([&] { return !edits->all().empty(); });
        ASSERT_THAT(edits->all(), SizeIs(1)) << "what was uploaded, or is gone, needs nobody";
        EXPECT_THAT(namesOnDisk(place.base), SizeIs(1));
        auto const session = edits->all()[0];
        EXPECT_EQ(session->state().path, folder.path("a\xff"));
        EXPECT_EQ(session->state().connection, "web");
        EXPECT_THAT(session->state().status.english(), HasSubstr("not uploaded"));
        passTimeUntil([&] { return session->isUnsaved(); });
        EXPECT_THAT(edits->unsaved(), SizeIs(1));
        EXPECT_EQ(contentOf(folder.path("a\xff")), "old") << "not before the user wants it";
        session->uploadNow();
        passTimeUntilStatus(session, "saved to web");
        EXPECT_EQ(contentOf(folder.path("a\xff")), "saved");
        session->done();
        loop.runUntil([&] { return edits->all().empty(); });
        killed->leaveForNextStart();
        engine.workers().waitUntilIdle();
    }
}

} // namespace
} // namespace tw::test
