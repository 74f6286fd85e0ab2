#include "TWEngine/Browsing/LocalSurvey.h"

#include "TWCore/Async/Cancelled.h"
#include "TWCore/Model/FileOperationError.h"
#include "TWCore/Provider/SurveyDigest.h"
#include "TWEngine/Browsing/LocalProviderError.h"
#include "TWEngine/Runtime/OpenFolder.h"

#include <cerrno>
#include <climits>

#include <fcntl.h>
#include <sys/stat.h>

namespace tw {

namespace {

constexpr auto folderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

/// A walk that holds one open folder, and not one for each level, since a tree may be deeper than a process can have
/// files open. On each level it remembers the folders that it has yet to enter.
class Walk {
public:
    Walk(std::string const &topFolder, std::stop_token const &token, Survey::Detail kept)
        : top(topFolder), stop(token), detail(kept)
    {
    }

    /// Adds `name` in the open folder, and all below it. False if there is no such name.
    bool add(int folder, std::string const &name, Survey::Part &into)
    {
        part = &into;
        path = name;
        below = name.size() + 1;
        struct stat status;
        if (!examine(folder, name, status))
            return false;
        if (S_ISDIR(status.st_mode)) {
            enter(folder, name);
            walk();
        }
        return true;
    }

private:
    struct Level {
        std::vector<std::string> folders = {}; ///< names, yet to be entered
        std::size_t pathBytes = 0;             ///< of the path without what is on this level
        dev_t device = 0;
        ino_t inode = 0;
    };

    [[noreturn]] void fail(int error) const
    {
        throw FileOperationError::Failed("reading", (top.ends_with('/') ? top : top + '/') + path, systemText(error));
    }

    /// Counts in what `path` leads to. False if it has vanished.
    bool examine(int folder, std::string const &name, struct stat &status)
    {
        if (stop.stop_requested())
            throw Cancelled();
        if (::fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
            if (errno == ENOENT)
                return false;
            fail(errno);
        }
        auto const target = S_ISLNK(status.st_mode) ? targetOf(folder, name) : std::string();
        auto const mtime = std::to_string(status.st_mtim.tv_sec) + '.' + std::to_string(status.st_mtim.tv_nsec);
        addToSurvey(*part,
                    {.path = std::string_view(path).substr(std::min(below, path.size())),
                     .kind = entryKindOfMode(status.st_mode),
                     .size = status.st_size,
                     .mtime = mtime,
                     .target = target},
                    detail);
        return true;
    }

    std::string targetOf(int folder, std::string const &name) const
    {
        std::string target(PATH_MAX, '\0');
        auto const size = ::readlinkat(folder, name.c_str(), target.data(), target.size());
        if (size < 0)
            fail(errno);
        target.resize(static_cast<std::size_t>(size));
        return target;
    }

    /// Reads the folder that `path` leads to, which becomes the one that is open.
    void enter(int folder, std::string const &name)
    {
        FileDescriptor opened(::openat(folder, name.c_str(), folderFlags));
        if (!opened)
            fail(errno);
        struct stat status;
        if (::fstat(opened.get(), &status) != 0)
            fail(errno);
        levels.push_back({.pathBytes = path.size(), .device = status.st_dev, .inode = status.st_ino});
        here = std::move(opened);
        auto const names = openFolder(FileDescriptor(::openat(here.get(), ".", folderFlags)));
        if (!names)
            fail(errno);
        while (auto const *const entry = nextEntry(names))
            addEntry(entry->d_name);
        if (errno != 0)
            fail(errno);
    }

    void addEntry(std::string const &name)
    {
        struct stat status;
        path.resize(levels.back().pathBytes);
        path += '/' + name;
        if (examine(here.get(), name, status) && S_ISDIR(status.st_mode))
            levels.back().folders.push_back(name);
    }

    void walk()
    {
        while (!levels.empty()) {
            auto &level = levels.back();
            path.resize(level.pathBytes);
            if (level.folders.empty()) {
                levels.pop_back();
                leave();
                continue;
            }
            auto const name = std::move(level.folders.back());
            level.folders.pop_back();
            path += '/' + name;
            enter(here.get(), name);
        }
    }

    void leave()
    {
        if (levels.empty())
            return;
        FileDescriptor above(::openat(here.get(), "..", folderFlags));
        struct stat status;
        if (!above || ::fstat(above.get(), &status) != 0)
            fail(errno);
        // Somebody has moved the folder meanwhile, so what is above it now was not asked for.
        if (status.st_dev != levels.back().device || status.st_ino != levels.back().inode)
            fail(ENOENT);
        here = std::move(above);
    }

    std::string const &top;
    std::stop_token const &stop;
    Survey::Detail const detail;
    Survey::Part *part = nullptr;
    std::string path;      ///< below `top`
    std::size_t below = 0; ///< where the part of `path` begins that is below the name
    FileDescriptor here;
    std::vector<Level> levels;
};

} // namespace

Survey localSurvey(std::string const &folder, std::vector<std::string> const &names, std::stop_token const &stop,
                   Survey::Detail detail)
{
    auto const isNameable = !folder.contains('\0');
    FileDescriptor const opened(isNameable ? ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC) : -1);
    if (!opened)
        throw FileOperationError::Failed("reading", folder, systemText(isNameable ? errno : ENOENT));
    Survey survey;
    for (auto const &name : names) {
        Survey::Part part;
        if (!name.contains('\0') && Walk(folder, stop, detail).add(opened.get(), name, part))
            survey.parts.emplace(name, std::move(part));
    }
    return survey;
}

} // namespace tw
