// What a pane does with the paths of its field.

#include "tests/support/FakeCommandHost.h"
#include "tests/support/PaneControllerTest.h"

#include <gmock/gmock.h>

namespace tw::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

class PanePathTest : public PaneSwitchTest {
protected:
    PanePathTest()
    {
        host->usefulDepth = 1;
        host->answersAtOnce = [this](std::string const &path) {
            if (path.ends_with("nowhere"))
                throw std::runtime_error("No such file or directory");
            return Listings{{path, listing(path, {directory("docs"), file("x")}, clock->now())}};
        };
        connections.browsers["box"] = boxBrowser;
    }

    ~PanePathTest() override
    {
        loop.start(boxBrowser->shutdown());
        loop.drain();
    }

    void type(std::string text)
    {
        pane->goToTyped(std::move(text));
        loop.drain();
    }

    void complete(std::string text)
    {
        pane->completePath(std::move(text));
        loop.drain();
    }

    /// On a folder of this machine, from which hosts can be reached.
    void start()
    {
        pane->open({"local", "/srv", true}, connections);
        loop.drain();
        answer("/srv", {directory("data"), directory("dates"), directory("logs"), file("dark")});
    }

    void goToBox()
    {
        type("box:/srv");
        connect("box");
        ASSERT_EQ(pane->connectionName(), "box");
    }

    std::shared_ptr<FakeCommandHost> host = std::make_shared<FakeCommandHost>();
    std::shared_ptr<Browser> boxBrowser = std::make_shared<Browser>(
        host, Browser::Collaborators{.strand = Strand(loop.context()), .clock = clock, .store = nullptr},
        Browser::Config{});
};

TEST_F(PanePathTest, aTypedPathOfAnotherHostIsGoneTo)
{
    start();
    type("box:/srv/../etc");
    EXPECT_EQ(display.connection, "box");
    connect("box");
    EXPECT_EQ(pane->connectionName(), "box");
    EXPECT_EQ(pane->pathOnShow(), "/etc");
}

TEST_F(PanePathTest, aPathBelowTheHomeFolderOfAnotherHostIsFoundByTheHost)
{
    start();
    type("box:docs");
    connect("box");
    EXPECT_EQ(pane->pathOnShow(), "/home/ann/docs");
    type("~");
    EXPECT_EQ(pane->pathOnShow(), "/home/ann");
    type("box:/srv");
    EXPECT_EQ(pane->pathOnShow(), "/srv");
    type("sftp://box/~x");
    EXPECT_EQ(pane->pathOnShow(), "/~x");
    type("box:~/docs");
    EXPECT_EQ(pane->pathOnShow(), "/home/ann/docs");
}

TEST_F(PanePathTest, aFileAddressLeadsBackToThisMachine)
{
    start();
    goToBox();
    type("file:///tmp");
    answer("/tmp", {});
    EXPECT_EQ(pane->connectionName(), "local");
    EXPECT_EQ(pane->pathOnShow(), "/tmp");
}

TEST_F(PanePathTest, aTextThatLeadsNowhereGoesBackToTheFieldAndTheStatusSaysWhy)
{
    start();
    type("http://box/");
    EXPECT_EQ(display.typed, "http://box/");
    EXPECT_THAT(display.status, StartsWith("⚠︎ http:// addresses"));
    EXPECT_EQ(pane->pathOnShow(), "/srv");
    EXPECT_EQ(display.noticeText(), "");
}

TEST_F(PanePathTest, aFolderThatIsNotThereGoesBackToTheFieldAndTheStripSaysWhy)
{
    start();
    auto const offers = display.noticeOffers;
    type("/nowhere");
    answerError("/nowhere", "No such file or directory");
    EXPECT_EQ(display.typed, "/nowhere");
    EXPECT_THAT(display.noticeText(), HasSubstr("No such file or directory"));
    EXPECT_EQ(display.noticeOffers, offers) << "the keyboard is in the field";
    EXPECT_EQ(display.path, "/srv");
}

TEST_F(PanePathTest, soDoesAFolderOfAnotherHost)
{
    start();
    type("box:/nowhere");
    connect("box");
    EXPECT_EQ(display.typed, "box:/nowhere");
    EXPECT_THAT(display.noticeText(), HasSubstr("No such file or directory"));
    EXPECT_EQ(display.connection, "local");
}

TEST_F(PanePathTest, aHostThatIsNotReachedOffersWhatCanBeDone)
{
    start();
    auto const offers = display.noticeOffers;
    type("box:/srv");
    refuse("box", "no way");
    EXPECT_EQ(display.typed, "");
    EXPECT_EQ(display.noticeOffers, offers + 1);
}

TEST_F(PanePathTest, aPersonWhoWentOnKeepsTheKeyboard)
{
    start();
    type("/nowhere");
    press(Key::down);
    answerError("/nowhere", "No such file or directory");
    EXPECT_EQ(display.typed, "");
    EXPECT_THAT(display.noticeText(), HasSubstr("No such file or directory"));
}

TEST_F(PanePathTest, aLaterWishIsNotTheTypedOne)
{
    start();
    type("/nowhere");
    navigate("/other");
    answerError("/other", "gone");
    EXPECT_EQ(display.typed, "");
}

TEST_F(PanePathTest, tabCompletesFromTheFoldersThatAreThere)
{
    start();
    auto const fetches = provider->fetches;
    complete("lo");
    EXPECT_EQ(display.completed, "logs/");
    complete("/srv/d");
    EXPECT_EQ(display.completed, "/srv/dat");
    EXPECT_EQ(provider->fetches, fetches) << "the listing is known";
}

