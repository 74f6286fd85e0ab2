#pragma once

#include "TWCore/Shell/ShellDialect.h"
#include "TWEngine/Runtime/ChildCommand.h"
#include "TWEngine/Transfer/TransferTools.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// The command lines of a transfer. Names are plain names in a folder; each reaches its program as it is.
namespace tw::TransferCommands {

using Names = std::span<std::string const>;

/// "/name" in the folder "/", and not "//name".
std::string pathOf(std::string_view folder, std::string_view name);

/// What a tar pipe is called: the one name, or "2 items".
std::string label(Names names);

/// The first of `names` that fit into one command line for that shell, at least one; none only if there are none.
Names fittingFront(ShellDialect dialect, Names names);

/// The same for a program of this machine.
Names fittingFrontHere(Names names);

/// The environment of the programs: `inherited`, with COPYFILE_DISABLE so that no tar of a Mac adds "._" files, and
/// without the options that a user may have set for tar at a terminal, but with the one that has names taken as they
/// are.
Environment tarEnvironment(Environment inherited);

/// What becomes of a file that has the name of a new one.
enum class Existing {
    opened, ///< it is written to, if that can be; it stays as it is if the new one cannot be read
    removed ///< first: what it leads to stays as it is
};

/// Copies `names` of its working folder into another folder of this machine.
ChildCommand copyHere(TransferTools const &tools, std::shared_ptr<FileDescriptor const> from, Names names,
                      std::string const &to, Existing existing);

/// Writes an archive of `names` to its output.
ChildCommand pack(TransferTools const &tools, std::string const &folder, Names names);

/// Unpacks the archive at its input into `folder`.
ChildCommand unpack(TransferTools const &tools, std::string const &folder);

/// Both as a command line for the login shell of a host.
std::string packThere(ShellDialect dialect, std::string_view folder, Names names);
std::string unpackThere(ShellDialect dialect, std::string_view folder);

/// The call of tar on a Windows host with exactly these arguments.
std::string windowsTar(std::span<std::string const> arguments);

/// An ssh client that runs `command` on the host. Its input and output are those of the command.
ChildCommand overSSH(TransferTools const &tools, std::vector<std::string> transportOptions, std::string const &host,
                     std::string command);

/// Copies each path into the folder `to` of the same host, for its resident shell. On a POSIX host the copy can be
/// ended, see EndableCommand.
std::string copyThere(ShellDialect dialect, std::span<std::string const> from, std::string_view to,
                      std::string_view token);

/// Prints what `Measure::parse` reads.
std::string measureThere(ShellDialect dialect, std::span<std::string const> paths);

} // namespace tw::TransferCommands
