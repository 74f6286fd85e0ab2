#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace tw {
class ChildProcess;
class EngineRuntime;
} // namespace tw

namespace tw::test {

/// What a server says on its standard error, collected while it runs, so that it never waits for somebody to read it.
///
/// Threads: all operations may be called from anywhere. Waiting blocks.
class HostLog {
public:
    HostLog();

    /// Collects behind what is there already, until all that hold the process's standard error have ended.
    void collect(EngineRuntime &engine, std::shared_ptr<ChildProcess> process);

    std::string text() const;

    /// How much there is so far. A time in the log, for `waitFor`.
    std::size_t size() const;

    /// Waits until `words` stand in the log behind `offset`. False if it ends without them.
    bool waitFor(std::string_view words, std::size_t offset) const;

    void waitForEnd() const;

private:
    struct State;

    std::shared_ptr<State> const state;
};

} // namespace tw::test
