#pragma once

#include "Tarnwick/Operations/ProgressState.h"

#include <chrono>
#include <optional>
#include <string>

/// How far some work is, in words. Numbers are rounded as a person would say them, so that they do not flicker.
namespace tw::TransferText {

/// "412 of 10,000 files", or what is done alone where the total is not known; empty before the first file.
std::string files(ProgressState const &state);

/// "5.0M/s", or "stalled".
std::string speed(double bytesPerSecond);

/// "25 s left", "12 min left", "3 h 20 min left".
std::string timeLeft(std::chrono::seconds left);

} // namespace tw::TransferText
