#pragma once

#include "TWEngine/Viewing/ViewedFile.h"

#include <functional>

namespace tw {

/// Waiting for a file to change.
struct FollowedFile {
    enum class News {
        events,   ///< the kernel reports changes; asked now and then where it does not
        questions ///< asked now and then
    };

    EngineRuntime &engine;
    std::string path;
    News news = News::questions;
    std::function<Task<ViewedFile::Facts>()> look;

    /// ViewedFile::next.
    static Task<ViewedFile::Facts> next(FollowedFile file, std::optional<ViewedFile::Facts> known);
};

} // namespace tw
