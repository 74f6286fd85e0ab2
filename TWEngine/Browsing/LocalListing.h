#pragma once

#include "TWCore/Model/DirectorySnapshot.h"
#include "TWEngine/Browsing/LocalAttributes.h"

#include <stop_token>
#include <string>

namespace tw {

/// Reads one directory of this machine. Blocks: for a worker thread.
///
/// `path` is normalised. No allocation an entry beyond the growth of the arrays. The entries are in the order of
/// readdir(3); an entry that cannot be examined stays in the listing, with the kind that readdir(3) tells. `known` are
/// the rows of entries that must not be examined here.
/// Throws LocalProviderError::CannotOpen, and Cancelled soon after `stop` is requested.
DirectorySnapshot readLocalDirectory(std::string const &path, LocalAttributes::Known const &known,
                                     HelperThreads::Budget &helpers, std::stop_token const &stop);

} // namespace tw
