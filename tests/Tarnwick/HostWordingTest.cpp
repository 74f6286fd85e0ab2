#include "Tarnwick/Panes/HostWording.h"

#include "TWCore/Model/FileOperationError.h"
#include "TWEngine/Browsing/Browser.h"
#include "TWEngine/Browsing/LocalProviderError.h"
#include "Tarnwick/Panes/FailureSentences.h"
#include "tests/support/FailedClients.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>

namespace tw::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using Action = PaneNotice::Action;

PaneNotice noticeFor(auto const &error, std::string const &path = "/srv")
{
    return HostWording::failure(std::make_exception_ptr(error), "web", path);
}

std::string textFor(auto const &error)
{
    return noticeFor(error).text.english();
}

TEST(HostWordingTest, theDetailsHaveTheWordsOfSshAndOfTheHostWhole)
{
    auto const details = noticeFor(failed(std::string(loggedIn) + "error of the host\n", "one\ntwo\nthree\n")).details;
    EXPECT_EQ(details, "Words of ssh and of the host:\nerror of the host\n\nWhat the host printed:\none\ntwo\nthree\n");
}

TEST(HostWordingTest, aChangedKeyIsShownWithBothFingerprintsAndItsPlace)
{
    auto const error = failed(changedKeyBox);
    auto report = error.report;
    report.storedFingerprint = "SHA256:old";
    auto const notice = noticeFor(RemoteShellError::ConnectFailed("web", error.detail, report));
    EXPECT_EQ(notice.keys, "The key that the host shows now:\nSHA256:LRCTOAcGZRkm/fgAmRwI0Et7Cie2V/vsuDqad5SLUI8\n\n"
                           "The key that is stored for it:\nSHA256:old\n\n"
                           "Where the old key is stored:\n/home/ann/.ssh/known_hosts:12\n\n"
                           "What removes the old key, once you know that the new one is right:\n"
                           "ssh-keygen -f \"/home/ann/.ssh/known_hosts\" -R \"web\"\n");
    EXPECT_THAT(notice.details, HasSubstr(notice.keys));
    EXPECT_THAT(notice.details, HasSubstr("Host key verification failed."));
}

TEST(HostWordingTest, nothingOfWhatAHostSaysIsHidden)
{
    auto const notice = noticeFor(failed(loggedIn, "\x1B[31mred\xE2\x80\xAE\xFF\r\nmore\n"));
    EXPECT_EQ(notice.text.english(),
              "The shell ended before it answered. web says: \xE2\x90\x9B[31mred\uFFFD\uFFFD more");
    EXPECT_EQ(notice.details, "What the host printed:\n\xE2\x90\x9B[31mred\uFFFD\uFFFD\nmore\n");
}

TEST(HostWordingTest, aLongTextOfAHostIsCutBetweenCharacters)
{
    std::string text;
    for (int i = 0; i < 500; ++i)
        text += "\xC3\xA9";
    auto const quoted = quotedOnOneLine("x" + text);
    EXPECT_LT(quoted.size(), 170U);
    EXPECT_THAT(quoted, Not(HasSubstr("\uFFFD")));
    EXPECT_TRUE(quoted.ends_with("\xC3\xA9…"));
}

TEST(HostWordingTest, aFolderThatCannotBeListedHasItsSentence)
{
    auto const refused = [](char const *reason) {
        return textFor(FileOperationError::Failed("list", "/x/noperm", reason));
    };
    EXPECT_EQ(refused("permission denied"), "No permission to read /x/noperm.");
    EXPECT_EQ(refused("no such folder"), "There is no folder /x/noperm.");
    EXPECT_EQ(refused("not a folder"), "/x/noperm is not a folder.");
    EXPECT_EQ(refused("too many links"), "/x/noperm is a link that leads nowhere: too many links follow one another.");
    EXPECT_EQ(refused("input/output error"), "/x/noperm cannot be read: input/output error.");
    EXPECT_EQ(textFor(BrowserError::NotADirectory("/srv")), "/srv is not a folder.");
    EXPECT_EQ(textFor(LocalProviderError::CannotOpen("/x", EACCES)), "No permission to read /x.");
    EXPECT_EQ(textFor(LocalProviderError::CannotOpen("/x", ENOENT)), "There is no folder /x.");
}

TEST(HostWordingTest, aConnectionThatEndsHasItsSentence)
{
    using TimedOut = RemoteShellError::TimedOut;
    auto const lost = noticeFor(RemoteShellError::Disconnected("client_loop: send disconnect: Broken pipe"));
    EXPECT_EQ(lost.text.english(), "The connection to web was lost. Retry connects again.");
    EXPECT_EQ(lost.details, "client_loop: send disconnect: Broken pipe\n");
    EXPECT_EQ(textFor(TimedOut(std::chrono::seconds(60))),
              "No answer from web within 60 s. It may be busy; try again.");
    EXPECT_EQ(textFor(RemoteShellError::NotConnected()), "There is no connection to web. Retry makes one.");
}

TEST(HostWordingTest, anyOtherFailureKeepsItsText)
{
    auto const notice = noticeFor(FileOperationError::Failed("copy", "/a", "disk full"));
    EXPECT_EQ(notice.text.english(), "copy failed on /a: disk full");
    EXPECT_THAT(notice.actions, ElementsAre(Action::retry));
}

TEST(HostWordingTest, theLinesOfAProgramAreOneBehindTheOther)
{
    auto const words = "gzip: stdin: unexpected end of file\r\n\ntar: \x1B[1mChild returned\ntar: Error exit\n";
    auto const notice = noticeFor(FileOperationError::Failed("list archive", "/x/a\nb.tgz", words));
    EXPECT_EQ(notice.text.english(),
              "list archive failed on /x/a\nb.tgz: gzip: stdin: unexpected end of file tar: \u241B[1mChild returned "
              "tar: Error exit");
    EXPECT_EQ(notice.details, "gzip: stdin: unexpected end of file\n\ntar: \u241B[1mChild returned\ntar: Error exit\n");
    EXPECT_THAT(notice.actions, ElementsAre(Action::retry, Action::details));
    EXPECT_EQ(textFor(FileOperationError::Failed("list", "/x", "no\nway")), "/x cannot be read: no way.");
}

TEST(HostWordingTest, aWaitSaysForWhatAndHowToEndIt)
{
    using Phase = HostStatus::Phase;
    auto const waiting = [](Phase phase) {
        auto const notice = HostWording::waiting("web", phase, std::chrono::seconds(12));
        EXPECT_EQ(notice.kind, PaneNotice::Kind::waiting);
        EXPECT_THAT(notice.actions, ElementsAre(Action::giveUp));
        return notice.text.english();
    };
    EXPECT_EQ(waiting(Phase::reaching), "web: connecting, 12 s. Escape gives up.");
    EXPECT_EQ(waiting(Phase::loggingIn), "web: connected, logging in, 12 s. Escape gives up.");
    EXPECT_EQ(waiting(Phase::asking), "web: the login waits for your answer. Escape gives up.");
    EXPECT_EQ(waiting(Phase::waitingForShell), "web: logged in, waiting for the shell, 12 s. Escape gives up.");
    EXPECT_EQ(waiting(Phase::silent), "No answer from web for 12 s. Escape gives up.");
    EXPECT_EQ(waiting(Phase::up), "web: waiting, 12 s. Escape gives up.");
}

} // namespace
} // namespace tw::test
