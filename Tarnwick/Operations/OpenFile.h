#pragma once

#include "Tarnwick/Operations/OperationContext.h"

#include <cstdint>
#include <optional>
#include <string>

namespace tw {

/// A file to be opened, as its listing has it.
struct FileToOpen {
    std::string path;
    EntryKind kind = EntryKind::unknown;
    std::int64_t size = 0;  ///< bytes; of a link, of the link itself
    std::int64_t mtime = 0; ///< whole seconds since 1970-01-01 UTC
    std::uint16_t mode = 0; ///< permission bits

    std::string name() const { return path.substr(path.rfind('/') + 1); }
};

/// A remote file above this size is fetched after a question only, in bytes.
inline constexpr std::int64_t mostFetchedUnasked = 268435456;

enum class Purpose { opening, editing };

/// Asks if a large file of a host is to be fetched. True for others.
Task<bool> mayFetch(OperationContext context, FileToOpen file, Purpose purpose);

/// Opens a file of the operands' connection with an application, or with the usual one where none is named. A file that
/// lies elsewhere is fetched first; what is opened then is a local copy.
///
/// A program is not run: a question says what it is and offers to view it, to choose an application, and to run it if
/// it is the user's own.
/// Errors: on the status line of the pane.
Task<void> openWithSystem(OperationContext context, FileToOpen file, std::string application = {});

/// Asks for the application, and opens the file with it.
Task<void> chooseApplication(OperationContext context, FileToOpen file);

/// Those that the menu over a file offers, the usual one first. Empty if nothing is known.
Task<std::vector<Application>> applicationsFor(OpeningServices services, std::string connection, FileToOpen file);

} // namespace tw
