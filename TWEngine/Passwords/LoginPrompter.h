#pragma once

#include "TWCore/Async/Task.h"
#include "TWEngine/Passwords/LoginQuestion.h"

#include <optional>

namespace tw {

/// Puts the questions of a login to the user.
///
/// Threads: called on the main context.
/// Cancellation: takes the question away.
class LoginPrompter {
public:
    virtual ~LoginPrompter() = default;

    /// Nothing if the user refuses to answer.
    virtual Task<std::optional<LoginAnswer>> ask(LoginQuestion question) = 0;
};

} // namespace tw
