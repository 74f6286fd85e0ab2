#include "Tarnwick/Transfers/TransferText.h"

#include "Tarnwick/Format/Fmt.h"
#include "Tarnwick/Operations/CountPhrase.h"

namespace tw::TransferText {

namespace {

using namespace std::chrono_literals;

std::int64_t roundedUp(std::int64_t number, std::int64_t step)
{
    return (number + step - 1) / step * step;
}

} // namespace

std::string files(ProgressState const &state)
{
    std::string const noun = state.unit == ProgressState::Unit::items ? " item" : " file";
    auto const ending = [](std::int64_t count) { return count == 1 ? "" : "s"; };
    if (!state.totalFiles)
        return state.files > 0 ? grouped(state.files) + noun + ending(state.files) : std::string();
    return grouped(state.files) + " of " + grouped(*state.totalFiles) + noun + ending(*state.totalFiles);
}

std::string speed(double bytesPerSecond)
{
    if (bytesPerSecond < 1)
        return "stalled";
    return Fmt::size(static_cast<std::int64_t>(bytesPerSecond), EntryKind::file) + "/s";
}

std::string timeLeft(std::chrono::seconds left)
{
    if (left <= 5s)
        return "a few seconds left";
    if (left < 1min)
        return std::to_string(roundedUp(left.count(), 5)) + " s left";
    auto const minutes = roundedUp(left.count(), 60) / 60;
    if (minutes < 60)
        return std::to_string(minutes) + " min left";
    if (left > 24h)
        return "more than a day left";
    auto const inFives = roundedUp(minutes, 5);
    auto const hours = std::to_string(inFives / 60) + " h";
    return inFives % 60 == 0 ? hours + " left" : hours + " " + std::to_string(inFives % 60) + " min left";
}

} // namespace tw::TransferText
