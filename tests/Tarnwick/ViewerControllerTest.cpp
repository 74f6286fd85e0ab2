#include "Tarnwick/Viewer/ViewerController.h"

#include "Tarnwick/Viewer/PictureSignature.h"
#include "Tarnwick/Viewer/SoughtBytes.h"
#include "tests/support/FakeViewedFile.h"
#include "tests/support/TestLoop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;
using Request = FakeViewedFile::Request;

constexpr std::int64_t oneChunk = FileWindow::chunkBytes;
constexpr std::int64_t gibibyte = 1 << 30;

class RecordingViewer final : public ViewerDisplay {
public:
    void show(ViewerScreen const &shown) override { screen = shown; }

    void performInWindow(ViewerAction action) override { asked.push_back(action); }

    void copyText(std::u32string const &text) override { copied = text; }

    void beep() override { ++beeps; }

    ViewerScreen screen;
    std::vector<ViewerAction> asked;
    std::u32string copied;
    int beeps = 0;
};

/// "0000000000\n0000000011\n…": each line of eleven bytes says where it begins.
std::string numberedLines(std::int64_t from, std::size_t length)
{
    constexpr std::int64_t lineBytes = 11;
    std::string text;
    for (auto line = from / lineBytes; std::ssize(text) < static_cast<std::int64_t>(length) + lineBytes; ++line) {
        auto const number = std::to_string(line * lineBytes);
        text += std::string(10 - std::min<std::size_t>(number.size(), 10), '0') + number.substr(0, 10) + "\n";
    }
    return text.substr(static_cast<std::size_t>(from % lineBytes), length);
}

class ViewerControllerTest : public ::testing::Test {
protected:
    ~ViewerControllerTest() override
    {
        if (viewer)
            viewer->detach();
    }

    void hold(std::string bytes) { file = std::make_shared<FakeViewedFile>(std::move(bytes)); }

    void holdNumberedLines(std::int64_t size)
    {
        hold("");
        file->size = size;
        file->content = numberedLines;
    }

    void open(EntryKind kind = EntryKind::file)
    {
        viewer = std::make_shared<ViewerController>(
            loop.context(),
            ViewerSubject{
                .file = file, .decode = decode, .label = "box", .path = "/srv/log", .kind = kind, .size = file->size});
        viewer->attach(display);
        viewer->resize(10, 40);
        viewer->start();
        loop.drain();
    }

    void perform(ViewerAction action)
    {
        viewer->perform(action);
        loop.drain();
    }

    void goTo(std::string_view typed)
    {
        auto const target = ViewerTarget::parse(typed, display.screen.mode);
        ASSERT_TRUE(target) << typed;
        viewer->goTo(*target);
        loop.drain();
    }

    std::string status() const { return display.screen.status.english(); }

    std::string firstRow() const { return ascii(display.screen.rows.front().text); }

    std::string lastRow() const { return ascii(display.screen.rows.back().text); }

    static std::string ascii(std::u32string const &text) { return {text.begin(), text.end()}; }

    /// A picture of every file that says "good".
    static Task<PictureReading::Result> decodeGood(std::string bytes)
    {
        if (!bytes.contains("good"))
            co_return std::unexpected(PictureFailure::damaged);
        co_return Picture{.width = 1, .height = 1, .wholeWidth = 30, .wholeHeight = 20, .pixels = "abcd"};
    }

    TestLoop loop;
    int decodings = 0;
    PictureReading::Decode decode = [this](std::string bytes, std::string const & /*name*/) {
        ++decodings;
        return decodeGood(std::move(bytes));
    };
    RecordingViewer display;
    std::shared_ptr<FakeViewedFile> file;
    std::shared_ptr<ViewerController> viewer;
};

TEST_F(ViewerControllerTest, aFileWhoseSizeIsKnownIsOneRead)
{
    hold("one\ntwo\n");
    open();
    EXPECT_THAT(file->requests, ElementsAre(Request{0, FileWindow::chunkBytes}));
    EXPECT_EQ(file->looks, 0);
    EXPECT_EQ(firstRow(), "one");
    EXPECT_EQ(status(), "box:/srv/log   8  · showing 8  · UTF-8");
    EXPECT_FALSE(display.screen.isBusy);
}

