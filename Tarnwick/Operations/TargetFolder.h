#pragma once

#include "Tarnwick/Operations/OperationContext.h"

#include <optional>
#include <string>
#include <string_view>

namespace tw {

/// What is wrong with a typed target, in words for the user; nothing if it leads somewhere.
std::optional<std::string> objectionToTarget(std::string_view text);

/// The folder that was typed as a target: a path on the connection of the context's target, relative to its folder, or
/// anything else that the path field of a pane takes. A host that was named is connected. Throws what connecting
/// throws, and FileOperationError::Unsupported for a text that leads nowhere.
Task<Operands> targetFolder(OperationContext context, std::string text);

} // namespace tw
