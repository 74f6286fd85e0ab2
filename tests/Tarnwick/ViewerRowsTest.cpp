// The rows of a piece of a file: FileWindow, ViewedLines, RowBreaks and RowPager.

#include "Tarnwick/Viewer/LineCounts.h"
#include "Tarnwick/Viewer/RowBreaks.h"
#include "Tarnwick/Viewer/RowPager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

using ::testing::ElementsAre;

TEST(FileWindowTest, itSlidesBothWaysAndForgetsAtTheOtherEnd)
{
    FileWindow window;
    auto const chunk = std::string(FileWindow::chunkBytes, 'a');
    constexpr std::int64_t length = FileWindow::chunkBytes;
    constexpr std::int64_t most = FileWindow::mostBytes;
    window.replace(10 * most, chunk);
    for (std::int64_t count = 1; count < 200; ++count) {
        window.append(chunk);
        EXPECT_LE(window.end() - window.begin(), most + length);
        EXPECT_EQ(window.end(), 10 * most + (count + 1) * length);
    }
    for (std::int64_t count = 1; count < 200; ++count) {
        auto const begin = window.begin();
        window.prepend(chunk);
        EXPECT_EQ(window.begin(), begin - length);
        EXPECT_LE(window.end() - window.begin(), most + length);
    }
}

TEST(FileWindowTest, bytesAreFoundAndCopiedAcrossItsPieces)
{
    FileWindow window;
    window.replace(100, "ab\n");
    window.append("cd");
    window.append("\nef");
    EXPECT_EQ(window.copy(0, 1000), "ab\ncd\nef");
    EXPECT_EQ(window.copy(101, 105), "b\ncd");
    EXPECT_EQ(window.find('\n', 103, 1000), 105);
    EXPECT_EQ(window.find('\n', 103, 105), std::nullopt);
    EXPECT_EQ(window.findLast('\n', 0, 105), 102);
    EXPECT_EQ(window.findLast('\n', 103, 105), std::nullopt);
    EXPECT_EQ(window.findLast('\n', 0, 1000), 105);
    EXPECT_FALSE(window.contains(108));
}

TEST(RowBreaksTest, aRowIsBrokenByCellsAndNotByCharacters)
{
    EXPECT_THAT(RowBreaks::of(U"", 4), ElementsAre(0));
    EXPECT_THAT(RowBreaks::of(U"abcdefgh", 4), ElementsAre(0, 4));
    EXPECT_THAT(RowBreaks::of(U"abc한글", 4), ElementsAre(0, 3));
    EXPECT_THAT(RowBreaks::of(U"abcde\u0301f", 5), ElementsAre(0, 6)) << "a mark stays with its letter";
    EXPECT_THAT(RowBreaks::of(U"a\tb\tc", 16), ElementsAre(0, 4));
    EXPECT_THAT(RowBreaks::of(U"한한한", 1), ElementsAre(0, 1, 2)) << "wider than the row";
    EXPECT_THAT(RowBreaks::of(U"abcdefgh", 0), ElementsAre(0));
    EXPECT_THAT(RowBreaks::columnsOf(U"a\t한b"), ElementsAre(0, 1, 8, 10, 11));
    EXPECT_EQ(RowBreaks::characterAt(U"a한b", 0.4), 0U);
    EXPECT_EQ(RowBreaks::characterAt(U"a한b", 1.9), 1U);
    EXPECT_EQ(RowBreaks::characterAt(U"a한b", 2.1), 2U);
    EXPECT_EQ(RowBreaks::characterAt(U"a한b", 50), 3U);
}

/// A text in a window that begins at an offset, and its rows.
class RowPagerTest : public ::testing::Test {
protected:
    void hold(std::string bytes, std::int64_t offset = 0) { window.replace(offset, std::move(bytes)); }

    std::vector<std::u32string> textsFrom(ViewerPlace place, int count)
    {
        std::vector<std::u32string> texts;
        for (auto const &row : pager.rowsFrom(place, count))
            texts.push_back(row.text);
        return texts;
    }

    /// Where lines begin, found from one end to the other.
    std::vector<std::int64_t> startsDownwards()
    {
        std::vector<std::int64_t> starts;
        for (auto line = window.begin(); line < window.end(); line = lines.endOf(line))
            starts.push_back(line);
        return starts;
    }

    std::vector<std::int64_t> startsUpwards()
    {
        std::vector<std::int64_t> starts;
        for (auto offset = window.end(); offset > window.begin();) {
            offset = lines.startOf(offset - 1);
            starts.insert(starts.begin(), offset);
        }
        return starts;
    }

    FileWindow window;
    ViewedLines lines{window};
    RowPager pager{window, lines};
};

TEST_F(RowPagerTest, longLinesAreWrappedAndLineEndsAreNotShown)
{
    pager.columns = 4;
    hold("abcdef\r\n\nxy\x1b\tz\n");
    EXPECT_THAT(textsFrom({}, 9), ElementsAre(U"abcd", U"ef", U"", U"xy␛", U"\t", U"z"));
    pager.wraps = false;
    EXPECT_THAT(textsFrom({}, 9), ElementsAre(U"abcdef", U"", U"xy␛\tz"));
    pager.widestColumn = 2;
    EXPECT_THAT(textsFrom({}, 1), ElementsAre(U"abc"));
}

