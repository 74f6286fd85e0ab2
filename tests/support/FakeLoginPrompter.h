#pragma once

#include "TWEngine/Passwords/LoginPrompter.h"
#include "TWEngine/Runtime/Completion.h"

#include <string>
#include <utility>
#include <vector>

namespace tw::test {

/// A user who answers when the test says so. For one thread.
class FakeLoginPrompter final : public LoginPrompter {
public:
    struct Asked {
        LoginQuestion question;
        std::shared_ptr<Completion<std::optional<LoginAnswer>>> end;
        bool isOpen = true;

        void answer(std::string const &text, bool remember = false) const
        {
            end->succeed(LoginAnswer{.text = SecretText(text), .remember = remember});
        }

        void refuse() const { end->succeed(std::nullopt); }

        void closeWindow() const { end->fail(std::make_exception_ptr(Cancelled())); }
    };

    Task<std::optional<LoginAnswer>> ask(LoginQuestion question) override
    {
        auto const open = std::make_shared<Asked>(
            Asked{std::move(question), std::make_shared<Completion<std::optional<LoginAnswer>>>()});
        asked.push_back(open);
        return wait(open);
    }

    std::vector<std::shared_ptr<Asked>> asked; ///< so far, in their order

private:
    static Task<std::optional<LoginAnswer>> wait(std::shared_ptr<Asked> open)
    {
        auto outcome = co_await outcomeOf(Completion<std::optional<LoginAnswer>>::wait(open->end));
        open->isOpen = false;
        co_return outcome.take();
    }
};

} // namespace tw::test