TEST_F(ViewerControllerTest, anEmptyFileIsAnEmptyText)
{
    hold("");
    open();
    EXPECT_TRUE(display.screen.rows.empty());
    EXPECT_EQ(display.screen.mode, ViewerMode::text);
    EXPECT_EQ(status(), "box:/srv/log   0  · showing 0  · UTF-8");
    for (auto const action : {ViewerAction::end, ViewerAction::pageDown, ViewerAction::lineUp, ViewerAction::showHex,
                              ViewerAction::start, ViewerAction::copy})
        perform(action);
    EXPECT_TRUE(display.screen.rows.empty());
}

TEST_F(ViewerControllerTest, aFileOfExactlyAChunkEndsWithTheNextRead)
{
    holdNumberedLines(oneChunk);
    open();
    perform(ViewerAction::end);
    EXPECT_THAT(file->requests, ElementsAre(Request{0, FileWindow::chunkBytes}, Request{0, FileWindow::chunkBytes},
                                            Request{oneChunk, FileWindow::chunkBytes}));
    EXPECT_THAT(status(), Not(HasSubstr("scroll for more")));
}

TEST_F(ViewerControllerTest, theEndOfAHugeFileIsOneReadAndTheWayBackReadsBackwards)
{
    holdNumberedLines(50 * gibibyte);
    open();
    EXPECT_THAT(status(), EndsWith("  (scroll for more)  · UTF-8"));
    file->requests.clear();
    file->isHeld = true;
    perform(ViewerAction::end);
    EXPECT_THAT(file->requests, ElementsAre(Request{50 * gibibyte - oneChunk, FileWindow::chunkBytes}));
    EXPECT_TRUE(display.screen.isBusy);
    file->isHeld = false;
    file->answer();
    loop.drain();
    EXPECT_EQ(display.screen.rows.size(), 10U);
    EXPECT_THAT(display.screen.top + display.screen.page, ::testing::DoubleNear(1, 1e-9));
    EXPECT_THAT(status(), HasSubstr(" from 50G"));
    goTo("@" + std::to_string(50 * gibibyte - oneChunk + 2 * ViewedLines::cutBytes));
    perform(ViewerAction::pageUp);
    EXPECT_EQ(file->requests.back(), (Request{50 * gibibyte - 2 * oneChunk, FileWindow::chunkBytes}));
    EXPECT_THAT(status(), HasSubstr("showing 512K from 50G"));
}

TEST_F(ViewerControllerTest, goingDownAFileShowsEveryLineOnce)
{
    constexpr std::int64_t lineBytes = 2048;
    constexpr std::int64_t lineCount = 3 * oneChunk / lineBytes;
    hold("");
    file->size = lineCount * lineBytes;
    file->content = [](std::int64_t from, std::size_t length) {
        std::string bytes;
        for (auto line = from / lineBytes; bytes.size() < length; ++line) {
            auto const number = std::to_string(line);
            bytes += number + std::string(static_cast<std::size_t>(lineBytes) - number.size() - 1, '.') + '\n';
        }
        return bytes.substr(0, length);
    };
    open();
    perform(ViewerAction::toggleWrap);
    for (std::int64_t line = 0; line < lineCount - 10; line += 9) {
        ASSERT_THAT(firstRow(), StartsWith(std::to_string(line) + "."));
        perform(ViewerAction::pageDown);
    }
    EXPECT_THAT(lastRow(), StartsWith(std::to_string(lineCount - 1) + "."));
    perform(ViewerAction::start);
    EXPECT_THAT(firstRow(), StartsWith("0."));
}

TEST_F(ViewerControllerTest, theWindowHoldsNoMoreThanItsMeasure)
{
    hold("");
    file->size = gibibyte;
    file->content = [](std::int64_t, std::size_t length) { return std::string(length, '\n'); };
    open();
    auto const share = [](std::int64_t offset) { return static_cast<double>(offset) / static_cast<double>(gibibyte); };
    for (std::int64_t offset = 0; offset < 40 * (1 << 20); offset += oneChunk * 2 / 5) {
        viewer->scrollTo(share(offset));
        loop.drain();
    }
    EXPECT_THAT(status(), HasSubstr("showing 32M from "));
    perform(ViewerAction::end);
    EXPECT_THAT(display.screen.top + display.screen.page, ::testing::DoubleNear(1, 1e-9));
}

TEST_F(ViewerControllerTest, aJumpSupersedesAReadThatIsUnderWay)
{
    holdNumberedLines(gibibyte);
    open();
    file->isHeld = true;
    perform(ViewerAction::end);
    goTo("0x10000000");
    EXPECT_TRUE(display.screen.isBusy);
    file->isHeld = false;
    file->answer();
    loop.drain();
    EXPECT_EQ(firstRow(), "0000000000") << "an answer that nobody waits for changes nothing";
    file->answer();
    loop.drain();
    EXPECT_THAT(display.screen.rows.front().place.line,
                ::testing::AllOf(::testing::Gt(0x10000000 - 11), ::testing::Le(0x10000000)));
}

