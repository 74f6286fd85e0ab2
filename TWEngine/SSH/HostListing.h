#pragma once

#include "TWCore/Model/ListingScan.h"
#include "TWCore/Provider/FileSystemProvider.h"
#include "TWCore/Shell/ShellDialect.h"
#include "TWEngine/Shell/RemoteShell.h"

#include <string>

/// What a host's answer to the request for a listing means.
namespace tw::HostListing {

/// What was asked for, and of which host.
struct Question {
    std::string host;
    ShellDialect dialect = ShellDialect::posix;
    std::string path;
    int depth = 1;
};

/// The listings of `response`.
///
/// A POSIX host sends nothing of a folder that it cannot read. Of the root it was asked whether that is the reason; a
/// folder below the root that came empty is left out, since it may be unreadable: it is unknown until somebody asks
/// for it.
///
/// Errors: FileOperationError::Failed, with the host's reason, if the root cannot be listed.
Listings read(ListingResponse response, Question const &asked, std::chrono::system_clock::time_point fetchedAt);

/// The same of a response whose beginning `scan` has read already.
Listings read(ListingResponse response, Question const &asked, std::chrono::system_clock::time_point fetchedAt,
              ListingScan &scan);

} // namespace tw::HostListing
