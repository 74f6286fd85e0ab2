#pragma once

#include "TWCore/Provider/CommandHost.h"
#include "TWCore/Shell/FileSearch.h"

#include <memory>
#include <string>

namespace tw {

class EngineRuntime;

/// A search that the grep of a host does, where the file is.
namespace HostSearch {

/// Answers `searched`, or why nothing was searched: `unknown` or `unreadable`. A search that may go on behind its part
/// and takes long says now and then up to which offset it has come, if the host can say that.
///
/// Cancellation: ends the search on the host, and throws Cancelled.
/// Errors: FileSearch::Failed, ByteExpression::TooSlow, and what `CommandHost::runCommand` throws.
Task<FileSearch::Answer> run(EngineRuntime &engine, std::shared_ptr<CommandHost> host, std::string path,
                             FileSearch::Question question, FileSearch::Progress progress);

} // namespace HostSearch

} // namespace tw
