#pragma once

#include "TWEngine/SSH/HostAccess.h"
#include "tests/support/FakeCommandHost.h"

namespace tw::test {

/// A host of whose connection the test says how it is. For one thread.
class FakeHost final : public FakeCommandHost, public HostAccess {
public:
    Task<UpdateStream<HostStatus>> statuses() override
    {
        ++statusReaders;
        auto ends = UpdateStream<HostStatus>::make([this] { --statusReaders; });
        ends.sender.send(status);
        senders.push_back(ends.sender);
        co_return std::move(ends.stream);
    }

    Task<void> logIn() override { co_return; }

    void become(HostStatus next)
    {
        status = next;
        for (auto const &sender : senders)
            sender.send(next);
    }

    int statusReaders = 0;

private:
    HostStatus status;
    std::vector<UpdateStream<HostStatus>::Sender> senders;
};

} // namespace tw::test
