#pragma once

#include "TWEngine/Runtime/Completion.h"
#include "Tarnwick/Connections/Connections.h"

#include <map>
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
    };

    explicit FakeConnections(std::shared_ptr<Browser> browser) : localBrowser(std::move(browser)) {}

    std::shared_ptr<Browser> local() override { return localBrowser; }

    Task<std::shared_ptr<Browser>> ssh(std::string host) override
    {
        auto const answer = std::make_shared<Completion<std::shared_ptr<Browser>>>();
        waiting.push_back({std::move(host), answer});
        return Completion<std::shared_ptr<Browser>>::wait(answer);
    }

    Task<std::shared_ptr<Browser>> reach(std::string host) override
    {
        auto const browser = browsers.find(host);
        if (browser == browsers.end())
            throw std::runtime_error("nobody knows " + host);
        co_return browser->second;
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

    std::vector<std::string> saved;
    bool isConfigSlow = false; ///< reading the saved hosts waits for the test
    std::vector<std::shared_ptr<HostsAnswer>> readings;

private:
    std::shared_ptr<Browser> localBrowser;
};

} // namespace tw::test
