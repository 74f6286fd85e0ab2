#pragma once

#include <gtest/gtest.h>

#include <signal.h>
#include <sys/types.h>

namespace tw::test {

/// A process that stands still for as long as this exists. Nobody else wakes it, so without this it would stay for
/// ever.
class StoppedProcess {
public:
    explicit StoppedProcess(pid_t ofProcess) : id(ofProcess) { EXPECT_EQ(::kill(id, SIGSTOP), 0); }

    ~StoppedProcess() { resume(); }

    StoppedProcess(StoppedProcess const &) = delete;
    StoppedProcess &operator=(StoppedProcess const &) = delete;

    void resume() const { ::kill(id, SIGCONT); }

private:
    pid_t id;
};

} // namespace tw::test
