#include "Tarnwick/Toolkit/Appearance/Wording.h"

#include "TWCore/Model/FileOperationError.h"
#include "TWCore/Model/ReadError.h"
#include "TWEngine/Browsing/Browser.h"
#include "TWEngine/Shell/RemoteShellError.h"
#include "Tarnwick/Connections/ConnectionItem.h"
#include "Tarnwick/Panes/HostWording.h"
#include "Tarnwick/Panes/PaneStatus.h"
#include "tests/support/TemporaryFolder.h"

#include <QRegularExpression>
#include <gtest/gtest.h>

#include <filesystem>

namespace tw::test {
namespace {

namespace fs = std::filesystem;

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
        described(RemoteShellError::TimedOut(std::chrono::seconds(1))),
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

/// The string literals of a source text, as they stand between their quotes; those in comments are none.
std::vector<std::string> literalsOf(std::string const &source)
{
    std::vector<std::string> literals;
    auto at = std::size_t(0);
    auto const skipTo = [&](std::string_view end) { at = std::min(source.find(end, at), source.size()); };
    while (at < source.size()) {
        if (source.compare(at, 2, "//") == 0 || source.compare(at, 8, "#include") == 0) {
            skipTo("\n");
        } else if (source.compare(at, 2, "/*") == 0) {
            skipTo("*/");
        } else if (source.compare(at, 3, "'\"'") == 0) {
            at += 3;
        } else if (source[at] == '"') {
            auto const begin = ++at;
            while (at < source.size() && source[at] != '"')
                at += source[at] == '\\' ? 2 : 1;
            literals.push_back(source.substr(begin, at - begin));
            ++at;
        } else {
            ++at;
        }
    }
    return literals;
}

bool isOfAnotherDesktop(std::string_view text)
{
    for (std::string_view const sign : {"⌘", "⌥", "⇧", "⌃"}) {
        if (text.contains(sign))
            return true;
    }
    static QRegularExpression const words(
        QStringLiteral("\\b(Mac|macOS|Finder|Keychain|Cmd|Command key|Option key|System Settings|Dock)\\b"));
    return words.match(QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()))).hasMatch();
}

TEST(WordingTest, noTextOfTheProgramIsShownInTheWordsOfAnotherDesktop)
{
    auto found = 0;
    for (auto const *const module : {"TWCore", "TWEngine", "Tarnwick"}) {
        for (auto const &file : fs::recursive_directory_iterator(fs::path(TARNWICK_SOURCES) / module)) {
            auto const extension = file.path().extension();
            if ((extension != ".cpp" && extension != ".h") || file.path().stem() == "Wording")
                continue;
            for (auto const &literal : literalsOf(contentOf(file.path().string()))) {
                ++found;
                EXPECT_FALSE(isOfAnotherDesktop(Wording::shown(literal).toStdString()))
                    << file.path() << ": " << literal;
            }
        }
    }
    EXPECT_GT(found, 500) << "the sources were looked through";
}

TEST(WordingTest, aTextOfAnotherDesktopIsFoundInASource)
{
    auto const literals =
        literalsOf("#include \"Mac.h\"\n// \"Finder\"\nx = \"press \\\"⌘R\\\"\"; y = '\"'; z = \"b\";");
    ASSERT_EQ(literals, (std::vector<std::string>{"press \\\"⌘R\\\"", "b"}));
    EXPECT_TRUE(isOfAnotherDesktop(literals[0]));
    EXPECT_TRUE(isOfAnotherDesktop("show in Finder"));
    EXPECT_FALSE(isOfAnotherDesktop("MACs machinery"));
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
