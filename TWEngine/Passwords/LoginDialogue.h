#pragma once

#include "TWEngine/Passwords/LoginQuestion.h"

#include <map>
#include <optional>
#include <string>

namespace tw {

/// The course of one login: what ssh has asked, how often, and which answers are to be remembered.
///
/// Threads: none of its own; used by one owner at a time.
class LoginDialogue {
public:
    /// Wrong answers, after which nothing is asked any more: a host may lock an account after a few more.
    static constexpr int mostRefusals = 3;

    /// A host can ask without end.
    static constexpr int mostQuestions = 20;

    explicit LoginDialogue(std::string toHost) : host(std::move(toHost)) {}

    /// Who needs to know. The password of a host in between is not the password of the host.
    enum class Asker { host, hostInBetween };

    /// The question as it is put to the user, with host and attempt. Asking for the same once more means that the
    /// answer before was refused. Nothing if no further question may be put.
    std::optional<LoginQuestion> ask(LoginQuestion question, Asker asker);

    /// Notes what a question, as `ask` returned it, was answered with.
    void answer(LoginQuestion const &question, Asker asker, LoginAnswer const &given);

    /// Accounts of the key store, and what is to be stored there.
    using Remembered = std::map<std::string, SecretText>;

    /// The answers that the user wants to be remembered, without those that were refused. Moved out.
    Remembered takeRemembered() { return std::exchange(remembered, {}); }

    /// The account under which the answer to a question is kept.
    static std::string accountOf(LoginQuestion const &question);

private:
    std::string const host;
    std::map<std::string, int> answers; ///< by what was asked for
    int questions = 0;
    int refusals = 0;
    Remembered remembered;
};

} // namespace tw
