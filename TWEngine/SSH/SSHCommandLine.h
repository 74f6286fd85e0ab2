#pragma once

#include "TWCore/Shell/ShellDialect.h"
#include "TWEngine/Runtime/ChildCommand.h"
#include "TWEngine/Shell/RemoteShellOptions.h"

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

/// How the OpenSSH client is called: argument lists without the program's name, and what is added to its environment.
///
/// Each has "--" before the host, so that a host whose name begins with a dash is not an option. The argument after the
/// host is one command line, which the login shell of the host parses. The user's configuration decides how the host is
/// reached, and cannot change what the session is: it has pipes at its ends, our command and no forwardings.
namespace tw::SSHCommandLine {

inline constexpr std::string_view program = "/usr/bin/ssh";

using Arguments = std::vector<std::string>;

/// A session: the resident shell of the host.
///
/// A shared connection is not compressed: files travel over it beside the sessions, and the client that opens it
/// decides for all.
Arguments session(RemoteShellOptions const &options, std::string const &host, ShellDialect dialect);

/// The session that finds out what the host speaks, see firstRemoteCommand.
Arguments firstSession(RemoteShellOptions const &options, std::string const &host);

/// What is added to the environment of a session's client: nothing, unless ssh must ask for a password or the user.
std::map<std::string, std::string> sessionEnvironment(RemoteShellOptions const &options);

/// The ssh client of a session: the program at `path` with `arguments`, in an environment in which it finds its
/// password.
ChildCommand sessionClient(std::string path, Arguments arguments, RemoteShellOptions const &options);

/// The ssh client of any other call.
ChildCommand transferClient(std::string path, Arguments arguments);

/// Lets nobody share the connection at `controlPath` any more. It ends with those who do. Asks this machine only.
Arguments stopSharing(std::string const &controlPath, std::string const &host);

/// The first arguments of every other call. Without `controlPath` no connection is shared, whatever the options say.
///
/// The client of such a call may be the one that opens the shared connection. So it checks a silent host as the
/// sessions do, or a dead line would never be noticed.
Arguments transportOptions(RemoteShellOptions const &options, std::optional<std::string> const &controlPath);

/// A shell of its own, that reads what it runs from its standard input. For POSIX hosts.
Arguments script(Arguments transportOptions, std::string const &host);

/// Prints the file at `path`, see DownloadEnd.
Arguments download(Arguments transportOptions, std::string const &host, ShellDialect dialect, std::string_view path);

/// Writes standard input to the file at `path`. An existing file keeps its mode and owner, and keeps its bytes until
/// all new ones are in uploadTemporary. To a POSIX host a broken line looks like the end of the input; with `size`, in
/// bytes, a part is not taken for the whole file.
Arguments upload(Arguments transportOptions, std::string const &host, ShellDialect dialect, std::string_view path,
                 std::optional<std::int64_t> size = {});

std::string uploadTemporary(std::string_view path);

/// The command for the resident shell that removes the remains of a failed upload to `path`.
std::string removeUploadTemporary(ShellDialect dialect, std::string_view path);

} // namespace tw::SSHCommandLine
