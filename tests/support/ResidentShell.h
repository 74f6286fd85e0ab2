#pragma once

#include "TWEngine/Runtime/ChildProcess.h"
#include "TWEngine/Shell/ShellReader.h"
#include "TWEngine/Shell/ShellRequest.h"
#include "tests/support/TestLoop.h"

#include <deque>

namespace tw::test {

/// A real bash of this machine with the resident script in it, at the end of pipes: a host without the ssh before it.
class ResidentShell {
public:
    struct Setup {
        std::string path; ///< where the shell finds its tools
        std::string startFolder = "/";
        std::size_t budget = 8U << 20U; ///< at which listings are cut
    };

    ResidentShell(IoThread &io, TestLoop &testLoop, Setup const &setup);

    ShellReader::Frame const &handshake() const noexcept { return greeting; }

    /// Sends a request with the next number and answers its response.
    ShellReader::Frame answerTo(ShellRequest const &request);

    /// The response to come.
    ShellReader::Frame nextFrame();

    void write(std::string bytes);

    /// What it prints outside of any response, until it ends for want of input.
    std::string end();

    ChildProcess &process() noexcept { return *child; }

private:
    TestLoop &loop;
    std::shared_ptr<ChildProcess> child;
    ShellReader reader;
    std::deque<ShellReader::Frame> arrived;
    std::uint64_t nextId = 1;
    ShellReader::Frame greeting;
};

} // namespace tw::test
