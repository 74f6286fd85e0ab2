// What is looked for in a file, and in which order its parts are searched.

#include "TWCore/Shell/ByteExpression.h"
#include "Tarnwick/Viewer/SearchCourse.h"
#include "Tarnwick/Viewer/SearchWish.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

using FileSearch::Part;
using FileSearch::Sought;
using FileSearch::Which;
using ::testing::ElementsAre;
using TextDecoding::Encoding;

/// The bytes of what is looked for; what is wrong with it otherwise.
std::string soughtBytes(std::string typed, ViewerMode mode, Encoding encoding)
{
    auto const sought = SearchWish{.typed = std::move(typed)}.in(mode, encoding);
    return sought ? sought->pattern : sought.error().english();
}

/// What an expression finds first in a text of that encoding.
std::string foundIn(std::string_view text, SearchWish const &wish, Encoding encoding)
{
    auto const sought = wish.in(ViewerMode::text, encoding);
    if (!sought)
        return sought.error().english();
    auto const bytes = *TextDecoding::encode(text, encoding);
    std::string found = "nothing";
    ByteExpression::eachMatch(sought->pattern, bytes, [&](ByteExpression::Match match) {
        found = TextDecoding::decode(std::string_view(bytes).substr(match.from, match.to - match.from), encoding);
        return false;
    });
    return found;
}

TEST(SearchWishTest, aTextIsLookedForInTheBytesOfTheFile)
{
    EXPECT_EQ(soughtBytes("한", ViewerMode::text, Encoding::utf8), "한");
    EXPECT_EQ(soughtBytes("한", ViewerMode::text, Encoding::cp949), "\xc7\xd1");
    EXPECT_EQ(soughtBytes("한", ViewerMode::text, Encoding::latin1), "ISO-8859-1 has no such text");
    EXPECT_EQ(soughtBytes("48 656C", ViewerMode::hex, Encoding::utf8), "Hel");
    EXPECT_EQ(soughtBytes("48", ViewerMode::text, Encoding::utf8), "48");
    EXPECT_EQ(soughtBytes("4", ViewerMode::hex, Encoding::utf8), "4");
    EXPECT_EQ(soughtBytes(" ", ViewerMode::hex, Encoding::utf8), "UTF-8 has no such text");
    EXPECT_EQ(soughtBytes("", ViewerMode::text, Encoding::utf8), "UTF-8 has no such text");
}

TEST(SearchWishTest, whereCaseIsIgnoredEveryFormOfALetterIsFound)
{
    for (auto const encoding : {Encoding::utf8, Encoding::latin1, Encoding::gbk, Encoding::utf16le}) {
        auto const found = [encoding](std::string_view text, std::string typed) {
            return foundIn(text, {.typed = std::move(typed), .ignoresCase = true}, encoding);
        };
        EXPECT_EQ(found("x GrÜn y", "grün"), "GrÜn");
        EXPECT_EQ(found("a.B[c", "A.b["), "a.B[") << "what it would mean in an expression does not count";
        EXPECT_EQ(found("axb", "a.b"), "nothing");
    }
    EXPECT_EQ(foundIn("ã¤", {.typed = "ä", .ignoresCase = true}, Encoding::utf8), "nothing");
}

TEST(SearchWishTest, anExpressionIsOfBytesAndACharacterStaysWhole)
{
    auto const found = [](std::string_view text, std::string typed, bool ignoresCase = false) {
        return foundIn(text, {.typed = std::move(typed), .isExpression = true, .ignoresCase = ignoresCase},
                       Encoding::utf8);
    };
    EXPECT_EQ(found("xäääy", "ä+"), "äää");
    EXPECT_EQ(found("xÄäy", "ä+", true), "Ää");
    EXPECT_EQ(found("one\ntwo", "^t.o$"), "two");
    EXPECT_EQ(found("a-Ü", "[a-z]-\\ü", true), "a-Ü");
    EXPECT_EQ(found("one\ntwo", "e\\st"), "nothing") << "a match lies in one line";
    EXPECT_EQ(found("x", "("), "this is not a regular expression");
    EXPECT_EQ(found("x", "[ä]"), "a set in a regular expression can only have ASCII characters");
    EXPECT_EQ(foundIn("x", {.typed = "x", .isExpression = true}, Encoding::utf16be),
              "regular expressions are not searched for in UTF-16BE");
}

TEST(ByteExpressionTest, countlessWaysToMatchEndInWords)
{
    auto const text = std::string(5000, 'a') + "b";
    EXPECT_THROW(ByteExpression::eachMatch("(a+)+$", text, [](auto) { return true; }), ByteExpression::TooSlow);
    EXPECT_THROW(ByteExpression::eachMatch("(?:a|a|b)*c", text, [](auto) { return true; }), ByteExpression::TooSlow);
}

