#pragma once

#include "TWEngine/Runtime/Completion.h"
#include "Tarnwick/Connections/Connections.h"

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace tw::test {

/// Connections that succeed or fail at the command of the test.
///
/// Threads: one.
class FakeConnections final : public Connections {
public:
    struct Request {
        std::string host;
        std::shared_ptr<Completion<std::shared_ptr<Browser>>> answer;
        bool mayAsk = false; ///< the attempt may put questions to the user
        std::stop_token caller = {};

        bool hasCallerGone() const { return caller.stop_requested(); }
    };

    explicit FakeConnections(std::shared_ptr<Browser> browser) : localBrowser(std::move(browser)) {}

    std::shared_ptr<Browser> local() override { return localBrowser; }

    Task<std::shared_ptr<Browser>> ssh(std::string host) override
    {
        return connect(this, note({.host = std::move(host), .answer = {}}));
    }

    Task<std::shared_ptr<Browser>> logIn(std::string host) override
    {
        return connect(this, note({.host = std::move(host), .answer = {}, .mayAsk = true}));
    }

    Task<std::shared_ptr<Browser>> reach(std::string host) override
    {
        auto const browser = browsers.find(host);
        if (browser == browsers.end())
            throw std::runtime_error("nobody knows " + host);
        co_return browser->second;
    }

    Task<KnownConnection> known(std::string host) override
    {
        co_return KnownConnection{browsers.at(host), up.contains(host)};
    }

    Task<std::vector<std::string>> hosts() override
    {
        auto const answer = std::make_shared<HostsAnswer>();
        readings.push_back(answer);
        if (!isConfigSlow)
            answer->succeed(saved);
        return HostsAnswer::wait(answer);
    }

    using HostsAnswer = Completion<std::vector<std::string>>;

    std::vector<Request> waiting;
    std::map<std::string, std::shared_ptr<Browser>> browsers; ///< of hosts, also of those that are not connected

    std::set<std::string> up;

    std::vector<std::string> saved;
    bool isConfigSlow = false; ///< reading the saved hosts waits for the test
    std::vector<std::shared_ptr<HostsAnswer>> readings;

private:
    using Answer = Completion<std::shared_ptr<Browser>>;

    std::shared_ptr<Answer> note(Request request)
    {
        request.answer = std::make_shared<Answer>();
        waiting.push_back(std::move(request));
        return waiting.back().answer;
    }

    static Task<std::shared_ptr<Browser>> connect(FakeConnections *self, std::shared_ptr<Answer> answer)
    {
        auto const context = co_await currentContext();
        auto const own = std::ranges::find(self->waiting, answer, &Request::answer);
        if (own != self->waiting.end())
            own->caller = context.stop;
        auto browser = co_await Answer::wait(answer);
        co_return browser;
    }

    std::shared_ptr<Browser> localBrowser;
};

} // namespace tw::test
