#pragma once

#include "TWCore/Archives/ArchiveCommands.h"
#include "TWCore/Archives/ArchiveScripts.h"
#include "TWEngine/Archives/ArchiveWork.h"
#include "TWEngine/Runtime/ChildCommand.h"
#include "TWEngine/Runtime/ExitStatus.h"
#include "TWEngine/Transfer/TransferChild.h"

namespace tw {

/// Programs of this machine that work on archives.
namespace ArchiveChild {

/// The environment for such a program, made of another one: no options of the user's, names in UTF-8, words in English.
Environment environment(Environment inherited);

/// How such a program is started: in that environment, with its words on its standard error.
ChildCommand command(ArchiveCommands::Call const &call);
ChildCommand command(ArchiveScripts::Script const &script);

/// What a program is about: the words of its failure, and what is reported while it runs.
struct Job {
    std::string operation;
    std::string path;
    std::string item = {};
    std::optional<std::int64_t> total = {}; ///< bytes
    /// The file whose reading is the progress; empty: all that the program itself reads.
    std::string reads = {};
};

/// Runs a program to its end.
///
/// Cancellation: ends it within 0.2 s, and throws Cancelled.
/// Errors: FileOperationError, see ArchiveFailure; SpawnError.
Task<void> run(ArchiveWork::Shared work, ChildCommand command, Job job);

/// The same for an archive tool, which gets the password at its input.
Task<void> run(ArchiveWork::Shared work, ArchiveCommands::Call call, Job job);

/// Writes the password, if there is one, into a program whose input is a pipe, and ends the input.
Task<void> answer(TransferChild::Shared child, std::optional<std::string> password);

/// Ends a program that asks for a password which it cannot have, or which it has refused.
void endIfItAsksAgain(TransferChild const &child, std::optional<std::string> const &password);

/// As often as a person can read what is reported, and soon enough for a program that asks without end.
inline constexpr std::chrono::milliseconds timeBetweenLooks{100};

/// How many bytes a process has read; of one file, if that is named, and by its children too.
std::int64_t bytesRead(pid_t process, std::string const &file);

/// Its words, or how it has ended; nothing if it has succeeded.
std::optional<std::string> complaint(ExitStatus status, std::string words);

} // namespace ArchiveChild

} // namespace tw
