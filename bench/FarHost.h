#pragma once

#include "TWEngine/Browsing/Browser.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "TWEngine/SSH/SSHProvider.h"
#include "bench/BenchLoop.h"
#include "tests/hosts/DelayProxy.h"
#include "tests/hosts/SSHClient.h"
#include "tests/hosts/TestHost.h"
#include "tests/support/TemporaryFolder.h"

#include <memory>
#include <vector>

#include <unistd.h>

namespace tw::bench {

/// A real sshd, the line to it, and what reaches it under the name "far".
class FarHost {
public:
    explicit FarHost(std::chrono::milliseconds roundTrip) : line(host.address().port, roundTrip)
    {
        client.add("far", host.address().through(line.port()));
    }

    /// Not connected yet, and not sharing anything with an earlier one.
    std::shared_ptr<SSHProvider> provider()
    {
        sockets.push_back(std::make_unique<test::TemporaryFolder>());
        return std::make_shared<SSHProvider>(
            SSHProvider::Collaborators{.engine = engine,
                                       .sshProgram = client.program(),
                                       .sockets = {.base = sockets.back()->path(), .user = ::getuid()}},
            "far");
    }

    std::shared_ptr<Browser> browser(std::shared_ptr<SSHProvider> provider, Browser::Config config = {})
    {
        return std::make_shared<Browser>(
            std::move(provider),
            Browser::Collaborators{.strand = engine.makeStrand(), .clock = engine.clock(), .store = nullptr}, config);
    }

    EngineRuntime engine;
    test::TestHost host{engine};
    test::DelayProxy line;
    test::SSHClient client;
    BenchLoop loop;

private:
    std::vector<std::unique_ptr<test::TemporaryFolder>> sockets;
};

} // namespace tw::bench
