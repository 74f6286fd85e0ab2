#pragma once

#include "TWCore/Model/Entry.h"
#include "TWCore/Provider/Survey.h"

#include <cstdint>
#include <string_view>

namespace tw {

/// A file, a link or a folder of a survey.
struct SurveyNode {
    std::string_view path = {}; ///< below the name that is surveyed; empty for the name itself
    EntryKind kind = EntryKind::unknown;
    std::int64_t size = 0;        ///< bytes
    std::string_view mtime = {};  ///< as precise as the place knows it; compared with the same place only
    std::string_view target = {}; ///< of a link
};

/// Counts `node` in, in as much detail. The order of the nodes does not matter.
///
/// Two trees that differ have different digests unless somebody has made them on purpose: this finds a copy that is
/// cut or changed, and is no proof against an attacker.
void addToSurvey(Survey::Part &part, SurveyNode const &node, Survey::Detail detail);

} // namespace tw
