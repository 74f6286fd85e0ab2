#include "Tarnwick/Window/PaneContainer.h"
#include "tests/support/PaneControllerTest.h"

#include <gmock/gmock.h>

namespace tw::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

/// A pane in "/srv", which has two archives whose members the test gives.
class PaneArchivesTest : public ::testing::Test {
protected:
    PaneArchivesTest()
    {
        provider->usefulDepth = 1;
        provider->answersAtOnce = [this](std::string const &path) -> Listings {
            return {{path,
                     listing(path, {directory("docs"), file("a.zip"), file("b.tar.gz"), file("notes")}, clock->now())}};
        };
        PaneController::Collaborators const with{
            .mainContext = loop.context(),
            .clock = clock,
            .defaults = defaults,
            .openArchive = [this](ArchiveFile const &opened) { return open(opened); }};
        pane = PaneController::create(with, browser, "local");
        pane->attach(display);
        pane->callbacks.onOpenFile = [this](std::string path) { openedFiles.push_back(std::move(path)); };
        pane->open({.connection = "local", .path = "/srv"}, connections);
        loop.drain();
    }

    ~PaneArchivesTest() override
    {
        pane.reset();
        loop.drain();
        loop.start(browser->shutdown());
        loop.drain();
        clock->advance(std::chrono::seconds(10));
        loop.drain();
    }

    std::shared_ptr<Browser> open(ArchiveFile const &opened)
    {
        if (std::dynamic_pointer_cast<ScriptedProvider>(opened.holder->providerRef()) != provider)
            return nullptr; // inside another one
        inside = std::make_shared<ScriptedProvider>();
        inside->usefulDepth = 1;
        insides.push_back(inside);
        if (answersAtOnce)
            inside->answersAtOnce = [this](std::string const &path) { return rowsInside(path); };
        return std::make_shared<Browser>(inside, Browser::Collaborators{Strand(loop.context()), clock, nullptr},
                                         Browser::Config{});
    }

    Listings rowsInside(std::string const &path) const
    {
        if (path != "/" && path != "/docs")
            throw FileOperationError::Failed("list", path, "not in it");
        return {{path, listing(path, {directory("docs"), file("member"), file("inner.7z")}, clock->now())}};
    }

    void enter(std::string const &name)
    {
        moveTo(name);
        press(Key::enter);
    }

    void moveTo(std::string const &name)
    {
        pane->moveCursorTo(pane->model().rowForName(name).value());
        loop.drain();
    }

    void press(Key key)
    {
        pane->handleKey(KeyPress{.key = key, .text = {}});
        loop.drain();
    }

    std::string where() const { return display.connection + " " + pane->pathOnShow(); }

    TestLoop loop;
    std::shared_ptr<ManualClock> clock = std::make_shared<ManualClock>();
    std::shared_ptr<ScriptedProvider> provider = std::make_shared<ScriptedProvider>();
    std::shared_ptr<Browser> browser = std::make_shared<Browser>(
        provider, Browser::Collaborators{Strand(loop.context()), clock, nullptr}, Browser::Config{});
    FakeConnections connections{browser};
    MemoryDefaults defaults;
    RecordingDisplay display;
    std::shared_ptr<PaneController> pane;
    std::vector<std::shared_ptr<ScriptedProvider>> insides; ///< of all archives that were opened
    std::shared_ptr<ScriptedProvider> inside;               ///< of the last one
    bool answersAtOnce = true;
    std::vector<std::string> openedFiles;
};

TEST_F(PaneArchivesTest, returnEntersAnArchiveAndItsParentRowLeavesIt)
{
    enter("a.zip");
    EXPECT_EQ(where(), "local:a.zip /");
    EXPECT_EQ(pane->connectionName(), "local:/srv/a.zip");
    EXPECT_TRUE(pane->model().hasParentRow());
    EXPECT_EQ(pane->cursorName(), "") << "on the parent row";

    enter("docs");
    EXPECT_EQ(where(), "local:a.zip /docs");
    press(Key::backspace);
    EXPECT_EQ(where(), "local:a.zip /");
    EXPECT_EQ(pane->cursorName(), "docs");

    press(Key::home);
    press(Key::enter);
    EXPECT_EQ(where(), "local /srv");
    EXPECT_EQ(pane->cursorName(), "a.zip");
    EXPECT_EQ(inside->disconnects, 1) << "the members are let go";
}

