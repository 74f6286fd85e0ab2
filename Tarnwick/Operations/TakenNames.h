#pragma once

#include "TWCore/Provider/FileSystemWriter.h"
#include "Tarnwick/Operations/NameConflict.h"
#include "Tarnwick/Panes/Operands.h"

#include <memory>
#include <string>
#include <vector>

/// Which names are taken at a target, as the target itself says at the moment.
namespace tw::TakenNames {

/// What both sides say of the names to be written.
struct Facts {
    FolderFacts source;
    FolderFacts target;
};

/// Asks both sides. Throws what they throw: without an answer nothing may be written. Of a source that
/// cannot be written to nothing is known.
Task<Facts> ask(Operands source, Operands target);

/// The names that are taken. Of two names to be written that are one name at the target, the second is taken too.
std::vector<NameConflict> conflicts(std::vector<std::string> const &names, Facts const &facts);

/// Equal for names, or paths, that are one in a folder that takes cases for one.
std::string keyOf(std::string const &name, bool takesCasesForOne);

/// For each of `names` another one that is free at the target, and that none of `others` has, which are about to be
/// written too. Throws FileOperationError::Failed if there is none.
Task<std::vector<std::string>> freeNames(Operands target, std::vector<std::string> names,
                                         std::vector<std::string> others, bool takesCasesForOne);

} // namespace tw::TakenNames
