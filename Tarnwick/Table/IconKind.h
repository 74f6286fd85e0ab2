#pragma once

#include "Tarnwick/Table/PaneModel.h"

#include <string>
#include <string_view>

namespace tw {

/// The pictures that tell entries apart.
enum class IconKind {
    parent,
    folder,
    link,
    special,
    file,
    text,
    code,
    image,
    audio,
    video,
    archive,
    document,
    spreadsheet,
    executable,
};

/// The name of a kind's picture in our own set.
std::string_view iconName(IconKind kind);

/// The key under which the icon of a row is cached: the one of Fmt, refined for what has no extension to go by, the
/// parent row and a file that may be executed.
std::string paneIconKey(PaneModel const &model, int row);

/// What a key of `paneIconKey` shows.
IconKind iconKindOf(std::string_view iconKey);

} // namespace tw
