#pragma once

#include "TWCore/Provider/FileSystemWriter.h"
#include "TWCore/Shell/ShellDialect.h"

#include <cstddef>
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
/// folder that has just appeared. A file that goes to another disk becomes another file, and is looked for by its name.
///
/// A target that exists is a failure, and both stay as they are; but the other case of the same name is no target on a
/// file system that takes both for one.
namespace tw::MoveCommand {

using Moves = std::span<FileSystemWriter::Move const>;

/// The first of `moves` that fit into one request, at least one; none only if there are none.
Moves fittingFront(ShellDialect dialect, Moves moves);

std::string text(ShellDialect dialect, Moves moves);

struct Failure {
    std::size_t index = 0; ///< of the move that failed; those before it are done
    std::string words;     ///< may be empty
};

/// What a request for `count` moves that failed has printed.
Failure failure(std::string_view output, std::size_t count);

} // namespace tw::MoveCommand
