#include "TWEngine/SSH/GrowingListing.h"

namespace tw {

namespace {

/// A person waits that long without a need to see something.
constexpr std::chrono::milliseconds firstPartAfter{500};

/// So all parts together copy no more than the listing itself has.
constexpr std::size_t growthOfAPart = 2;

} // namespace

GrowingListing::GrowingListing(std::string path, std::shared_ptr<Clock> with,
                               std::chrono::steady_clock::time_point since, PartTaker taker)
    : clock(std::move(with)), begun(since), onPart(std::move(taker)), records(path, 1)
{
}

void GrowingListing::hear(std::string_view bytes)
{
    if (!isPartDue(bytes.size())) {
        records.advance(bytes);
        return;
    }
    lastPart = bytes.size();
    onPart(records.part(bytes, clock->now()));
}

bool GrowingListing::isPartDue(std::size_t bytes) const
{
    bool const isWorthIt = bytes > 0 && bytes >= lastPart * growthOfAPart;
    return onPart && isWorthIt && clock->steadyNow() - begun >= firstPartAfter;
}

} // namespace tw
