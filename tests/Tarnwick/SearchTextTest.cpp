#include "Tarnwick/Table/SearchText.h"

#include <gtest/gtest.h>

namespace tw::test {
namespace {

using Step = SearchText::Step;

TEST(SearchTextTest, textIsInsertedAtTheCaret)
{
    SearchText search;
    search.insert("ac");
    search.moveCaret(Step::back);
    search.insert("b");
    EXPECT_EQ(search.committed(), "abc");
    EXPECT_EQ(search.shown(), "ab|c");
}

TEST(SearchTextTest, whatIsComposedStandsAtTheCaretAndIsNotCommitted)
{
    SearchText search;
    search.insert("ab");
    search.moveCaret(Step::back);
    search.compose("ㅎ");
    EXPECT_EQ(search.committed(), "ab");
    EXPECT_EQ(search.shown(), "aㅎ|b");
    search.commitComposing();
    EXPECT_EQ(search.committed(), "aㅎb");
    EXPECT_EQ(search.composing(), "");
}

TEST(SearchTextTest, theCaretStaysInTheText)
{
    SearchText search;
    search.moveCaret(Step::back);
    search.moveCaret(Step::forward);
    EXPECT_EQ(search.shown(), "|");
    search.insert("a");
    search.moveCaret(Step::forward);
    EXPECT_EQ(search.shown(), "a|");
    search.moveCaret(Step::back);
    search.moveCaret(Step::back);
    EXPECT_EQ(search.shown(), "|a");
    EXPECT_FALSE(search.deleteBeforeCaret());
}

TEST(SearchTextTest, aCharacterIsWhatAReaderCounts)
{
    for (std::string const character : {"ä", "한", "e\xCC\x81", "👩‍👧", "🇩🇪"}) {
        SearchText search;
        search.insert("x" + character + "y");
        search.moveCaret(Step::back);
        EXPECT_TRUE(search.deleteBeforeCaret());
        EXPECT_EQ(search.shown(), "x|y") << character;
    }
}

TEST(SearchTextTest, controlCharactersAreNotTyped)
{
    SearchText search;
    search.insert(std::string("a\n\x7F\0b", 5));
    search.compose("\tc");
    EXPECT_EQ(search.shown(), "abc|");
}

TEST(SearchTextTest, aHeldKeyMakesItOnlySoLong)
{
    SearchText search;
    for (std::size_t i = 0; i < 2 * SearchText::longestBytes; ++i)
        search.insert("x");
    EXPECT_EQ(search.committed().size(), SearchText::longestBytes);
    search.insert("한");
    search.compose(std::string(SearchText::longestBytes + 1, 'x'));
    EXPECT_EQ(search.committed().size(), SearchText::longestBytes);
    EXPECT_EQ(search.composing(), "");
}

TEST(SearchTextTest, clearedItIsEmptyWithItsCaret)
{
    SearchText search;
    EXPECT_TRUE(search.isEmpty());
    search.insert("ab");
    search.compose("c");
    EXPECT_FALSE(search.isEmpty());
    search.clear();
    EXPECT_TRUE(search.isEmpty());
    EXPECT_EQ(search.shown(), "|");
}

} // namespace
} // namespace tw::test
