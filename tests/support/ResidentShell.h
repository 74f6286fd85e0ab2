#pragma once

#include "TWEngine/Runtime/ChildProcess.h"
#include "TWEngine/Shell/ShellReader.h"
#include "TWEngine/Shell/ShellRequest.h"
#include "tests/support/TestLoop.h"

#include <deque>

namespace tw::test {

/// A real bash of this machine that runs the resident script and knows the question beside a listing, connected by
/// pipes: a host without ssh.
class ResidentShell {
public:
    struct Setup {
        std::string path; ///< the PATH of the shell
        std::string startFolder = "/";
        std::size_t budget = 8U << 20U; ///< in bytes; longer listings are cut
    };

    ResidentShell(IoThread &io, TestLoop &testLoop, Setup const &setup);

    ShellReader::Frame const &handshake() const noexcept { return greeting; }

    /// Sends a request with the next number and returns its response.
    ShellReader::Frame answerTo(ShellRequest const &request);

    /// Waits for the next response.
    ShellReader::Frame nextFrame();

    void write(std::string bytes);

    /// Closes the input and returns the output outside of responses.
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