TEST_F(ViewerControllerTest, aTargetIsALineAShareOrAnOffset)
{
    holdNumberedLines(10 * oneChunk);
    open();
    goTo("100");
    EXPECT_EQ(firstRow(), numberedLines(11 * 99, 10));
    goTo("50%");
    EXPECT_EQ(firstRow(), numberedLines(5 * oneChunk / 11 * 11, 10));
    goTo("@22");
    EXPECT_EQ(firstRow(), "0000000022");
    goTo("100%");
    EXPECT_EQ(lastRow(), numberedLines(10 * oneChunk / 11 * 11, static_cast<std::size_t>(10 * oneChunk % 11)));
    goTo("99999999");
    EXPECT_THAT(status(), StartsWith("⚠︎ only the first "));
    perform(ViewerAction::lineDown);
    EXPECT_THAT(status(), StartsWith("box:"));
}

TEST(ViewerTargetTest, whatIsTypedIsUnderstoodOrRefused)
{
    using enum ViewerTarget::Unit;
    auto const text = [](std::string_view typed) { return ViewerTarget::parse(typed, ViewerMode::text); };
    EXPECT_EQ(text(" 12 "), (ViewerTarget{line, 12}));
    EXPECT_EQ(ViewerTarget::parse("12", ViewerMode::hex), (ViewerTarget{offset, 12}));
    EXPECT_EQ(text("0x1F"), (ViewerTarget{offset, 31}));
    EXPECT_EQ(text("@7"), (ViewerTarget{offset, 7}));
    EXPECT_EQ(text("3G"), (ViewerTarget{offset, 3 * gibibyte}));
    EXPECT_EQ(text("100%"), (ViewerTarget{percent, 100}));
    for (auto const *const wrong :
         {"", " ", "x", "-1", "101%", "%", "0x", "G", "99999999999999999999", "9999999999999T"})
        EXPECT_FALSE(text(wrong)) << wrong;
}

TEST_F(ViewerControllerTest, aBinaryFileIsAHexDumpWhoseOffsetsGoOn)
{
    hold("");
    file->size = 2 * oneChunk;
    file->content = [](std::int64_t, std::size_t length) { return std::string(length, '\0'); };
    open();
    EXPECT_EQ(display.screen.mode, ViewerMode::hex);
    EXPECT_THAT(status(), Not(HasSubstr("UTF-8")));
    goTo("@262136");
    EXPECT_THAT(firstRow(), StartsWith("0003FFF0  00 00"));
    EXPECT_THAT(ascii(display.screen.rows.at(1).text), StartsWith("00040000  00"));
    perform(ViewerAction::showText);
    EXPECT_EQ(display.screen.mode, ViewerMode::text);
}

TEST_F(ViewerControllerTest, aCharacterThatLiesInTwoChunksIsWhole)
{
    hold(std::string(static_cast<std::size_t>(oneChunk) - 1, '\n') + "한글\n");
    open();
    perform(ViewerAction::end);
    EXPECT_EQ(display.screen.rows.back().text, U"한글");
}

TEST_F(ViewerControllerTest, anEncodingThatIsChosenStays)
{
    hold("\xc7\xd1\xb1\xdb \xb9\xae\xc0\xe5\n");
    open();
    EXPECT_EQ(display.screen.rows.front().text, U"한글 문장");
    EXPECT_THAT(status(), EndsWith("CP949"));
    viewer->readAs(TextDecoding::Encoding::latin1);
    EXPECT_EQ(display.screen.rows.front().text.front(), U'Ç');
    perform(ViewerAction::nextEncoding);
    EXPECT_EQ(display.screen.encoding, TextDecoding::Encoding::utf8);
}

TEST_F(ViewerControllerTest, whatIsNoFileIsNotRead)
{
    for (auto const kind : {EntryKind::fifo, EntryKind::charDev, EntryKind::directory, EntryKind::unknown}) {
        hold("endless");
        file->kind = kind;
        open(EntryKind::symlink);
        EXPECT_THAT(status(), StartsWith("⚠︎ this is "));
        for (auto const action : {ViewerAction::end, ViewerAction::showHex, ViewerAction::start,
                                  ViewerAction::showImage, ViewerAction::showText, ViewerAction::pageDown})
            perform(action);
        goTo("50%");
        viewer->find("x");
        loop.drain();
        EXPECT_TRUE(file->requests.empty() && file->searched.empty()) << "and no key makes it be read";
    }
}

