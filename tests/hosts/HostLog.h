#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace tw {
class ChildProcess;
class EngineRuntime;
} // namespace tw

namespace tw::test {

/// Collects the standard error of a server while it runs, so that the server never blocks on a full pipe.
///
/// Threads: all operations may be called from anywhere. Waiting blocks.
class HostLog {
public:
    HostLog();

    /// Appends the standard error of the process, until every process that has inherited it has ended.
    void collect(EngineRuntime &engine, std::shared_ptr<ChildProcess> process);

    std::string text() const;

    /// The size so far, as an offset for `waitFor`.
    std::size_t size() const;

    /// Waits until `words` appear in the log after `offset`. False if the log ends without them.
    bool waitFor(std::string_view words, std::size_t offset) const;

    void waitForEnd() const;

private:
    struct State;

    std::shared_ptr<State> const state;
};

} // namespace tw::test
