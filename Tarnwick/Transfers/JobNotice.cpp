#include "Tarnwick/Transfers/JobNotice.h"

namespace tw {

std::optional<JobNotice> JobNotice::about(JobList::End const &end, Attention attention)
{
    if (attention == Attention::given || end.duration <= leastDuration)
        return std::nullopt;
    auto summary = end.title;
    if (std::string_view const underWay = "…"; summary.ends_with(underWay))
        summary.resize(summary.size() - underWay.size());
    return JobNotice{.summary = std::move(summary), .body = end.conclusion};
}

} // namespace tw
