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
/// In each of them "--" stands before the host, so that a host whose name begins with a dash is no option. What stands
/// behind the host is one argument, which the login shell of the host takes apart.
namespace tw::SSHCommandLine {

inline constexpr std::string_view program = "/usr/bin/ssh";

using Arguments = std::vector<std::string>;

/// A session: the resident shell of the host, with pipes at its ends and no terminal.
///
/// A connection that is shared is not compressed: files travel over it beside the sessions, and the client that comes
/// first decides for all.
Arguments session(RemoteShellOptions const &options, std::string const &host, ShellDialect dialect);

/// The session that finds out what the host speaks, see firstRemoteCommand.
Arguments firstSession(RemoteShellOptions const &options, std::string const &host);

/// What a session's environment has besides that of this process: nothing, unless ssh is to ask for a password.
std::map<std::string, std::string> sessionEnvironment(RemoteShellOptions const &options);

/// The ssh client of a session, the program at `path` with `arguments`, in an environment in which it finds its
/// password.
ChildCommand sessionClient(std::string path, Arguments arguments, RemoteShellOptions const &options);

/// What every other call begins with. Without a `controlPath`, and whatever the options name, no connection is shared.
///
/// Such a call may be the first, and then its client keeps the connection for the sessions too: it asks a silent host
/// whether it is there just as they do, or nobody would notice a line that is dead.
Arguments transportOptions(RemoteShellOptions const &options, std::optional<std::string> const &controlPath);

/// Prints the file at `path`.
Arguments download(Arguments transportOptions, std::string const &host, ShellDialect dialect, std::string_view path);

/// Makes the file at `path` of standard input. A file that is there keeps its mode and owner, and its bytes until all
/// of the new ones have arrived in uploadTemporary. A line that breaks looks to a POSIX host like the end of its input;
/// with `size`, in bytes, what came before it is not taken for the file.
Arguments upload(Arguments transportOptions, std::string const &host, ShellDialect dialect, std::string_view path,
                 std::optional<std::int64_t> size = {});

std::string uploadTemporary(std::string_view path);

/// The command that removes what a failed upload to `path` left. For the resident shell.
std::string removeUploadTemporary(ShellDialect dialect, std::string_view path);

} // namespace tw::SSHCommandLine
