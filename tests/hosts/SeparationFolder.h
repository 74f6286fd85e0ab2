#pragma once

#include "TWEngine/Runtime/FileDescriptor.h"

#include <string>

namespace tw::test {

/// Provides the empty folder that sshd requires when root runs it.
///
/// Its path is built into sshd. If the ssh service has not made the folder, we make it, and the last process that needs
/// it removes it. A folder of ours is recognised by its mode, which no service uses.
class SeparationFolder {
public:
    /// The path that is built into sshd.
    static constexpr auto place = "/run/sshd";

    /// Throws std::system_error.
    explicit SeparationFolder(std::string path = place);
    ~SeparationFolder();

    SeparationFolder(SeparationFolder const &) = delete;
    SeparationFolder &operator=(SeparationFolder const &) = delete;

private:
    bool isStillAtItsPath() const;
    bool isOurs() const;

    std::string const path;
    /// Holds a shared lock on the folder.
    FileDescriptor folder;
};

} // namespace tw::test
