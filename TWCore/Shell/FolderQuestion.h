#pragma once

#include "TWCore/Provider/FolderFacts.h"
#include "TWCore/Shell/ShellDialect.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

/// The request that asks a host about a folder and some names in it, for its resident shell, and what its answer says.
///
/// The answer has no name in it, so no name can be taken for another part of it.
namespace tw::FolderQuestion {

using Names = std::span<std::string const>;

/// The first of `names` that fit into one request; all that is left if it is small enough, else at least one.
Names fittingFront(ShellDialect dialect, Names names);

/// `folder` is absolute and in the client's own form; `names` are plain.
std::string text(ShellDialect dialect, std::string_view folder, Names names);

/// Nothing if it is no answer to a question about `names`.
std::optional<FolderFacts> facts(ShellDialect dialect, std::string_view output, Names names);

} // namespace tw::FolderQuestion