TEST_F(ViewerControllerTest, aFailureIsSaidAndWhatWasShownStays)
{
    holdNumberedLines(gibibyte);
    open();
    file->failure = "Connection reset";
    perform(ViewerAction::end);
    EXPECT_THAT(status(), StartsWith("⚠︎ cannot read /file: Connection reset"));
    EXPECT_EQ(firstRow(), "0000000000");
    auto const reads = file->requests.size();
    loop.drain();
    EXPECT_EQ(file->requests.size(), reads) << "only the user tries again";
    file->failure.clear();
    perform(ViewerAction::end);
    EXPECT_THAT(status(), StartsWith("box:/srv/log"));
}

TEST_F(ViewerControllerTest, aHostThatSaysNothingIsAskedWhy)
{
    hold("secret");
    file->failure = "Permission denied";
    file->throwsOnRead = false;
    open();
    EXPECT_EQ(file->looks, 1);
    EXPECT_THAT(status(), HasSubstr("Permission denied"));
}

TEST_F(ViewerControllerTest, aFileThatHasBecomeShorterEndsWhereItEndsNow)
{
    holdNumberedLines(100 * oneChunk);
    open();
    file->size = 2 * oneChunk + 110;
    perform(ViewerAction::end);
    EXPECT_THAT(display.screen.top + display.screen.page, ::testing::DoubleNear(1, 1e-9));
    EXPECT_THAT(status(), HasSubstr("   512K  "));
    file->size = 0;
    goTo("@0");
    EXPECT_EQ(file->requests.back().offset, 0);
    EXPECT_TRUE(display.screen.rows.empty());
}

TEST_F(ViewerControllerTest, oneLineWithoutAnEndIsPagedAsAnythingElse)
{
    hold("");
    file->size = gibibyte;
    file->content = [](std::int64_t, std::size_t length) { return std::string(length, '{'); };
    open();
    EXPECT_EQ(display.screen.rows.size(), 10U);
    perform(ViewerAction::pageDown);
    perform(ViewerAction::toggleWrap);
    EXPECT_EQ(display.screen.rows.size(), 10U);
    EXPECT_LE(display.screen.rows.front().text.size(), 42U);
    perform(ViewerAction::end);
    EXPECT_THAT(display.screen.top + display.screen.page, ::testing::DoubleNear(1, 1e-9));
}

TEST_F(ViewerControllerTest, aPictureIsReadWholeAndShown)
{
    hold("\x89PNG" + std::string(3 * PictureReading::chunkBytes, 'x') + "good");
    open();
    EXPECT_EQ(display.screen.mode, ViewerMode::image);
    ASSERT_TRUE(display.screen.picture);
    EXPECT_EQ(status(), "box:/srv/log   30×20   3.0M");
    perform(ViewerAction::pageDown);
    EXPECT_THAT(display.asked, ElementsAre(ViewerAction::pageDown)) << "a picture is moved by its view";
    perform(ViewerAction::showHex);
    EXPECT_FALSE(display.screen.picture);
    perform(ViewerAction::showImage);
    EXPECT_TRUE(display.screen.picture);
}

TEST_F(ViewerControllerTest, whatIsNoPictureIsAHexDump)
{
    hold("\xff\xd8\xff garbage");
    open();
    EXPECT_EQ(display.screen.mode, ViewerMode::hex);
    EXPECT_EQ(status(), "⚠︎ not an image this Mac can decode");
    perform(ViewerAction::lineDown);
    EXPECT_THAT(status(), StartsWith("box:"));
}

TEST_F(ViewerControllerTest, aPictureAboveItsMeasureIsNotFetched)
{
    hold("");
    file->size = 70 << 20;
    file->content = [](std::int64_t, std::size_t length) { return "\x89PNG" + std::string(length - 4, 'x'); };
    open();
    EXPECT_EQ(status(), "⚠︎ 70M is too large to display");
    EXPECT_EQ(display.screen.mode, ViewerMode::image);
    EXPECT_EQ(file->requests.size(), 1U);
    EXPECT_EQ(decodings, 0);
}

