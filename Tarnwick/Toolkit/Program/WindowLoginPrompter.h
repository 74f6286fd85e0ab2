#pragma once

#include "TWEngine/Passwords/LoginPrompter.h"

#include <memory>

namespace tw {

/// Puts the questions of logins to the user over the window of the program, once there is one.
///
/// Threads: main context only.
class WindowLoginPrompter final : public LoginPrompter {
public:
    void askOver(std::shared_ptr<LoginPrompter> const &newWindow) { window = newWindow; }

    Task<std::optional<LoginAnswer>> ask(LoginQuestion question) override
    {
        return askIn(window.lock(), std::move(question));
    }

private:
    /// Nobody answers where there is no window.
    static Task<std::optional<LoginAnswer>> askIn(std::shared_ptr<LoginPrompter> open, LoginQuestion question)
    {
        if (!open)
            co_return std::nullopt;
        auto answer = co_await open->ask(std::move(question));
        co_return answer;
    }

    std::weak_ptr<LoginPrompter> window;
};

} // namespace tw