TEST_F(PanePathTest, aFolderThatIsNotKnownIsReadForTheCompletion)
{
    start();
    complete("/srv/../opt/b");
    EXPECT_EQ(display.completed, "");
    answer("/opt", {directory("bin")});
    EXPECT_EQ(display.completed, "/srv/../opt/bin/");
}

TEST_F(PanePathTest, onlyTheNewestCompletionIsShown)
{
    start();
    complete("/one/a");
    complete("/two/a");
    answer("/two", {directory("ab")});
    EXPECT_EQ(display.completed, "/two/ab/");
    answer("/one", {directory("ac")});
    EXPECT_EQ(display.completed, "/two/ab/");
}

TEST_F(PanePathTest, whatCannotBeCompletedBeeps)
{
    start();
    complete("x");
    EXPECT_EQ(display.beeps, 1);
    complete("box:/srv/d");
    EXPECT_EQ(display.beeps, 2) << "a key that completes connects to no host";
    EXPECT_TRUE(connections.waiting.empty());
    complete("/gone/x");
    answerError("/gone", "No such file or directory");
    EXPECT_EQ(display.beeps, 3);
    EXPECT_EQ(display.noticeText(), "");
}

TEST_F(PanePathTest, theHomeFolderOfAHostIsCompletedToo)
{
    start();
    goToBox();
    complete("~/d");
    EXPECT_EQ(display.completed, "~/docs/");
    complete("box:/srv/do");
    EXPECT_EQ(display.completed, "box:/srv/docs/");
}

TEST_F(PanePathTest, aPathOnAnotherHostIsCompletedFromWhatIsRememberedWithoutConnecting)
{
    start();
    loop.start(boxBrowser->open("/srv"));
    loop.drain();
    auto const fetches = host->fetches;
    complete("box:/srv/d");
    EXPECT_EQ(display.completed, "box:/srv/docs/");
    EXPECT_EQ(host->fetches, fetches);
    complete("box:/never/seen/d");
    EXPECT_EQ(display.beeps, 1);
    EXPECT_EQ(host->fetches, fetches);
    EXPECT_TRUE(connections.waiting.empty());
}

TEST_F(PanePathTest, anotherHostThatIsUpIsAskedForACompletion)
{
    start();
    connections.up.insert("box");
    complete("sftp://box/new/d");
    EXPECT_EQ(display.completed, "sftp://box/new/docs/");
    complete("box:~/d");
    EXPECT_EQ(display.completed, "box:~/docs/");
    EXPECT_TRUE(connections.waiting.empty());
}

TEST_F(PanePathTest, aPathOfThisMachineIsCompletedOnAHostToo)
{
    start();
    goToBox();
    complete("file:///srv/da");
    EXPECT_EQ(display.completed, "file:///srv/dat");
}

TEST_F(PanePathTest, aPartOfThePathLeadsThereWithTheCursorOnTheNextOne)
{
    start();
    navigate("/srv/data/deep");
    answer("/srv/data/deep", {});
    pane->goToPart(1);
    loop.drain();
    EXPECT_EQ(pane->pathOnShow(), "/srv");
    EXPECT_EQ(pane->cursorName(), "data");
    pane->goToPart(0);
    loop.drain();
    answer("/", {directory("srv"), directory("usr")});
    EXPECT_EQ(pane->pathOnShow(), "/");
    EXPECT_EQ(pane->cursorName(), "srv");
}

TEST_F(PanePathTest, aPathOfBytesIsGoneUpByItsBytes)
{
    start();
    navigate("/srv/\xff/deep");
    answer("/srv/\xff/deep", {});
    pane->goToPart(2);
    loop.drain();
    answer("/srv/\xff", {directory("deep")});
    EXPECT_EQ(pane->pathOnShow(), "/srv/\xff");
}

TEST_F(PanePathTest, whatIsTypedBehindAPathThatIsNoTextIsBelowThatPath)
{
    start();
    navigate("/srv/\xff");
    answer("/srv/\xff", {directory("deep")});
    ASSERT_EQ(display.path, "/srv/\uFFFD");
    complete("/srv/\uFFFD/d");
    EXPECT_EQ(display.completed, "/srv/\uFFFD/deep/");
    type("/srv/\uFFFD/deep/");
    answer("/srv/\xff/deep", {});
    EXPECT_EQ(pane->pathOnShow(), "/srv/\xff/deep");
}

TEST_F(PanePathTest, onTheWayToAnotherConnectionNoPartLeadsAnywhere)
{
    start();
    type("box:/srv");
    pane->goToPart(0);
    loop.drain();
    EXPECT_EQ(display.beeps, 1);
    connect("box");
    EXPECT_EQ(pane->connectionName(), "box");
}

TEST_F(PanePathTest, onAHostAPathWithADriveIsShownWithoutTheSlashBeforeIt)
{
    start();
    goToBox();
    navigate("/C:/Users");
    EXPECT_EQ(display.path, "C:/Users");
    type("D:/x");
    EXPECT_EQ(pane->pathOnShow(), "/D:/x");
    pane->open({"local", "/C:/x", true}, connections);
    loop.drain();
    EXPECT_EQ(display.path, "/C:/x") << "a folder of this machine";
}

} // namespace
} // namespace tw::test
