#pragma once

#include "Tarnwick/Operations/Dialogs.h"
#include "Tarnwick/Operations/TransferJob.h"

/// What a copy or a move says.
namespace tw::TransferWords {

/// More names than that in a list do not help to decide.
inline constexpr std::size_t mostNames = 8;

/// "Copy 3 items".
std::string title(TransferKind kind, std::size_t count);

/// Where to? The answer is a path on the target's connection, or any other that can be typed.
Dialogs::Prompt question(TransferKind kind, Operands const &source, Operands const &target);

Dialogs::Confirmation offerToCreate(Operands const &target);

enum class Sheet {
    first,
    again, ///< for what has changed while the one before it was on show
};

Dialogs::Conflicts conflicts(TransferKind kind, Operands const &target, std::vector<NameConflict> taken, Sheet sheet);

/// "copy 3 items cancelled: 412 of 10,000 files copied". Of a move, what has gone from the source.
Text cancelled(TransferJob const &job, TransferEnd const &end);

/// Names under a heading, which has a place for how many they are.
struct List {
    char const *heading;
    std::vector<std::string> names;
};

/// Why something failed, and what has come of its names. An empty list is left out.
Text failed(std::exception_ptr const &failure, std::vector<List> const &lists);

/// Why it failed, what is complete, what may be there in part, and what is untouched.
Text failed(TransferEnd const &end);

/// What a move has copied and did not take from the source, and why, and what is left behind; empty if nothing is.
Text kept(TransferEnd const &end);

/// What a cancel leaves that the user has to know of: what `kept` says, and the folders that were merging.
Text leftByCancel(TransferJob const &job, TransferEnd const &end);

/// Which staging folders are still there; empty if none is.
Text leftBehind(TransferEnd const &end);

/// "Copied 3 items to web1:/srv."
Text done(TransferJob const &job);

/// "web1:/srv".
std::string place(Operands const &where);

} // namespace tw::TransferWords
