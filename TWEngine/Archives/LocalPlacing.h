#pragma once

#include "TWCore/Archives/ArchivePlacing.h"
#include "TWEngine/Archives/ArchiveChild.h"

#include <optional>
#include <stop_token>

/// What ArchiveScripts does on a host, for staging folders of this machine and without a process. All of it blocks: for
/// a worker thread.
///
/// Errors: FileOperationError::Failed of the job; Cancelled.
namespace tw::LocalPlacing {

/// Creates a folder that nobody else can look into.
void makeStaging(std::string const &staging, ArchiveChild::Job const &job);

/// Returns what is left for the script: folders that have to be merged, or a tree that is too deep to be walked here.
std::optional<ArchivePlacing::Any> place(ArchivePlacing::Any const &placing, ArchiveChild::Job const &job,
                                         std::stop_token const &stop);

} // namespace tw::LocalPlacing
