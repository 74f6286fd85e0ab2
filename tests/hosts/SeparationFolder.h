#pragma once

#include "TWEngine/Runtime/FileDescriptor.h"

#include <string>

namespace tw::test {

/// The empty folder that sshd insists on when root runs it, while it exists.
///
/// Its place is built into sshd. A machine on which the ssh service runs has it; elsewhere it is made, and the last of
/// all processes that need it removes it. One that we have made is known by its mode, which no service gives it.
class SeparationFolder {
public:
    /// Where sshd looks for it.
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
    /// Locked, shared by all that need the folder.
    FileDescriptor folder;
};

} // namespace tw::test