TEST(PictureSignatureTest, aPictureIsKnownByItsFirstBytes)
{
    using namespace std::string_view_literals;
    for (auto const yes : {"\x89PNG"sv, "\xff\xd8\xff\xe0"sv, "GIF89a"sv, "II*\0"sv, "MM\0*"sv, "BM\1\2\3\4\0\0\0\0"sv,
                           "\0\0\0\x1c"
                           "ftypavif"sv,
                           "\0\0\0\x1c"
                           "WEBPabcd"sv})
        EXPECT_TRUE(isProbablyImage(yes)) << yes;
    for (auto const no : {""sv, "BMW is a maker of cars"sv, "BM"sv, "RIFF\0\0\0\0WEBPVP8 "sv,
                          "\0\0\0\x1c"
                          "ftyp"sv,
                          "text"sv})
        EXPECT_FALSE(isProbablyImage(no)) << no;
}

TEST_F(ViewerControllerTest, whatIsSoughtIsFoundDownAndUpAndSelected)
{
    // Empty lines, and two needles: the second one lies over the border of two steps.
    constexpr std::int64_t near = 1000;
    constexpr std::int64_t far = near + 1 + ViewerController::searchStep - 3;
    hold("");
    file->size = far + 100;
    file->content = [](std::int64_t from, std::size_t length) {
        std::string bytes(length, '\n');
        std::string_view const needle = "needle";
        for (auto const at : {near, far}) {
            for (std::int64_t index = 0; index < std::ssize(needle); ++index) {
                auto const place = at + index - from;
                if (place >= 0 && place < std::ssize(bytes))
                    bytes[static_cast<std::size_t>(place)] = needle[static_cast<std::size_t>(index)];
            }
        }
        return bytes;
    };
    open();
    auto const line = [this] { return display.screen.selectedFrom.line; };
    viewer->find("needle");
    loop.drain();
    EXPECT_EQ(line(), near);
    perform(ViewerAction::copy);
    EXPECT_EQ(display.copied, U"needle");
    perform(ViewerAction::findNext);
    EXPECT_EQ(line(), far);
    EXPECT_THAT(display.screen.rows, ::testing::Contains(::testing::Field(&ViewerRow::place, (ViewerPlace{far, 0}))));
    perform(ViewerAction::findNext);
    EXPECT_EQ(status(), "⚠︎ not found");
    EXPECT_EQ(file->searched.back().to, file->size);
    perform(ViewerAction::findPrevious);
    EXPECT_EQ(line(), near);
    perform(ViewerAction::findPrevious);
    EXPECT_EQ(status(), "⚠︎ not found");
    EXPECT_EQ(file->searched.back().from, 0);
}

TEST_F(ViewerControllerTest, aSearchIsCancelledAndThenTheViewerCloses)
{
    holdNumberedLines(gibibyte);
    open();
    file->isHeld = true;
    viewer->find("nowhere");
    loop.drain();
    EXPECT_THAT(status(), StartsWith("searching… 0 of 1.0G"));
    perform(ViewerAction::close);
    EXPECT_FALSE(display.screen.isBusy);
    EXPECT_THAT(display.asked, ::testing::IsEmpty());
    EXPECT_EQ(file->searched.size(), 1U);
    perform(ViewerAction::close);
    EXPECT_THAT(display.asked, ElementsAre(ViewerAction::close));
}

TEST(SoughtBytesTest, theyAreThoseOfTheFilesEncoding)
{
    using TextDecoding::Encoding;
    EXPECT_EQ(soughtBytes("한", ViewerMode::text, Encoding::utf8), "한");
    EXPECT_EQ(soughtBytes("한", ViewerMode::text, Encoding::cp949), "\xc7\xd1");
    EXPECT_EQ(soughtBytes("한", ViewerMode::text, Encoding::latin1), std::nullopt);
    EXPECT_EQ(soughtBytes("48 656C", ViewerMode::hex, Encoding::utf8), "Hel");
    EXPECT_EQ(soughtBytes("48", ViewerMode::text, Encoding::utf8), "48");
    EXPECT_EQ(soughtBytes("4", ViewerMode::hex, Encoding::utf8), "4");
    EXPECT_EQ(soughtBytes(" ", ViewerMode::hex, Encoding::utf8), std::nullopt);
    EXPECT_EQ(soughtBytes("", ViewerMode::text, Encoding::utf8), std::nullopt);
}

TEST_F(ViewerControllerTest, whatIsSelectedIsCopied)
{
    hold("one\ntwo\n");
    open();
    perform(ViewerAction::copy);
    EXPECT_EQ(display.beeps, 1);
    viewer->select({4, 2}, {0, 1});
    perform(ViewerAction::copy);
    EXPECT_EQ(display.copied, U"ne\ntw");
}

} // namespace
} // namespace tw::test
