#include "TWEngine/Shell/RemoteShellError.h"

namespace tw {

namespace {

std::string wholeSeconds(std::chrono::duration<double> limit)
{
    return std::to_string(std::chrono::duration_cast<std::chrono::seconds>(limit).count());
}

std::string quoted(std::string const &text)
{
    return '"' + text + '"';
}

} // namespace

RemoteShellError::ConnectFailed::ConnectFailed(std::string toHost, std::string why, ClientReport ofClient)
    : RemoteShellError("cannot reach " + toHost + ": " + why),
      host(std::move(toHost)),
      detail(std::move(why)),
      report(std::move(ofClient))
{
}

std::string RemoteShellError::ConnectFailed::plainText() const
{
    return "connectFailed(host: " + quoted(host) + ", detail: " + quoted(detail) + ")";
}

RemoteShellError::Disconnected::Disconnected(std::string why)
    : RemoteShellError("disconnected: " + why), detail(std::move(why))
{
}

std::string RemoteShellError::Disconnected::plainText() const
{
    return "disconnected(detail: " + quoted(detail) + ")";
}

RemoteShellError::TimedOut::TimedOut(std::chrono::duration<double> after)
    : RemoteShellError("timed out after " + wholeSeconds(after) + "s"), limit(after)
{
}

std::string RemoteShellError::TimedOut::plainText() const
{
    return "timedOut(seconds: " + wholeSeconds(limit) + ")";
}

RemoteShellError::OutcomeUnknown::OutcomeUnknown(std::string ofHost)
    : RemoteShellError("connection to " + ofHost + " was lost; it is not known whether this was done"),
      host(std::move(ofHost))
{
}

std::string RemoteShellError::OutcomeUnknown::plainText() const
{
    return "outcomeUnknown(host: " + quoted(host) + ")";
}

RemoteShellError::NotConnected::NotConnected() : RemoteShellError("not connected") {}

std::string RemoteShellError::NotConnected::plainText() const
{
    return "notConnected";
}

} // namespace tw
