#include "Tarnwick/Viewer/ViewerController.h"

#include "Tarnwick/Viewer/PictureSignature.h"
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
        viewer.reset();
        loop.drain(); // what waits for a change ends
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

    void find(SearchWish const &wish)
    {
        viewer->find(wish);
        loop.drain();
    }

    void grow(std::int64_t size)
    {
        file->size = size;
        file->change();
        loop.drain();
    }

    std::string status() const { return display.screen.status.english(); }

    std::string firstRow() const { return ascii(display.screen.rows.front().text); }

    std::string lastRow() const { return ascii(display.screen.rows.back().text); }

    static std::string ascii(std::u32string const &text) { return {text.begin(), text.end()}; }

    /// A picture of every file that says "good".
    static Task<PictureReading::Result> decodeGood(std::string bytes, PictureBounds room)
    {
        if (!bytes.contains("good"))
            co_return std::unexpected(PictureFailure::damaged);
        auto const isWhole = room == PictureBounds::ofWhole(3000, 2000);
        co_return Picture{.width = isWhole ? 3000 : 2,
                          .height = isWhole ? 2000 : 1,
                          .wholeWidth = 3000,
                          .wholeHeight = 2000,
                          .pixels = "abcdefgh"};
    }

    static Task<PictureReading::Result> decodeAs(PictureReading::Result made) { co_return made; }

    TestLoop loop;
    int decodings = 0;
    PictureReading::Decode decode = [this](std::string bytes, std::string const & /*name*/, PictureBounds room) {
        ++decodings;
        return decodeGood(std::move(bytes), room);
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
    viewer->readAs(TextDecoding::encodings.back());
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
        find({.typed = "x"});
        perform(ViewerAction::follow);
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
    EXPECT_EQ(status(), "box:/srv/log   3000×2000   3.0M");
    perform(ViewerAction::pageDown);
    EXPECT_THAT(display.asked, ElementsAre(ViewerAction::pageDown)) << "a picture is moved by its view";
    perform(ViewerAction::showHex);
    EXPECT_FALSE(display.screen.picture);
    perform(ViewerAction::showImage);
    EXPECT_TRUE(display.screen.picture);
}

TEST_F(ViewerControllerTest, aPictureThatIsLargeOnScreenIsDecodedAgainOnce)
{
    hold("\x89PNG good");
    open();
    EXPECT_EQ(display.screen.picture->width, 2);
    for (int times = 0; times < 2; ++times) {
        viewer->refineImage();
        loop.drain();
        EXPECT_EQ(display.screen.picture->width, 3000);
        EXPECT_EQ(decodings, 2);
    }
}

TEST_F(ViewerControllerTest, aPictureWithTooManyPixelsSaysHowManyAreShown)
{
    Picture made{.width = 2000, .height = 1000, .wholeWidth = 20'000, .wholeHeight = 10'000, .pixels = "abcd"};
    decode = [&made](auto const & /*bytes*/, auto const & /*name*/, auto /*room*/) { return decodeAs(made); };
    hold("\x89PNG");
    open();
    EXPECT_EQ(status(), "box:/srv/log   20000×10000, shown with 7094×3547 pixels at most   4");
    made.width = 5000;
    made.height = 2500;
    viewer->refineImage();
    loop.drain();
    EXPECT_THAT(status(), HasSubstr("20000×10000, shown with 5000×2500 pixels at most"));
    made.wholeWidth = 8000; // it moves, and is not decoded again
    made.wholeHeight = 4000;
    made.furtherFrames = {{.pixels = "abcd"}};
    open();
    EXPECT_THAT(status(), HasSubstr("8000×4000, shown with 5000×2500 pixels at most"));
}

TEST_F(ViewerControllerTest, whyAPictureIsNotDecodedIsSaid)
{
    PictureReading::Result made = std::unexpected(PictureFailure::tooLarge);
    decode = [&made](auto const & /*bytes*/, auto const & /*name*/, auto /*room*/) { return decodeAs(made); };
    hold("\x89PNG");
    open();
    EXPECT_EQ(status(), "⚠︎ this image has too many pixels to be decoded");
    EXPECT_EQ(display.screen.mode, ViewerMode::hex);
    made = std::unexpected(PictureFailure::tooSlow);
    perform(ViewerAction::showImage);
    EXPECT_EQ(status(), "⚠︎ this image takes too long to decode");
}

