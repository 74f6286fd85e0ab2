#pragma once

#include "Tarnwick/Transfers/JobList.h"

#include <chrono>
#include <optional>
#include <string>

namespace tw {

/// Whether the user looks at the program.
enum class Attention { given, elsewhere };

/// What the desktop says about work that has ended.
struct JobNotice {
    /// A user waits for shorter work, and sees its end.
    static constexpr std::chrono::seconds leastDuration{20};

    std::string summary;
    std::string body;

    /// Nothing about short work, and to a user who sees the end anyway.
    static std::optional<JobNotice> about(JobList::End const &end, Attention attention);
};

} // namespace tw
