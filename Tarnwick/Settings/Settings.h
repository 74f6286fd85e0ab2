#pragma once

#include "Tarnwick/Settings/EditorChoice.h"
#include "Tarnwick/Settings/FolderPlacement.h"
#include "Tarnwick/Settings/PaneSide.h"
#include "Tarnwick/Settings/Setting.h"

#include <string>
#include <vector>

/// All settings of the program, in one table.
namespace tw::Settings {

/// The size of a pane's rows in the unit of the window's measures, 1/96 of an inch at a scale of 1, so 12 is what
/// desktops call 9 points. Kept between 9 and 20 when it is read and when it is written.
extern Setting<double> const paneFontSize;

extern Setting<FolderPlacement> const folderPlacement;

/// The side that had the keyboard last.
extern Setting<PaneSide> const activeSide;

/// The columns of the panes, which both share, with the widths that the user gave them. ColumnLayout writes and reads
/// them.
extern Setting<std::string> const columns;

/// Whether folders on show are read again without being asked for.
extern Setting<bool> const autoRefresh;

/// What files are edited with.
extern Setting<EditorChoice> const editor;

/// The size of a viewer's text, as that of the rows.
extern Setting<double> const viewerFontSize;

/// The place of a viewer on the screen, which all viewers share.
extern Setting<std::string> const viewerGeometry;

/// The place of the window on the screen, in the toolkit's own notation.
extern Setting<std::string> const windowGeometry;

/// The left pane's part of the window's width, as PaneSplitter counts it. Nothing: both panes are equally wide.
extern Setting<std::optional<int>> const leftShare;

/// Whether the first start's window has been shown.
extern Setting<bool> const welcomeShown;

/// What stands on the tool bar. ToolBarLayout writes and reads it.
extern Setting<std::string> const toolBar;

/// The hosts that were chosen from the menu of connections last, the latest first.
extern Setting<std::vector<std::string>> const recentHosts;

/// So many of them are kept.
inline constexpr std::size_t mostRecentHosts = 8;

/// Puts a host before the others.
void noteRecentHost(Defaults &defaults, std::string const &name);

/// In milliseconds, before a tool tip appears. At least 0.
extern Setting<int> const toolTipDelay;

} // namespace tw::Settings
