#include "TWEngine/Passwords/LoginDialogue.h"

#include <utility>

namespace tw {

namespace {

using Kind = LoginQuestion::Kind;

/// What is asked for, in whatever words. A host may ask for its password in words of its own first, and ssh then asks
/// for the same password in other words. Empty for what can be asked again after any answer.
std::string topicOf(LoginQuestion const &question, LoginDialogue::Asker asker)
{
    switch (question.kind) {
    case Kind::password:
        return asker == LoginDialogue::Asker::host ? "password" : "password in between: " + question.prompt;
    case Kind::passphrase:
        return "passphrase: " + question.keyPath;
    case Kind::other:
        return "other: " + question.prompt;
    case Kind::hostKey:
    case Kind::confirm:
    case Kind::archive:
    case Kind::notice:
        return {};
    }
    std::unreachable();
}

} // namespace

std::optional<LoginQuestion> LoginDialogue::ask(LoginQuestion question, Asker asker)
{
    if (++questions > mostQuestions)
        return std::nullopt;
    question.host = host;
    question.canBeRemembered = question.canBeRemembered && (asker == Asker::host || question.kind == Kind::passphrase);
    if (auto const answered = answers.find(topicOf(question, asker)); answered != answers.end()) {
        question.attempt = answered->second + 1;
        if (question.canBeRemembered)
            remembered.erase(accountOf(question));
        if (++refusals >= mostRefusals)
            return std::nullopt;
    }
    return question;
}

void LoginDialogue::answer(LoginQuestion const &question, Asker asker, LoginAnswer const &given)
{
    if (auto const topic = topicOf(question, asker); !topic.empty())
        ++answers[topic];
    if (given.remember && question.canBeRemembered)
        remembered.insert_or_assign(accountOf(question), SecretText(given.text.text()));
}

std::string LoginDialogue::accountOf(LoginQuestion const &question)
{
    return question.kind == Kind::passphrase ? question.keyPath : question.host;
}

} // namespace tw
