#include "Tarnwick/Table/NamePattern.h"

#include <gtest/gtest.h>

#include <clocale>
#include <random>
#include <vector>

#include <fnmatch.h>

namespace tw::test {
namespace {

/// The locale of this thread's library calls, for as long as it lives.
class Locale {
public:
    explicit Locale(char const *name) : before(std::setlocale(LC_ALL, nullptr))
    {
        EXPECT_NE(std::setlocale(LC_ALL, name), nullptr) << name;
    }

    Locale(Locale const &) = delete;
    Locale &operator=(Locale const &) = delete;

    ~Locale() { std::setlocale(LC_ALL, before.c_str()); }

private:
    std::string const before;
};

std::vector<std::string> const &hardPatterns()
{
    static std::vector<std::string> const patterns{"",
                                                   "*",
                                                   "**",
                                                   "?",
                                                   "??",
                                                   "?*",
                                                   "*?",
                                                   "*?*?",
                                                   "a",
                                                   "A",
                                                   "a*",
                                                   "*a",
                                                   "*a*",
                                                   "a*a",
                                                   "ab*ba",
                                                   "*.*",
                                                   "*.txt",
                                                   "*?.txt",
                                                   "*.t?t",
                                                   "*[a-f]?",
                                                   "[a-f]*",
                                                   "[!a-f]*",
                                                   "[^a-f]*",
                                                   "*[!a]",
                                                   "[]a]*",
                                                   "[!]a]*",
                                                   "[a-]*",
                                                   "[-a]*",
                                                   "[z-a]*",
                                                   "[a",
                                                   "[",
                                                   "[]",
                                                   "[!",
                                                   "[!]",
                                                   "[a-",
                                                   "a[",
                                                   "*[*",
                                                   "*[",
                                                   "[[]*",
                                                   "[[:alpha:]]",
                                                   "[[:digit:]]*",
                                                   "[[=e=]]*",
                                                   "[[.a.]]*",
                                                   "[[:nothing:]]",
                                                   "[\\]a]*",
                                                   "[a\\]*",
                                                   "\\*",
                                                   "\\?",
                                                   "\\[a]",
                                                   "a\\",
                                                   "\\",
                                                   "\\\\",
                                                   "\\a*",
                                                   "*\\",
                                                   "\xC3\xA9",
                                                   "?\xC3\xA9?",
                                                   "*\xC3\xA9",
                                                   "[\xC3\xA9]",
                                                   "[!\xC3\xA9]*",
                                                   "[\xC3\xA0-\xC3\xBF]*",
                                                   "*[\xEA\xB0\x80-\xED\x9E\xA3]*",
                                                   "?\xED\x95\x9C",
                                                   "\xC3",
                                                   "?\xA9",
                                                   "*\xA9",
                                                   "[\xC3]*",
                                                   "?[\xFF]",
                                                   "*\xFF*",
                                                   "[a-zA-Z]*[0-9]",
                                                   "*a*b*c",
                                                   "*ab*?c",
                                                   "*[ab]*[bc]?",
                                                   "?*?*?",
                                                   "a?*[!b]c*",
                                                   "[a-c][a-c]",
                                                   "[.]*",
                                                   "[!.]*",
                                                   "[,;]",
                                                   "[*]",
                                                   "[?]*",
                                                   "*[ -~]",
                                                   "*[!-~]"};
    return patterns;
}

std::vector<std::string> const &hardNames()
{
    static std::vector<std::string> const names{"a",
                                                "b",
                                                "A",
                                                "ab",
                                                "aba",
                                                "abba",
                                                "abc",
                                                ".",
                                                "..",
                                                ".txt",
                                                "a.txt",
                                                "a.TXT",
                                                "a.tat",
                                                "*",
                                                "?",
                                                "[",
                                                "]",
                                                "[a",
                                                "[]",
                                                "[!",
                                                "-",
                                                "a-",
                                                "\\",
                                                "a\\",
                                                "\\*",
                                                "!",
                                                "^",
                                                "9",
                                                "a9",
                                                "e",
                                                "\xC3\xA9",
                                                "e\xCC\x81",
                                                "\xC3\xA9t\xC3\xA9",
                                                "x\xC3\xA9y",
                                                "\xED\x95\x9C",
                                                "a\xED\x95\x9C",
                                                "\xED\x95\x9C\xEA\xB8\x80",
                                                "\xF0\x9F\x98\x80",
                                                "\xF0\x9F\x98\x80"
                                                "a",
                                                "\xC3",
                                                "\xA9",
                                                "a\xA9",
                                                "\xFF",
                                                "a\xFF",
                                                "\xFF\xFE.txt",
                                                "\xED\xA0\x80",
                                                "\xC0\x80",
                                                "\xC3\xA9\xFF",
                                                "aXbXc",
                                                "aabbcc",
                                                "abcabc",
                                                "cab",
                                                "a b",
                                                "a,b",
                                                ";",
                                                ":",
                                                "=",
                                                "digit",
                                                "0"};
    return names;
}

/// Names and patterns of few signs, so that many of them meet.
std::string someOf(std::vector<std::string> const &signs, std::mt19937 &random)
{
    std::string text;
    auto const length = std::uniform_int_distribution<int>(0, 7)(random);
    for (int i = 0; i < length; ++i)
        text += signs[std::uniform_int_distribution<std::size_t>(0, signs.size() - 1)(random)];
    return text;
}

void expectWhatFnmatchSays(std::string const &pattern, std::vector<std::string> const &names)
{
    NamePattern const compiled(pattern);
    for (auto const &name : names)
        ASSERT_EQ(compiled.matches(name), fnmatch(pattern.c_str(), name.c_str(), 0) == 0)
            << "pattern <" << pattern << "> name <" << name << '>';
}

class NamePatternTest : public testing::TestWithParam<char const *> {
protected:
    Locale const locale{GetParam()};
};

TEST_P(NamePatternTest, hardCasesAreMatchedAsFnmatchDoes)
{
    for (auto const &pattern : hardPatterns())
        expectWhatFnmatchSays(pattern, hardNames());
}

TEST_P(NamePatternTest, manySmallCasesAreMatchedAsFnmatchDoes)
{
    std::mt19937 random(1);
    std::vector<std::string> const patternSigns{"*",    "*",     "?",        "a",   "b",           "c", "[ab]",
                                                "[!a]", "[a-c]", "\xC3\xA9", "\\a", "[\xC3\xA9z]", "[", "]"};
    std::vector<std::string> const nameSigns{"a", "a", "b", "c", "\xC3\xA9", "\xED\x95\x9C", "[", "]", "\xFF"};
    for (int round = 0; round < 3'000; ++round) {
        std::vector<std::string> names(20);
        for (auto &name : names)
            name = someOf(nameSigns, random);
        expectWhatFnmatchSays(someOf(patternSigns, random), names);
    }
}

INSTANTIATE_TEST_SUITE_P(Locales, NamePatternTest, testing::Values("C.UTF-8", "C"),
                         [](auto const &info) { return info.param == std::string("C") ? "bytes" : "letters"; });

TEST(NamePatternTimeTest, manyStarsTakeNoTimeThatGrowsWithTheirNumber)
{
    std::string pattern;
    for (int i = 0; i < 100; ++i)
        pattern += "*?a[b]";
    EXPECT_FALSE(NamePattern(pattern + "x").matches(std::string(255, 'a')));
}

} // namespace
} // namespace tw::test