TEST(PictureBoundsTest, aPictureIsShownPixelByPixelAsFarAsMemoryAllows)
{
    EXPECT_EQ(PictureBounds::ofWhole(6000, 4000), (PictureBounds{.width = 6000, .height = 4000}));
    auto const large = PictureBounds::ofWhole(12'000, 8000);
    EXPECT_LE(std::int64_t(large.width) * large.height, PictureBounds::mostPixels);
    EXPECT_NEAR(large.width / 1.5, large.height, 1);
    EXPECT_EQ(PictureBounds::ofWhole(1'000'000, 1).width, PictureBounds::mostSide);
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
    // Empty lines, and two needles.
    constexpr std::int64_t near = 1000;
    constexpr std::int64_t far = 3 << 20;
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
    find({.typed = "needle"});
    EXPECT_EQ(line(), near);
    perform(ViewerAction::copy);
    EXPECT_EQ(display.copied, U"needle");
    perform(ViewerAction::findNext);
    EXPECT_EQ(line(), far);
    EXPECT_THAT(display.screen.rows, ::testing::Contains(::testing::Field(&ViewerRow::place, (ViewerPlace{far, 0}))));
    EXPECT_THAT(status(), StartsWith("box:"));
    perform(ViewerAction::findNext);
    EXPECT_EQ(line(), near);
    EXPECT_EQ(status(), "continued at the beginning");
    perform(ViewerAction::lineDown);
    EXPECT_THAT(status(), StartsWith("box:"));
    perform(ViewerAction::findPrevious);
    EXPECT_EQ(line(), far);
    EXPECT_EQ(status(), "continued at the end");
    perform(ViewerAction::findPrevious);
    EXPECT_EQ(line(), near);
    file->searched.clear();
    find({.typed = "nowhere"});
    EXPECT_EQ(status(), "⚠︎ not found");
    EXPECT_EQ(file->searched.back().to, display.screen.rows.front().place.line + 6) << "the whole file was searched";
}

TEST_F(ViewerControllerTest, anExpressionIsFoundAndItsWholeMatchIsSelected)
{
    hold("first\nerror 17 here\nError 4242 there\n");
    open();
    find({.typed = "err?or \\d+", .isExpression = true, .ignoresCase = true});
    perform(ViewerAction::copy);
    EXPECT_EQ(display.copied, U"error 17");
    perform(ViewerAction::findNext);
    perform(ViewerAction::copy);
    EXPECT_EQ(display.copied, U"Error 4242");
    perform(ViewerAction::findPrevious);
    perform(ViewerAction::copy);
    EXPECT_EQ(display.copied, U"error 17");
    find({.typed = "(", .isExpression = true});
    EXPECT_EQ(status(), "⚠︎ this is not a regular expression");
}

TEST_F(ViewerControllerTest, aSearchThatIsCutOffHasWordsAndCanBeRepeated)
{
    hold("one\ntwo\n");
    open();
    file->failure = "Connection reset";
    find({.typed = "two"});
    EXPECT_THAT(status(), HasSubstr("Connection reset"));
    file->failure.clear();
    perform(ViewerAction::findNext);
    EXPECT_EQ(display.screen.selectedFrom.line, 4);
}

TEST_F(ViewerControllerTest, aMatchIsShownWithWhatAHostSaysIsAroundIt)
{
    holdNumberedLines(11 * 1'000'000);
    file->saysWhatIsAround = true;
    open();
    file->requests.clear();
    constexpr std::int64_t offset = 11 * 500'000;
    constexpr auto from = offset - FileSearch::bytesAround / 2;
    file->isHeld = true;
    find({.typed = "0005500000"});
    file->answer();
    loop.drain();
    EXPECT_EQ(display.screen.selectedFrom, (ViewerPlace{offset, 0}));
    EXPECT_THAT(display.screen.rows, ::testing::Contains(::testing::Field(&ViewerRow::text, U"0005500000")));
    EXPECT_THAT(file->requests, ElementsAre(Request{from + FileSearch::bytesAround, FileWindow::chunkBytes}))
        << "nothing is read but what comes behind it";
}

TEST_F(ViewerControllerTest, aMatchAtTheEndOfTheFileIsOnTheLastPage)
{
    holdNumberedLines(11 * 1'000'000);
    file->saysWhatIsAround = true;
    open();
    find({.typed = "0010999989"});
    EXPECT_EQ(lastRow(), "0010999989");
    EXPECT_EQ(display.screen.rows.size(), 10U);
    EXPECT_THAT(display.screen.top + display.screen.page, ::testing::DoubleNear(1, 1e-9));
    file->requests.clear();
    find({.typed = "0010999978"});
    EXPECT_EQ(display.screen.selectedFrom.line, 10'999'978);
    EXPECT_TRUE(file->requests.empty()) << "it was at hand";
}

TEST_F(ViewerControllerTest, aMatchStaysSelectedWhenMoreIsReadInFrontOfIt)
{
    holdNumberedLines(11 * 1'000'000);
    open();
    file->requests.clear();
    find({.typed = "10999989"});
    EXPECT_GT(file->requests.size(), 1U) << "more than the window with the match is read";
    EXPECT_EQ(display.screen.selectedFrom, (ViewerPlace{10'999'989, 2}));
    EXPECT_EQ(display.screen.selectedTo, (ViewerPlace{10'999'989, 10}));
}

TEST_F(ViewerControllerTest, aFileThatCannotBeSearchedIsNotOneWithoutAMatch)
{
    hold("one\ntwo\n");
    open();
    file->whyNotSearched = "this file cannot be searched: one of its lines is too long";
    find({.typed = "nowhere"});
    EXPECT_EQ(status(), "⚠︎ this file cannot be searched: one of its lines is too long");
    file->whyNotSearched.clear();
    find({.typed = "two"});
    EXPECT_EQ(display.screen.selectedFrom.line, 4);
}

TEST_F(ViewerControllerTest, aFollowedFileStaysAtItsEnd)
{
    holdNumberedLines(1100);
    open();
    perform(ViewerAction::follow);
    EXPECT_TRUE(display.screen.isFollowed);
    EXPECT_EQ(lastRow(), "0000001089");
    EXPECT_THAT(status(), EndsWith("  · following"));
    grow(1650);
    EXPECT_EQ(lastRow(), "0000001639");
    file->requests.clear();
    grow(50 * gibibyte);
    EXPECT_THAT(file->requests, ElementsAre(Request{50 * gibibyte - oneChunk, FileWindow::chunkBytes},
                                            Request{50 * gibibyte, FileWindow::chunkBytes}))
        << "what lies between is not read";
    perform(ViewerAction::lineUp);
    auto const row = firstRow();
    grow(50 * gibibyte + 110);
    EXPECT_EQ(firstRow(), row) << "who reads further up is not carried away";
    perform(ViewerAction::end);
    grow(50 * gibibyte + 220);
    EXPECT_THAT(display.screen.top + display.screen.page, ::testing::DoubleNear(1, 1e-9));
    perform(ViewerAction::follow);
    EXPECT_FALSE(display.screen.isFollowed);
    EXPECT_EQ(file->followers, 0);
}

TEST_F(ViewerControllerTest, aFollowedFileThatIsCutOrReplacedIsReadAgainWithWords)
{
    holdNumberedLines(2200);
    open();
    perform(ViewerAction::follow);
    grow(110);
    EXPECT_EQ(status(), "the file has become shorter, and was read again");
    EXPECT_EQ(lastRow(), "0000000099");
    file->identity = "2";
    grow(220);
    EXPECT_EQ(status(), "another file has taken the place of this one");
    EXPECT_EQ(lastRow(), "0000000209");
    grow(330);
    EXPECT_THAT(status(), EndsWith("  · following"));
    file->failure = "Connection reset";
    file->change();
    loop.drain();
    EXPECT_THAT(status(), HasSubstr("Connection reset"));
    EXPECT_FALSE(display.screen.isFollowed);
    file->failure.clear();
    perform(ViewerAction::follow);
    EXPECT_TRUE(display.screen.isFollowed);
}

TEST_F(ViewerControllerTest, aFileIsFollowedOnlyWhileItIsSeen)
{
    holdNumberedLines(1100);
    open();
    perform(ViewerAction::follow);
    EXPECT_EQ(file->followers, 1);
    viewer->setOnScreen(false);
    loop.drain();
    EXPECT_EQ(file->followers, 0);
    grow(1650);
    EXPECT_EQ(lastRow(), "0000001089");
    viewer->setOnScreen(true);
    loop.drain();
    EXPECT_EQ(lastRow(), "0000001639");
}

TEST_F(ViewerControllerTest, anEmptyFileThatGrowsIsShown)
{
    hold("");
    open();
    perform(ViewerAction::follow);
    file->content = numberedLines;
    grow(110);
    EXPECT_EQ(lastRow(), "0000000099");
}

TEST_F(ViewerControllerTest, utf16IsTextWithAndWithoutItsMark)
{
    auto const lines = [](TextDecoding::Encoding encoding) {
        std::string text;
        for (int line = 0; line < 12'000; ++line)
            text += "Ċ line " + std::to_string(line) + " 한글\r\n"; // its first character has a 0x0A
        return *TextDecoding::encode(text, encoding);
    };
    using enum TextDecoding::Encoding;
    for (auto const encoding : {utf16le, utf16be, utf32le, utf32be}) {
        for (auto const &mark : {std::string(), *TextDecoding::encode("\ufeff", encoding)}) {
            hold(mark + lines(encoding));
            open();
            ASSERT_EQ(display.screen.mode, ViewerMode::text);
            EXPECT_EQ(display.screen.encoding, encoding);
            EXPECT_EQ(display.screen.rows.at(0).text, U"Ċ line 0 한글");
            EXPECT_EQ(display.screen.rows.at(1).text, U"Ċ line 1 한글");
            perform(ViewerAction::end);
            EXPECT_EQ(display.screen.encoding, encoding);
            EXPECT_EQ(display.screen.rows.back().text, U"Ċ line 11999 한글");
            perform(ViewerAction::start);
            find({.typed = "LINE 77 ", .ignoresCase = true});
            perform(ViewerAction::copy);
            EXPECT_EQ(display.copied, U"line 77 ");
            goTo("12");
            EXPECT_EQ(display.screen.rows.at(0).text, U"Ċ line 11 한글");
        }
    }
}

TEST_F(ViewerControllerTest, aSearchIsCancelledAndThenTheViewerCloses)
{
    holdNumberedLines(gibibyte);
    open();
    file->isHeld = true;
    find({.typed = "nowhere"});
    EXPECT_THAT(status(), StartsWith("searching… 0 of 1.0G"));
    perform(ViewerAction::close);
    EXPECT_FALSE(display.screen.isBusy);
    EXPECT_THAT(display.asked, ::testing::IsEmpty());
    EXPECT_EQ(file->searched.size(), 1U);
    EXPECT_EQ(file->stopped, 1) << "where the file is";
    perform(ViewerAction::close);
    EXPECT_THAT(display.asked, ElementsAre(ViewerAction::close));
}

TEST_F(ViewerControllerTest, aSearchThatGoesOnToTheEndAtOnceSaysHowFarItIs)
{
    holdNumberedLines(gibibyte);
    open();
    file->content = [](std::int64_t, std::size_t) { return std::string(); };
    file->searchesAtOnce = true;
    file->isHeld = true;
    find({.typed = "nowhere"});
    EXPECT_THAT(status(), StartsWith("searching… 0 of 1.0G"));
    file->reportProgress(gibibyte / 2);
    EXPECT_THAT(status(), StartsWith("searching… 512M of 1.0G"));
    file->answer();
    loop.drain();
    EXPECT_THAT(file->searched, ElementsAre(FileSearch::Part{0, gibibyte}));
    EXPECT_EQ(status(), "⚠︎ not found");
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
