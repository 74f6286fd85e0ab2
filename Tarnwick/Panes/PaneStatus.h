#pragma once

#include "Tarnwick/Table/PaneModel.h"

#include <chrono>
#include <exception>
#include <string>

/// The texts of a pane's status line.
namespace tw::PaneStatus {

/// How many files and folders, their size, the marks, and how long the folder took to open.
std::string summary(PaneModel const &model, std::string const &timing);

enum class Source { provider, memory };

/// "12 ms network" for a listing that was fetched while the user waited, "0.05 ms cached" for one that was there.
std::string timing(std::chrono::duration<double> elapsed, Source source);

/// While the host of what is on show is being reached.
std::string connecting(std::string const &host);

/// The host could not be reached.
std::string connectFailed(std::string const &host, std::exception_ptr const &error);

/// The text for the user of a failure.
std::string describe(std::exception_ptr const &error);

/// What stands before every failure on the line.
std::string warning(std::string const &text);

} // namespace tw::PaneStatus
