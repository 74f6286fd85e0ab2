#pragma once

#include "TWCore/Provider/Survey.h"

#include <stop_token>
#include <string>
#include <vector>

namespace tw {

/// What is below `names` in a folder of this machine, however deep. Links are not followed. Blocks: for a worker
/// thread.
///
/// Errors: FileOperationError::Failed with the path that cannot be read; Cancelled.
Survey localSurvey(std::string const &folder, std::vector<std::string> const &names, std::stop_token const &stop,
                   Survey::Detail detail = Survey::Detail::sums);

} // namespace tw
