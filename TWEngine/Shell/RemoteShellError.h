#pragma once

#include "TWEngine/Shell/ClientReport.h"

#include <chrono>
#include <exception>
#include <string>

namespace tw {

/// Why a session with a host did not do what it was asked. `what` is the text for the user.
class RemoteShellError : public std::exception {
public:
    class ConnectFailed;
    class Disconnected;
    class TimedOut;
    class NotConnected;
    class OutcomeUnknown;

    char const *what() const noexcept override { return description.c_str(); }

    /// Whether connecting again and asking once more may help. A request that took too long is no drop: its session
    /// is still there.
    virtual bool isRecoverableDrop() const noexcept { return false; }

    /// The name of the case and what it carries, for where nothing better is known.
    virtual std::string plainText() const = 0;

protected:
    explicit RemoteShellError(std::string text) : description(std::move(text)) {}

private:
    std::string description;
};

/// The session did not come up.
class RemoteShellError::ConnectFailed final : public RemoteShellError {
public:
    ConnectFailed(std::string host, std::string detail, ClientReport report = {});

    std::string plainText() const override;

    std::string const host;
    std::string const detail; ///< the last words of ssh, mostly
    ClientReport const report;
};

/// The session ended.
class RemoteShellError::Disconnected final : public RemoteShellError {
public:
    explicit Disconnected(std::string detail);

    bool isRecoverableDrop() const noexcept override { return true; }

    std::string plainText() const override;

    std::string const detail;
};

/// The answer took longer than was allowed.
class RemoteShellError::TimedOut final : public RemoteShellError {
public:
    explicit TimedOut(std::chrono::duration<double> limit);

    std::string plainText() const override;

    std::chrono::duration<double> const limit;
};

/// The connection was lost after a command was sent that changes something. Sending it again might do it twice.
class RemoteShellError::OutcomeUnknown final : public RemoteShellError {
public:
    explicit OutcomeUnknown(std::string host);

    std::string plainText() const override;

    std::string const host;
};

/// There was no session to ask.
class RemoteShellError::NotConnected final : public RemoteShellError {
public:
    NotConnected();

    bool isRecoverableDrop() const noexcept override { return true; }

    std::string plainText() const override;
};

} // namespace tw
