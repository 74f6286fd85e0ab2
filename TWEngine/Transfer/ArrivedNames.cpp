#include "TWEngine/Transfer/ArrivedNames.h"

#include "TWEngine/Runtime/EngineRuntime.h"
#include "TWEngine/Transfer/TransferCommands.h"

#include <utility>

#include <sys/stat.h>

namespace tw {

namespace {

/// cp gives a file its time and then its mode, and nothing to the group and to others before. A file system without
/// modes of its own gives them something.
bool hasItsMode(struct stat const &source, struct stat const &target)
{
    return source.st_mode == target.st_mode || (target.st_mode & (S_IRWXG | S_IRWXO)) != 0;
}

bool isSame(struct stat const &source, struct stat const &target)
{
    bool const isFolder = S_ISDIR(source.st_mode);
    return (source.st_mode & S_IFMT) == (target.st_mode & S_IFMT) && (isFolder || source.st_size == target.st_size) &&
           source.st_mtim.tv_sec == target.st_mtim.tv_sec && hasItsMode(source, target);
}

bool isFinished(struct stat const &folder, ArrivedNames::Copying const &copying)
{
    auto const &changed = folder.st_ctim;
    auto const &begun = copying.begun;
    return std::pair(changed.tv_sec, changed.tv_nsec) >= std::pair(begun.tv_sec, begun.tv_nsec) &&
           !copying.blamed.isEverything;
}

ArrivedNames findNow(std::string const &from, std::string const &to, ArrivedNames::Copying const &copying)
{
    ArrivedNames found;
    for (auto const &name : copying.names) {
        struct stat source;
        struct stat target;
        bool const isThere = ::lstat(TransferCommands::pathOf(to, name).c_str(), &target) == 0;
        bool const isKnown = ::lstat(TransferCommands::pathOf(from, name).c_str(), &source) == 0;
        bool const isCopied = isThere && isKnown && isSame(source, target) && !copying.blamed.names.contains(name);
        bool const isComplete = isCopied && (!S_ISDIR(source.st_mode) || isFinished(target, copying));
        if (!isComplete && !found.firstMissing)
            found.firstMissing = name;
        (isComplete ? found.complete : isThere ? found.partial : found.untouched).push_back(name);
    }
    return found;
}

} // namespace

Task<ArrivedNames> ArrivedNames::find(EngineRuntime &engine, std::string from, std::string to, Copying copying)
{
    return engine.files().runBetween(from, to, FileLanes::LastLink::follow, WorkPriority::interactive,
                                     [from, to, copying = std::move(copying)] { return findNow(from, to, copying); });
}

} // namespace tw