TEST_F(PaneArchivesTest, theFolderStaysOnShowUntilTheMembersAreThere)
{
    answersAtOnce = false;
    enter("a.zip");
    EXPECT_EQ(pane->pathOnShow(), "/srv");
    EXPECT_EQ(display.status, "reading a.zip…");
    inside->takeOldest().answer->succeed(rowsInside("/"));
    loop.drain();
    EXPECT_EQ(where(), "local:a.zip /");
}

TEST_F(PaneArchivesTest, escapeGivesUpAndEndsTheReading)
{
    answersAtOnce = false;
    enter("a.zip");
    press(Key::escape);
    EXPECT_EQ(where(), "local /srv");
    EXPECT_EQ(pane->cursorName(), "a.zip");
    EXPECT_EQ(inside->disconnects, 1);
}

TEST_F(PaneArchivesTest, anArchiveThatCannotBeReadLeavesThePaneAsItWas)
{
    answersAtOnce = false;
    enter("a.zip");
    inside->takeOldest().answer->fail(
        std::make_exception_ptr(FileOperationError::Failed("list archive", "/srv/a.zip", "it is damaged")));
    loop.drain();
    EXPECT_EQ(where(), "local /srv");
    EXPECT_EQ(display.noticeText(), "list archive failed on /srv/a.zip: it is damaged");

    answersAtOnce = true;
    enter("b.tar.gz");
    EXPECT_EQ(where(), "local:b.tar.gz /");
    EXPECT_EQ(display.noticeText(), "");
}

TEST_F(PaneArchivesTest, historyLeadsOutOfAnArchiveAndBackIn)
{
    enter("a.zip");
    enter("docs");
    pane->goBack();
    pane->goBack();
    loop.drain();
    EXPECT_EQ(where(), "local /srv");
    pane->goForward();
    loop.drain();
    EXPECT_EQ(where(), "local:a.zip /");
    pane->goForward();
    loop.drain();
    EXPECT_EQ(where(), "local:a.zip /docs");
    EXPECT_EQ(insides.size(), 2U) << "it is read anew, since the file may be another by now";
    EXPECT_FALSE(pane->canGoForward());
}

TEST_F(PaneArchivesTest, refreshReadsTheArchiveAnew)
{
    enter("a.zip");
    moveTo("member");
    pane->refresh();
    loop.drain();
    EXPECT_EQ(inside->disconnects, 1);
    EXPECT_EQ(inside->fetches, 2);
    EXPECT_EQ(pane->cursorName(), "member");
    EXPECT_EQ(where(), "local:a.zip /");
}

TEST_F(PaneArchivesTest, whatIsNoArchiveOrCannotBeEnteredIsAFile)
{
    enter("notes");
    enter("a.zip");
    enter("member");
    enter("inner.7z");
    EXPECT_THAT(openedFiles, ElementsAre("/srv/notes", "/member", "/inner.7z"));
}

TEST_F(PaneArchivesTest, theNextStartComesBackToTheFolderOfTheArchive)
{
    enter("a.zip");
    enter("docs");
    auto const remembered = pane->placeToRemember();
    EXPECT_EQ(remembered,
              (PaneSpec{.connection = "local", .path = "/srv", .pathWasExplicit = true, .cursor = "a.zip"}));
    auto const shown = pane->placeForDisplay();
    EXPECT_EQ(shown.connection + shown.path, "local:a.zip/docs");
}

TEST_F(PaneArchivesTest, aTabThatIsDuplicatedIsInTheSameArchive)
{
    PaneContainer side({.mainContext = loop.context(),
                        .clock = clock,
                        .defaults = defaults,
                        .openArchive = [this](ArchiveFile const &opened) { return open(opened); }},
                       connections,
                       {.configurePane = [](PaneController &) {},
                        .onTabsChanged = [] {},
                        .onSelected = [] {},
                        .open =
                            [this](PaneSpec place, std::shared_ptr<PaneController> const &opened) {
                                opened->open(std::move(place), connections);
                            }});
    side.restore(PaneSpec{.connection = "local", .path = "/srv", .pathWasExplicit = true});
    loop.drain();
    pane->detach(display);
    pane = side.activePane();
    pane->attach(display);
    enter("a.zip");
    side.duplicateCurrentTab();
    loop.drain();
    auto const copy = side.activePane();
    ASSERT_NE(copy, pane);
    EXPECT_EQ(insides.size(), 1U);
    EXPECT_EQ(copy->pathOnShow(), "/");
    EXPECT_EQ(side.state().tabs.at(1).path, "/srv");
    copy->goUp();
    loop.drain();
    EXPECT_EQ(copy->pathOnShow(), "/srv");
    EXPECT_EQ(inside->disconnects, 0) << "the first tab is still in it";
    pane->detach(display);
}

} // namespace
} // namespace tw::test
