#pragma once

#include "TWCore/Provider/FileSystemWriter.h"
#include "TWCore/Shell/ShellDialect.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

/// The request that renames and moves on a host, for its resident shell, whatever the number of names. Paths are
/// absolute, in the client's own form.
///
/// Names that stay the same move together, as one program call for some thousands of them. So the first failure stops
/// the request, but names behind it in the same call may have moved. A move counts as done only if the old name is gone
/// and the new name is the same file: a program may report success although it has moved nothing, or moved into a
/// folder that has just appeared. Where the host copies, it is a file of the same kind, rights, time and size.
///
/// What leads to another mount fails with `otherFileSystem`: mv would copy, unseen and without an end. A host that does
/// not say what its mounts are, such as one of BSD, copies to another disk.
///
/// A target that is to stay is a failure, and so is a folder; both stay as they are. But the other case of the same
/// name is no target on a file system that takes both for one.
namespace tw::MoveCommand {

using Moves = std::span<FileSystemWriter::Move const>;

/// The first of `moves` that fit into one request, at least one; none only if there are none.
Moves fittingFront(ShellDialect dialect, Moves moves);

std::string text(ShellDialect dialect, Moves moves, FileSystemWriter::Existing existing);

/// The status of a request that has stopped at a move to another file system. Of the moves before it, all are done.
inline constexpr std::int32_t otherFileSystem = 18;

/// Both names are one on a file system that takes both cases for one.
bool changesOnlyCase(FileSystemWriter::Move const &move);

/// A request whose status is 0 if the folder of both names lists the new one and not the old one. For POSIX hosts.
std::string isRespelled(FileSystemWriter::Move const &move);

struct Failure {
    std::size_t index = 0; ///< of the move that failed; those before it are done
    std::string words;     ///< may be empty
};

/// What a request for `count` moves that failed has printed.
Failure failure(std::string_view output, std::size_t count);

} // namespace tw::MoveCommand
