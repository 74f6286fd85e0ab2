#pragma once

#include "TWCore/Model/Text.h"
#include "Tarnwick/Table/PaneModel.h"

#include <chrono>
#include <exception>
#include <string>

/// The texts of a pane's status line.
namespace tw::PaneStatus {

/// How many files and folders, their size, the marks, how long the folder took to open, and every how many seconds a
/// slow host is asked for changes.
Text summary(PaneModel const &model, Text const &timing, std::optional<int> secondsOfWatching = {});

/// The same while a long folder is being read: what has come so far.
Text partSummary(PaneModel const &model);

/// Where a listing comes from.
enum class Source { network, disk, memory };

/// "12 ms network" or "12 ms disk" for a listing that was fetched while the user waited, "0.05 ms cached" for one that
/// was there.
Text timing(std::chrono::duration<double> elapsed, Source source);

/// While the host of what is on show is being reached.
Text connecting(std::string const &host);

/// The text for the user of a failure.
Text describe(std::exception_ptr const &error);

/// True if what failed was to list a path that is there and is no folder.
bool isAboutAFile(std::exception_ptr const &error);

/// Whether a folder cannot be listed because of what its path leads to. False if the way to its host is at fault.
bool isAboutThePath(std::exception_ptr const &error);

/// What stands before every failure on the line.
Text warning(Text const &text);

} // namespace tw::PaneStatus
