#include "Tarnwick/Panes/PaneStatus.h"

#include "TWCore/Model/FileOperationError.h"
#include "TWCore/Model/ReadError.h"
#include "TWEngine/Browsing/Browser.h"
#include "TWEngine/Browsing/LocalProviderError.h"
#include "TWEngine/Shell/RemoteShellError.h"
#include "tests/support/Listings.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace tw::test {
namespace {

template <class Error>
std::pair<std::string, std::string> textsOf(Error const &error)
{
    return {PaneStatus::describe(std::make_exception_ptr(error)).english(), error.what()};
}

TEST(PaneStatusTest, anErrorInPartsReadsAsTheErrorItself)
{
    std::pair<std::string, std::string> const table[] = {
        textsOf(FileOperationError::Failed("read from this Mac", "/a%@", "disk full")),
        textsOf(FileOperationError::Unsupported("that")),
        textsOf(FileOperationError::Cancelled()),
        textsOf(ReadError::NotReadable("/a", "Permission denied")),
        textsOf(ReadError::TooLarge("/a", 10, 5)),
        textsOf(BrowserError::NotADirectory("/a")),
        textsOf(LocalProviderError::CannotOpen("/a", EACCES)),
        textsOf(RemoteShellError::ConnectFailed("web", "no route to host")),
        textsOf(RemoteShellError::Disconnected("broken pipe")),
        textsOf(RemoteShellError::TimedOut(std::chrono::seconds(15))),
        textsOf(RemoteShellError::OutcomeUnknown("web")),
        textsOf(RemoteShellError::NotConnected()),
        textsOf(std::runtime_error("100% of something else")),
    };
    for (auto const &[inParts, itself] : table)
        EXPECT_EQ(inParts, itself);
}

TEST(PaneStatusTest, theErrorsOfAPaneHaveTheirWords)
{
    auto const words = [](auto const &error) { return PaneStatus::describe(std::make_exception_ptr(error)).english(); };
    EXPECT_EQ(words(RemoteShellError::ConnectFailed("web", "no route to host")), "cannot reach web: no route to host");
    EXPECT_EQ(words(RemoteShellError::Disconnected("broken pipe")), "disconnected: broken pipe");
    EXPECT_EQ(words(RemoteShellError::TimedOut(std::chrono::milliseconds(15900))), "timed out after 15s");
    EXPECT_EQ(words(RemoteShellError::NotConnected()), "not connected");
    EXPECT_EQ(words(LocalProviderError::CannotOpen("/a", EACCES)), "/a: Permission denied");
    EXPECT_EQ(words(BrowserError::NotADirectory("/a")), "/a is not a directory");
}

TEST(PaneStatusTest, theLineHasItsPartsInTheirOrder)
{
    PaneModel rows;
    EXPECT_EQ(PaneStatus::summary(rows, {}).english(), "0 files, 0 dirs");
    rows.setSnapshot(listing("/srv", {directory("d"), file("a", 1536), file("b")}, {}, Completeness::truncated));
    rows.markAll(PaneModel::Marks::insert);
    EXPECT_EQ(PaneStatus::summary(rows, PaneStatus::timing(std::chrono::milliseconds(12), PaneStatus::Source::network))
                  .english(),
              "2 files, 1 dirs  ·  1.5K   ▸ 3 marked (1.5K)   ⚠︎ listing truncated   ·  12 ms network");
}

TEST(PaneStatusTest, whatIsNoExceptionIsAnUnknownError)
{
    EXPECT_EQ(PaneStatus::describe(std::make_exception_ptr(1)).english(), "unknown error");
}

TEST(PaneStatusTest, timesHaveAPointInEveryLocale)
{
    EXPECT_EQ(PaneStatus::timing(std::chrono::milliseconds(1234), PaneStatus::Source::network).english(),
              "1234 ms network");
    EXPECT_EQ(PaneStatus::timing(std::chrono::milliseconds(1234), PaneStatus::Source::disk).english(), "1234 ms disk");
    EXPECT_EQ(PaneStatus::timing(std::chrono::microseconds(57), PaneStatus::Source::memory).english(),
              "0.06 ms cached");
}

} // namespace
} // namespace tw::test
