#pragma once

#include "TWCore/Model/DirectorySnapshot.h"

#include <stop_token>
#include <string>

struct dirent;

namespace tw {

/// Reads one directory of this machine. Blocks: for a worker thread.
///
/// `path` is normalised. One fstatat(2) an entry, by name relative to the open directory, and no allocation an entry
/// beyond the growth of two arrays. An entry that cannot be examined stays in the listing, with what readdir(3) tells.
/// Throws LocalProviderError::CannotOpen, and Cancelled soon after `stop` is requested.
DirectorySnapshot readLocalDirectory(std::string const &path, std::stop_token const &stop);

/// The row of a directory record, without its name. `directory` is the descriptor that the record was read from.
Entry localEntry(int directory, dirent const &record);

} // namespace tw