std::vector<Part> partsOf(SearchCourse course)
{
    std::vector<Part> parts;
    while (auto const part = course.next())
        parts.push_back(*part);
    return parts;
}

TEST(SearchCourseTest, aSearchGoesRoundTheFileInSteps)
{
    constexpr auto step = SearchCourse::bytesOfStep;
    Sought const bytes{.pattern = "abc"};
    EXPECT_THAT(partsOf({bytes, Which::first, 100, 2 * step}),
                ElementsAre(Part{100, 100 + step + 2}, Part{100 + step, 2 * step}, Part{0, 102}));
    EXPECT_THAT(partsOf({bytes, Which::last, 100, step}), ElementsAre(Part{0, 102}, Part{100, step}));
    EXPECT_THAT(partsOf({bytes, Which::first, 50, 50}), ElementsAre(Part{0, 50}));
    EXPECT_THAT(partsOf({bytes, Which::last, 0, 50}), ElementsAre(Part{0, 50}));
    EXPECT_THAT(partsOf({bytes, Which::first, 0, 0}), ElementsAre());
    Sought const expression{.pattern = "a+", .kind = Sought::Kind::expression};
    constexpr auto half = SearchCourse::expressionBytesOfStep;
    EXPECT_THAT(partsOf({expression, Which::first, 0, half + 1}), ElementsAre(Part{0, half}, Part{half, half + 1}));
}

TEST(SearchCourseTest, aStepIsAsLongAsTheTimeOfTheOneBeforeAllows)
{
    using namespace std::chrono_literals;
    constexpr auto first = SearchCourse::bytesOfStep;
    constexpr std::int64_t size = std::int64_t(1) << 40;

    struct Case {
        std::chrono::nanoseconds time;
        std::int64_t next;
    };

    for (auto const &[time, length] :
         {Case{1s, 4 * first}, Case{100s, first}, Case{0s, SearchCourse::mostBytesOfStep}}) {
        SearchCourse course({.pattern = "a"}, Which::first, 0, size);
        course.next();
        course.took(time, 0);
        EXPECT_EQ(course.next(), (Part{first, first + length}));
    }
}

TEST(SearchCourseTest, theRestOfAFileMayBeSearchedAtOnce)
{
    constexpr auto step = SearchCourse::bytesOfStep;
    Sought const bytes{.pattern = "abc"};
    SearchCourse course(bytes, Which::first, 100, 3 * step);
    course.next();
    EXPECT_EQ(course.farthest(), 3 * step);
    course.took(std::chrono::seconds(1), 3 * step);
    EXPECT_EQ(course.next(), (Part{0, 102}));
    EXPECT_EQ(course.bytesSearched(), 3 * step - 100);
    EXPECT_EQ(course.farthest(), 0) << "the file does not end there";

    SearchCourse other(bytes, Which::first, 100, 3 * step);
    other.took(std::chrono::seconds(1), other.next().value().to);
    EXPECT_EQ(other.next().value().from, 100 + step);
    EXPECT_EQ(other.farthest(), 0) << "the host cannot";
}

TEST(SearchCourseTest, onlyARestThatIsNotTooLongIsSearchedAtOnceForBytesAndDownwards)
{
    auto const farthest = [](SearchCourse course) {
        course.next();
        return course.farthest();
    };
    constexpr auto most = SearchCourse::mostBytesAtOnce;
    EXPECT_EQ(farthest({{.pattern = "a"}, Which::first, 0, most}), most);
    EXPECT_EQ(farthest({{.pattern = "a"}, Which::first, 1, most + 1}), most + 1);
    EXPECT_EQ(farthest({{.pattern = "a"}, Which::first, 0, most + 1}), 0);
    EXPECT_EQ(farthest({{.pattern = "a"}, Which::last, most, most}), 0);
    EXPECT_EQ(farthest({{.pattern = "a", .kind = Sought::Kind::expression}, Which::first, 0, most}), 0);
}

TEST(SearchCourseTest, itSaysHowFarItIsAndThatItHasWrapped)
{
    SearchCourse course({.pattern = "abc"}, Which::first, 60, 100);
    course.next();
    EXPECT_EQ(course.bytesSearched(), 0);
    EXPECT_FALSE(course.hasWrapped());
    course.next();
    EXPECT_EQ(course.bytesSearched(), 40);
    EXPECT_TRUE(course.hasWrapped());
    EXPECT_FALSE(course.next());
}

} // namespace
} // namespace tw::test
