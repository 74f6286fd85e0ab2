#pragma once

#include "TWCore/Model/Text.h"
#include "TWEngine/SSH/HostFailure.h"

namespace tw {

/// Why a host was not reached, in one to three sentences: the reason, what the host says, the next step.
Text failureSentences(HostFailure const &failure);

/// What a host said, on one line: its first two lines, cleaned of what cannot be seen, and shortened.
std::string quotedOnOneLine(std::string_view words);

} // namespace tw
