#include "Tarnwick/Toolkit/Appearance/Wording.h"

#include "TWCore/Model/FileOperationError.h"
#include "TWCore/Model/ReadError.h"
#include "TWEngine/Browsing/Browser.h"
#include "TWEngine/Shell/RemoteShellError.h"
#include "Tarnwick/Connections/ConnectionItem.h"
#include "Tarnwick/Panes/HostWording.h"
#include "Tarnwick/Panes/PaneStatus.h"

#include <gtest/gtest.h>

namespace tw::test {
namespace {

TEST(WordingTest, aTextInTheWordsOfAnotherDesktopIsShownInThoseOfThisOne)
{
    EXPECT_EQ(Wording::shown("This Mac"), QStringLiteral("This Computer"));
}

TEST(WordingTest, anyOtherTextIsShownAsItStands)
{
    EXPECT_EQ(Wording::shown("No hosts in ~/.ssh/config"), QStringLiteral("No hosts in ~/.ssh/config"));
    EXPECT_EQ(Wording::shown("This Machine…"), QStringLiteral("This Machine…"));
    EXPECT_EQ(Wording::shown(""), QString());
}

/// Every text that is formed from parts today, with words of another desktop where one may come.
std::vector<Text> formedTexts()
{
    auto const described = [](auto const &error) { return PaneStatus::describe(std::make_exception_ptr(error)); };
    auto const noWay = std::make_exception_ptr(FileOperationError::Failed("read from this Mac", "/a", "no way"));
    PaneModel model;
    model.setSnapshot({"/",
                       std::make_shared<std::string const>("ab"),
                       {{.nameOffset = 0, .nameLength = 1, .size = 5, .kind = EntryKind::file},
                        {.nameOffset = 1, .nameLength = 1, .kind = EntryKind::directory}},
                       {},
                       true});
    model.markAll(PaneModel::Marks::insert);
    std::vector<Text> texts{
        PaneStatus::summary(model, PaneStatus::timing(std::chrono::seconds(1), PaneStatus::Source::network)),
        PaneStatus::timing(std::chrono::seconds(1), PaneStatus::Source::memory),
        PaneStatus::connecting("web"),
        PaneStatus::warning(PaneStatus::describe(noWay)),
        described(FileOperationError::Failed("write to this Mac", "/a", "no way")),
        described(FileOperationError::Failed("read from remote", "/a", "no way")),
        described(FileOperationError::Unsupported("that")),
        described(FileOperationError::Cancelled()),
        described(ReadError::NotReadable("/a", "no way")),
        described(ReadError::TooLarge("/a", 2, 1)),
        described(BrowserError::NotADirectory("/a")),
        described(RemoteShellError::ConnectFailed("web", "no way")),
        described(RemoteShellError::Disconnected("no way")),
        described(RemoteShellError::TimedOut(std::chrono::seconds(1), RemoteShellError::TimedOut::Session::ended)),
        described(RemoteShellError::OutcomeUnknown("web")),
        described(RemoteShellError::NotConnected()),
    };
    for (auto const *words : {"ann@web: Permission denied (publickey).", "Host key verification failed.", "no way"}) {
        auto const error = std::make_exception_ptr(RemoteShellError::ConnectFailed("web", words));
        texts.push_back(HostWording::failure(error, "web", "/").text);
    }
    texts.push_back(HostWording::failure(noWay, "web", "/").text);
    texts.push_back(HostWording::waiting("web", HostStatus::Phase::reaching, std::chrono::seconds(3)).text);
    using Hosts = std::optional<std::vector<std::string>>;
    for (auto const &hosts : {Hosts(), Hosts(std::in_place), Hosts(std::in_place, mostHostsInMenu + 2, "web")}) {
        for (auto const &item : connectionMenuItems(Text(localTitle), hosts, "web"))
            texts.push_back(item.title);
    }
    return texts;
}

TEST(WordingTest, noTextIsShownInTheWordsOfAnotherDesktop)
{
    for (auto const &text : formedTexts()) {
        auto const shown = Wording::shown(text);
        for (auto const *const word : {"Mac", "Keychain", "Finder", "⌘", "%@", "%d"})
            EXPECT_FALSE(shown.contains(QString::fromUtf8(word))) << shown.toStdString();
    }
}

TEST(WordingTest, aTextInPartsIsWordedInItsParts)
{
    auto const error = std::make_exception_ptr(FileOperationError::Failed("read from this Mac", "/x", "disk full"));
    EXPECT_EQ(Wording::shown(PaneStatus::describe(error)),
              QStringLiteral("read from this computer failed on /x: disk full"));
}

TEST(WordingTest, aNameIsNobodysToWord)
{
    EXPECT_EQ(Wording::shown(Text(std::string("This Mac"))), QStringLiteral("This Mac"));
    EXPECT_EQ(Wording::shown(Text("%@ is not a directory", {std::string("/This Mac\n\xff")})),
              QStringLiteral("/This Mac␊\uFFFD is not a directory"));
}

} // namespace
} // namespace tw::test
