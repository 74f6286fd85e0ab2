#pragma once

#include <stop_token>
#include <string>

namespace tw {

/// Removes the devices below a folder, and takes from the files the right to run as their owner or group. Blocks: for a
/// worker thread.
///
/// Returns false if the tree is too deep to be walked.
/// Errors: std::system_error; Cancelled.
bool cleanRights(std::string const &folder, std::stop_token const &stop);

} // namespace tw
