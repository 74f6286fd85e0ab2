#pragma once

#include "TWEngine/Passwords/LoginDesk.h"

#include <vector>

namespace tw::test {

/// A desk without users: the test reports what happens at it. For one strand.
class FakeLoginDesk final : public LoginDesk {
public:
    /// What has become of one login.
    struct Begun {
        std::string host;
        Reports reports;
        bool hasSucceeded = false;
        bool hasEnded = false;
    };

    Task<std::unique_ptr<Login>> begin(std::string host, Reports reports) override
    {
        auto const login = std::make_shared<Begun>(std::move(host), std::move(reports));
        logins.push_back(login);
        if (asksAtOnce) {
            login->reports.questionOpened();
            login->reports.questionClosed();
        }
        return answer(environment, login);
    }

    Environment environment{{"TW_ASKPASS_SOCKET", "/nowhere"}};
    bool asksAtOnce = false;                    ///< the user is asked, and answers, before the client starts
    std::vector<std::shared_ptr<Begun>> logins; ///< in their order

private:
    class FakeLogin final : public Login {
    public:
        FakeLogin(Environment added, std::shared_ptr<Begun> begun)
            : variables(std::move(added)), login(std::move(begun))
        {
        }

        ~FakeLogin() override { login->hasEnded = true; }

        Environment const &environment() const override { return variables; }

        void succeed() override { login->hasSucceeded = true; }

    private:
        Environment const variables;
        std::shared_ptr<Begun> const login;
    };

    static Task<std::unique_ptr<Login>> answer(Environment variables, std::shared_ptr<Begun> login)
    {
        co_return std::make_unique<FakeLogin>(std::move(variables), std::move(login));
    }
};

} // namespace tw::test
