#pragma once

#include "TWEngine/Archives/Archives.h"
#include "Tarnwick/Operations/ClaimedNames.h"
#include "Tarnwick/Operations/OperationContext.h"

#include <functional>

/// The steps that all work on archives shares.
namespace tw::ArchiveSteps {

/// The machine and the path of a place. Nothing for a place without files of its own, such as the inside of an archive.
std::optional<TransferEndpoint> endpointOf(Operands const &place, std::string const &path);

/// Work of an archive engine, and what is said about it.
struct Work {
    std::string title;         ///< "Unpack a.zip"
    std::string conclusion;    ///< when it is done, for a user who looks at something else by then
    ClaimedNames::Claim claim; ///< on what is written; goes when the work has ended
    std::function<Task<void>(Archives &archives, Archives::Reporter onProgress)> begin;
};

/// Performs the work with its progress on show, which the user can cancel. Asks before much more is unpacked than there
/// is room for. True if the work is done; otherwise the user has seen why not. Throws Cancelled if the window goes.
Task<bool> perform(OperationContext context, Work work);

/// A name has come into the folder of `where`: every pane that still shows the folder reads it again. In the panes
/// beside that of the key press, the cursor goes to it.
Task<void> showArrival(OperationContext context, Operands where, std::string name);

/// Asks once about all names that are taken. Nothing if they are not to be replaced.
Task<Dialogs::Resolution> replaceAll(OperationContext context, std::vector<NameConflict> taken,
                                     std::function<Dialogs::Confirmation(std::vector<std::string> const &)> question);

} // namespace tw::ArchiveSteps
