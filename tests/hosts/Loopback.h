#pragma once

#include "TWEngine/Runtime/FileDescriptor.h"

#include <cstdint>

namespace tw::test {

// Stream sockets of 127.0.0.1. Each function throws std::system_error.

/// Listens on a free port, without blocking.
FileDescriptor listenOnLoopback();

/// Reserves a free port: the system gives it to no other process. Connections are refused until a program that sets
/// SO_REUSEADDR, as servers do, listens on it.
FileDescriptor reserveLoopbackPort();

std::uint16_t portOf(FileDescriptor const &socket);

/// A blocking socket.
FileDescriptor connectToLoopback(std::uint16_t port);

/// A non-blocking socket whose connection may still be in progress, see connect(2).
FileDescriptor beginConnectingToLoopback(std::uint16_t port);

} // namespace tw::test
