#pragma once

#include "TWEngine/Runtime/FileDescriptor.h"

#include <cerrno>
#include <memory>
#include <string_view>

#include <dirent.h>

namespace tw {

struct CloseFolder {
    void operator()(DIR *folder) const { ::closedir(folder); }
};

/// A folder that is being read, closed at the end.
using OpenFolder = std::unique_ptr<DIR, CloseFolder>;

/// Takes over the descriptor of a folder. Null with the reason in `errno`, which stays as it is if there is none.
inline OpenFolder openFolder(FileDescriptor descriptor)
{
    OpenFolder folder(descriptor ? ::fdopendir(descriptor.get()) : nullptr);
    if (folder)
        static_cast<void>(descriptor.release());
    return folder;
}

/// The next entry but "." and "..". Null at the end, with 0 in `errno`, or with the reason why it cannot be read.
inline dirent const *nextEntry(OpenFolder const &folder)
{
    for (;;) {
        errno = 0;
        auto const *const entry = ::readdir(folder.get());
        if (!entry)
            return nullptr;
        std::string_view const name = entry->d_name;
        if (name != "." && name != "..")
            return entry;
    }
}

} // namespace tw
