#pragma once

#include "TWCore/Provider/LockedFolders.h"
#include "TWCore/Shell/ShellDialect.h"

#include <chrono>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

/// The command lines that change and measure the files of a host, for its resident shell. Paths are absolute, in the
/// client's own form, and each reaches its command as it is.
namespace tw::FileCommands {

using Paths = std::span<std::string const>;

/// How long a host may take to put what it has in memory on its disk.
inline constexpr std::chrono::seconds syncLimit{300};

/// How long measuring may take; nobody waits longer for a total.
inline constexpr std::chrono::seconds measureLimit{120};

/// As many bytes of paths as one command has at most. The systems of hosts take between 256 KiB and 2 MiB for a
/// program's arguments and environment.
inline constexpr std::size_t maxPathBytes = 100'000;

/// The first of `paths` that fit into one command, at least one; none only if there are none.
Paths fittingFront(ShellDialect dialect, Paths paths);

/// As many bytes of paths as one request has at most: the shell of a host reads a request byte by byte, and keeps it.
inline constexpr std::size_t maxRequestBytes = 2'000'000;

/// The first of `paths` that fit into one request of several commands; at least one as well.
Paths fittingRequest(ShellDialect dialect, Paths paths);

/// Creates one folder. Fails on a POSIX host if the name exists.
std::string makeDirectory(ShellDialect dialect, std::string_view path);

/// Deletes one folder, and fails if there is anything in it.
std::string removeEmptyFolder(ShellDialect dialect, std::string_view path);

/// Deletes each path with everything below it. More paths than one command takes are several commands, of which a later
/// one runs although an earlier one has failed. Locked folders that are left have the rights that they had.
std::string remove(ShellDialect dialect, Paths paths, LockedFolders locked = LockedFolders::stay);

/// Copies each path into the folder `to`, with times and permissions where the host keeps them. A pipe, a device or a
/// link of its name is replaced; below a folder of its name, too, where cp can do that.
std::string copy(ShellDialect dialect, Paths from, std::string_view to);

/// Ends when what was written on the disk of `folder` is there. GNU sync knows disks; others write all of them. Windows
/// has no such command, and the text is empty.
std::string sync(ShellDialect dialect, std::string_view folder);

/// Prints the size of all paths together, as `totalSize` reads it.
std::string measure(ShellDialect dialect, Paths paths);

/// Bytes, from what `measure` printed: disk use in whole KiB on a POSIX host, the lengths of the files on Windows. 0
/// for a text that is no number.
std::int64_t totalSize(ShellDialect dialect, std::string_view output);

} // namespace tw::FileCommands
