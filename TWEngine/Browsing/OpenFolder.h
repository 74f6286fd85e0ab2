#pragma once

#include <memory>

#include <dirent.h>

namespace tw {

struct CloseFolder {
    void operator()(DIR *folder) const { ::closedir(folder); }
};

/// A folder that is being read, closed at the end.
using OpenFolder = std::unique_ptr<DIR, CloseFolder>;

} // namespace tw
