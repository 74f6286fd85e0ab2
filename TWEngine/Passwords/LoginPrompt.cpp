#include "TWEngine/Passwords/LoginPrompt.h"

#include "TWCore/Model/DisplayText.h"
#include "TWCore/Model/Trimmed.h"
#include "TWEngine/Passwords/AskpassPrompt.h"

#include <algorithm>

namespace tw::LoginPrompt {

namespace {

using Kind = LoginQuestion::Kind;

/// Cuts a text between two characters.
void cutTo(std::size_t most, std::string &text)
{
    if (text.size() <= most)
        return;
    auto const isInsideCharacter = [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; };
    while (most > 0 && isInsideCharacter(text[most]))
        --most;
    text.resize(most);
}

/// The words as they are shown: lines of text in which nothing is hidden.
std::string cleaned(std::string_view prompt)
{
    std::string text;
    auto rest = trimmed(prompt).substr(0, longest);
    while (!rest.empty()) {
        auto const end = std::min(rest.find('\n'), rest.size());
        std::string line(rest.substr(0, end));
        std::ranges::replace(line, '\t', ' ');
        text += withNothingHidden(trimmed(line));
        text += '\n';
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    cutTo(longest, text);
    text.erase(text.find_last_not_of('\n') + 1);
    return text;
}

/// What is between `before` and `after`; empty if the text has another form.
std::string_view between(std::string_view text, std::string_view before, std::string_view after)
{
    if (text.size() <= before.size() + after.size() || !text.starts_with(before) || !text.ends_with(after))
        return {};
    return text.substr(before.size(), text.size() - before.size() - after.size());
}

bool isHostKey(std::string_view prompt)
{
    return prompt.starts_with("The authenticity of host '");
}

/// ssh puts a yes or a no to its own questions at their end.
bool isYesOrNo(std::string_view prompt)
{
    return !prompt.starts_with('(') && (prompt.ends_with("(yes/no)?") || prompt.ends_with("(yes/no):"));
}

/// From a line "ED25519 key fingerprint is SHA256:….": the versions differ in the colon and in the stop.
void readFingerprint(LoginQuestion &question)
{
    constexpr std::string_view words = " key fingerprint is";
    std::string_view const prompt = question.prompt;
    auto const at = prompt.find(words);
    if (at == std::string_view::npos)
        return;
    auto const lineStart = prompt.rfind('\n', at) + 1; // 0 if there is none
    question.keyType = prompt.substr(lineStart, at - lineStart);
    auto rest = prompt.substr(at + words.size());
    rest = rest.substr(0, rest.find('\n'));
    if (rest.starts_with(':'))
        rest.remove_prefix(1);
    if (rest.ends_with('.'))
        rest.remove_suffix(1);
    question.fingerprint = trimmed(rest);
}

/// ssh cuts long names off. A name that is cut, or that depends on the folder, may stand for another key.
bool isWhole(std::string_view keyPath)
{
    constexpr std::size_t longestName = 100;
    return keyPath.starts_with('/') && keyPath.size() < longestName;
}

} // namespace

LoginQuestion read(std::string_view prompt, std::string_view hint)
{
    LoginQuestion question;
    question.prompt = cleaned(prompt);
    auto const words = trimmed(prompt);
    if (hint == "none") {
        question.kind = Kind::notice;
    } else if (hint == "confirm") {
        question.kind = Kind::confirm;
    } else if (isHostKey(words)) {
        question.kind = Kind::hostKey;
        readFingerprint(question);
    } else if (auto const keyPath = between(words, "Enter passphrase for key '", "':"); !keyPath.empty()) {
        question.kind = Kind::passphrase;
        question.canBeRemembered = isWhole(keyPath);
        question.keyPath = keyPath;
    } else if (AskpassPrompt::asksForPassword(prompt)) {
        question.kind = Kind::password;
        question.canBeRemembered = true;
    } else if (isYesOrNo(words)) {
        question.kind = Kind::confirm;
    }
    return question;
}

} // namespace tw::LoginPrompt