TEST_F(RowPagerTest, upIsTheWayBackOfDown)
{
    pager.columns = 7;
    std::string text;
    for (int line = 0; line < 60; ++line)
        text += std::string(static_cast<std::size_t>(line % 23), 'a') + "\n";
    hold(text);
    ViewerPlace const start{};
    auto const total = static_cast<int>(pager.rowsFrom(start, 10'000).size());
    for (int rows = 0; rows < total; ++rows) {
        auto const place = pager.forward(start, rows);
        EXPECT_EQ(pager.back(place, rows), start) << rows;
        EXPECT_EQ(pager.rowsFrom(place, 1).front().place, place);
    }
    EXPECT_EQ(pager.forward(start, total + 5), pager.forward(start, total - 1));
    EXPECT_EQ(pager.back(pager.forward(start, 3), 50), start);
    EXPECT_EQ(pager.rowsFrom(pager.lastPage(10), 99).size(), 10U);
}

TEST_F(RowPagerTest, aLineWithoutAnEndIsCutAtTheSamePlacesFromBothSides)
{
    constexpr auto cut = ViewedLines::cutBytes;
    auto const length = static_cast<std::size_t>(5 * cut + 77);
    std::string korean;
    while (korean.size() < length)
        korean += "한글 ";
    auto mixed = std::string(length, 'x');
    for (auto const at : {cut - 3, cut + 1, 3 * cut - 1, 3 * cut})
        mixed[static_cast<std::size_t>(at)] = '\n';
    for (auto const &bytes : {std::string(length, 'x'), korean, mixed, mixed + "\n\n"}) {
        hold(bytes);
        auto const starts = startsDownwards();
        EXPECT_EQ(startsUpwards(), starts);
        for (std::size_t line = 0; line < starts.size(); ++line) {
            auto const end = line + 1 < starts.size() ? starts[line + 1] : window.end();
            EXPECT_LE(end - starts[line], 3 * cut);
            EXPECT_FALSE(lines.text(starts[line]).contains(U'\uFFFD')) << "a character is torn";
        }
        // The same from another beginning, a little further on.
        auto const later = 2 * cut + 11;
        hold(bytes.substr(static_cast<std::size_t>(later)), later);
        auto const some = startsDownwards();
        for (auto const start : some) {
            if (start > later + 2 * cut)
                EXPECT_THAT(starts, ::testing::Contains(start));
        }
    }
}

TEST_F(RowPagerTest, aPlaceIsFoundAgainWhenTheWindowHasGrown)
{
    pager.columns = 10;
    hold("cdefghijklmn\nxyz\n", 2);
    window.prepend("ab");
    EXPECT_EQ(pager.normalised({2, 10}), (ViewerPlace{0, 10}));
    EXPECT_EQ(pager.rowWith(1), (ViewerPlace{0, 0}));
    EXPECT_EQ(pager.rowWith(12), (ViewerPlace{0, 10}));
    EXPECT_EQ(pager.rowWith(16), (ViewerPlace{15, 0}));
    EXPECT_EQ(pager.normalised({99, 4}), (ViewerPlace{15, 0}));
    EXPECT_EQ(pager.foundAgain({2, 11}), (ViewerPlace{0, 13}));
    EXPECT_EQ(pager.foundAgain({15, 2}), (ViewerPlace{15, 2}));
    EXPECT_EQ(pager.foundAgain({99, 4}), (ViewerPlace{99, 4}));
}

TEST_F(RowPagerTest, whatIsSelectedHasTheLineEndsOfTheFileAndNoOthers)
{
    pager.columns = 2;
    hold("abcdef\nxy\n한글");
    EXPECT_EQ(pager.textBetween({0, 1}, {10, 1}), U"bcdef\nxy\n한");
    EXPECT_EQ(pager.textBetween({0, 2}, {0, 4}), U"cd");
    EXPECT_EQ(pager.textBetween({0, 2}, {0, 2}), U"");
}

TEST_F(RowPagerTest, aHexDumpHasSixteenBytesInARowWhereverItBegins)
{
    lines.mode = ViewerMode::hex;
    pager.columns = 5;
    hold(std::string(40, 'a'), 0x1000 - 8);
    auto const rows = pager.rowsFrom(pager.normalised({0x1000 - 8, 0}), 9);
    ASSERT_EQ(rows.size(), 3U);
    EXPECT_TRUE(rows[0].text.starts_with(U"00000FF8  61"));
    EXPECT_TRUE(rows[1].text.starts_with(U"00001000  61"));
    EXPECT_EQ(rows[2].place.line, 0x1010);
    EXPECT_EQ(pager.back(rows[2].place, 1), rows[1].place);
}

TEST(LineCountsTest, aLineIsFoundFromTheChunkBeforeIt)
{
    LineCounts counts;
    counts.note(0, "a\nbcd"); // line 2 begins in it
    counts.note(5, "e\nf\n");
    counts.note(100, "not what comes next");
    EXPECT_EQ(counts.end().offset, 9);
    EXPECT_EQ(counts.end().linesBefore, 3);
    EXPECT_EQ(counts.before(1).offset, 0);
    EXPECT_EQ(counts.before(2).offset, 0);
    EXPECT_EQ(counts.before(3).offset, 5);
    EXPECT_EQ(counts.before(4).linesBefore, 1);
}

} // namespace
} // namespace tw::test
