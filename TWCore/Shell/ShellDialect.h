#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tw {

/// The language of a host's shell.
enum class ShellDialect {
    posix,
    powershell, ///< a Windows host
};

/// The name that a dialect is stored under, "posix" or "powershell".
std::string_view rawText(ShellDialect dialect) noexcept;

/// The dialect of a stored name, or nothing for any other text.
std::optional<ShellDialect> shellDialectFromRaw(std::string_view text) noexcept;

/// What a host printed on `firstRemoteCommand` says what it speaks. Nothing counts as posix.
ShellDialect shellDialectFromProbe(std::string_view answer);

/// The command line for a host that has not been asked yet what it speaks: a host with a POSIX shell starts its shell,
/// behind a line of its own; the command interpreter of Windows prints its path, and the rest as text, and ends. So
/// the question costs no round trip, and the answer is never a memory.
std::string_view firstRemoteCommand() noexcept;

/// What a POSIX shell prints for the question in `firstRemoteCommand`, before anything of the shell that it starts.
std::string_view firstCommandEcho() noexcept;

/// The command line that starts the shell that reads requests from its standard input.
std::string_view remoteCommand(ShellDialect dialect) noexcept;

/// What ends a line of that input.
std::string_view lineTerminator(ShellDialect dialect) noexcept;

/// Whether that shell acts on each line at once, even in the middle of a quoted text.
bool needsSingleLineRequests(ShellDialect dialect) noexcept;

/// `text` as one word that the shell takes literally. For a posix shell, every byte but NUL survives.
std::string quote(ShellDialect dialect, std::string_view text);

/// A path as one word for that shell. On Windows it is put into the form that the host knows, see WindowsPath.
std::string quotePath(ShellDialect dialect, std::string_view path);

/// The line that makes that shell perform `request`, without its line end.
std::string encodeRequest(ShellDialect dialect, std::string_view request);

} // namespace tw
