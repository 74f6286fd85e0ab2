#pragma once

#include "TWEngine/Runtime/FileDescriptor.h"

#include <chrono>
#include <string>
#include <vector>

#include <sys/types.h>

namespace tw::test {

/// A mounted file system that is slow or that never answers.
///
/// Lifetime: unmounted with the object, and soon after the death of the process that has it. A call that waits for the
/// file system fails then.
class TestMount {
public:
    /// A folder of files named "file0" and so on, each of whose attributes takes that long. `folder` exists.
    static TestMount slow(std::string const &folder, int files, std::chrono::microseconds delay);

    /// Answers nothing. A call on it hangs until the object is gone.
    static TestMount silent(std::string const &folder);

    ~TestMount();

    TestMount(TestMount &&other) noexcept;
    TestMount &operator=(TestMount &&) = delete;

    std::string const &path() const noexcept { return mountPoint; }

    /// Ends the file system, and waits until it is unmounted.
    void end();

private:
    /// Throws std::runtime_error.
    TestMount(std::string folder, std::vector<std::string> const &mode);

    std::string mountPoint;
    pid_t pid = -1;
    FileDescriptor input; ///< of the program, which ends when this is closed
};

} // namespace tw::test
