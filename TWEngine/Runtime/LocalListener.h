#pragma once

#include "TWCore/Async/Task.h"
#include "TWEngine/Runtime/FileDescriptor.h"

#include <memory>
#include <string>

#include <sys/types.h>

namespace tw {

class IoThread;

/// A Unix socket at which other processes of this machine call.
///
/// Threads: one task at a time accepts; `close` may be called from anywhere.
/// Lifetime: the I/O thread outlives it. The destructor closes.
class LocalListener {
public:
    /// Who calls: the credentials that the caller had when it connected, as the system knows them.
    struct Caller {
        FileDescriptor connection;
        pid_t process = 0;
        uid_t user = 0;
    };

    /// Makes a new socket file that only this user can write to. Null if it exists or cannot be made; a path has at
    /// most 107 bytes (unix(7)).
    static std::unique_ptr<LocalListener> create(IoThread &io, std::string const &path);

    ~LocalListener();

    LocalListener(LocalListener const &) = delete;
    LocalListener &operator=(LocalListener const &) = delete;

    /// Waits for the next caller. Throws PipeError, also after `close`.
    Task<Caller> accept() const;

    /// Removes the socket file. An `accept` in flight fails.
    void close() const noexcept;

private:
    struct Socket;

    explicit LocalListener(std::shared_ptr<Socket> opened) : socket(std::move(opened)) {}

    std::shared_ptr<Socket> const socket;
};

} // namespace tw
