#include "tests/hosts/DelayLine.h"

#include <utility>

namespace tw::test {

void DelayLine::put(std::string bytes, Time due)
{
    if (last || bytes.empty())
        return;
    waiting += bytes.size();
    auto const arrival = notBefore(due);
    pieces.push_back({std::move(bytes), arrival});
}

void DelayLine::end(Ending how, Time due)
{
    if (last == Ending::reset || (last && how == Ending::orderly))
        return;
    endDue = notBefore(due);
    last = how;
}

std::optional<DelayLine::Time> DelayLine::due() const
{
    if (!pieces.empty())
        return pieces.front().due;
    return last ? std::optional(endDue) : std::nullopt;
}

std::string_view DelayLine::front() const
{
    if (pieces.empty())
        return {};
    return std::string_view(pieces.front().bytes).substr(delivered);
}

void DelayLine::drop(std::size_t bytes)
{
    delivered += bytes;
    waiting -= bytes;
    if (delivered < pieces.front().bytes.size())
        return;
    pieces.pop_front();
    delivered = 0;
}

} // namespace tw::test
