#include "TWEngine/Passwords/AskpassPrompt.h"

#include "TWCore/Model/LowerCased.h"
#include "TWCore/Model/Trimmed.h"

#include <string>

namespace tw::AskpassPrompt {

namespace {

bool isOneWord(std::string_view text)
{
    return !text.empty() && text.find_first_of(" \t\r\n") == std::string_view::npos;
}

/// ssh puts "(user@host) " before what a host says, so that nobody takes it for its own words.
std::string_view withoutOrigin(std::string_view prompt)
{
    if (!prompt.starts_with('('))
        return prompt;
    auto const end = prompt.find(") ");
    if (end == std::string_view::npos || !isOneWord(prompt.substr(1, end - 1)))
        return prompt;
    return prompt.substr(end + 2);
}

} // namespace

bool asksForPassword(std::string_view prompt)
{
    constexpr std::string_view possessive = "'s password";
    constexpr std::string_view forWhom = "password for ";
    auto const lower = lowerCased(trimmed(withoutOrigin(prompt)));
    std::string_view question = lower;
    if (!question.ends_with(':'))
        return false;
    question = trimmed(question.substr(0, question.size() - 1));
    if (question == "password")
        return true;
    if (question.ends_with(possessive))
        return isOneWord(question.substr(0, question.size() - possessive.size()));
    return question.starts_with(forWhom) && isOneWord(question.substr(forWhom.size()));
}

} // namespace tw::AskpassPrompt
