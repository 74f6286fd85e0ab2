#include "TWCore/Shell/ShellDialect.h"
#include "TWCore/Shell/ShellLiteral.h"
#include "tests/support/ChildProcessTest.h"
#include "tests/support/DiskRows.h"

#include <gtest/gtest.h>

#include <random>

namespace tw::test {
namespace {

using enum ShellDialect;

/// Texts of all bytes but NUL: a few of each sort that shells have rules for, and thousands at random.
std::vector<std::string> hostileTexts()
{
    auto texts = hostileNames();
    texts.insert(texts.end(), {"",   "'",  "\\'",    "'\\''", "\n",           "\n\n",  "a\n\n",       "/",
                               "$",  "`",  "\"",     "\\",    "\\\\",         "%",     "%%",          "!",
                               "!!", "$'", "x\x01y", "\x7F",  "\x81\x82\x88", "\\141", "\xE2\x80\x99"});
    std::mt19937 random(20261121);
    std::string const special = "'\"\\$`!%\n\t *?[]{}~#&;|<>()-=\x01\x7F\x81\x88\xFF";
    for (int index = 0; index < 4000; ++index) {
        std::string text;
        for (auto length = random() % 24; length > 0; --length)
            text += random() % 2 == 0 ? special[random() % special.size()] : static_cast<char>(1 + random() % 255);
        texts.push_back(std::move(text));
    }
    return texts;
}

std::string withoutLineEndsBehind(std::string text)
{
    while (text.ends_with('\n'))
        text.pop_back();
    return text;
}

class ShellQuotingTest : public ChildProcessTest, public ::testing::WithParamInterface<std::string> {
protected:
    /// What the shell under test makes of these words.
    std::vector<std::string> echoed(std::vector<std::string> const &words)
    {
        std::string script;
        for (auto const &word : words)
            script += "printf '%s\\0' " + word + "\n";
        auto const shell = start({.program = GetParam(), .input = PipeEnd{}, .output = PipeEnd{}});
        auto const output = loop.start(restOf(shell, ChildOutput::standard));
        loop.run(shell->write(std::move(script)));
        shell->closeInput();
        loop.runUntil([&] { return output.isDone(); });
        EXPECT_EQ(wait(shell), exited(0));
        return piecesOf(output.value());
    }

    static std::vector<std::string> piecesOf(std::string const &text)
    {
        std::vector<std::string> pieces;
        for (std::size_t from = 0; from < text.size();) {
            auto const end = text.find('\0', from);
            pieces.push_back(text.substr(from, end - from));
            from = end + 1;
        }
        return pieces;
    }
};

INSTANTIATE_TEST_SUITE_P(Shells, ShellQuotingTest, ::testing::Values("sh", "dash", "bash"),
                         [](auto const &shell) { return shell.param; });

TEST_P(ShellQuotingTest, aQuotedTextIsOneWordOfTheSameBytes)
{
    auto const texts = hostileTexts();
    std::vector<std::string> words;
    for (auto const &text : texts)
        words.push_back(quote(posix, text));
    EXPECT_EQ(echoed(words), texts);
}

TEST_P(ShellQuotingTest, aLiteralIsOneWordOfTheSameBytesButForLineEndsBehindIt)
{
    auto texts = hostileTexts();
    std::vector<std::string> words;
    for (auto &text : texts) {
        words.push_back(ShellLiteral::posix(text));
        for (auto const byte : words.back())
            ASSERT_TRUE(byte >= ' ' && byte <= '~');
        text = withoutLineEndsBehind(text);
    }
    EXPECT_EQ(echoed(words), texts);
}

} // namespace
} // namespace tw::test
