#include "TWEngine/Transfer/ArrivedNames.h"

#include "TWEngine/Runtime/EngineRuntime.h"
#include "TWEngine/Transfer/TransferCommands.h"

#include <sys/stat.h>

namespace tw {

namespace {

bool isSame(struct stat const &source, struct stat const &target)
{
    return (source.st_mode & S_IFMT) == (target.st_mode & S_IFMT) && source.st_size == target.st_size &&
           source.st_mtim.tv_sec == target.st_mtim.tv_sec;
}

ArrivedNames findNow(std::string const &from, std::string const &to, std::vector<std::string> const &names)
{
    ArrivedNames found;
    for (auto const &name : names) {
        struct stat source;
        struct stat target;
        bool const isThere = ::lstat(TransferCommands::pathOf(to, name).c_str(), &target) == 0;
        bool const isKnown = ::lstat(TransferCommands::pathOf(from, name).c_str(), &source) == 0;
        bool const isComplete = isThere && isKnown && isSame(source, target);
        if (!isComplete && !found.firstMissing)
            found.firstMissing = name;
        (isComplete ? found.complete : isThere ? found.partial : found.untouched).push_back(name);
    }
    return found;
}

} // namespace

Task<ArrivedNames> ArrivedNames::find(EngineRuntime &engine, std::string from, std::string to,
                                      std::vector<std::string> names)
{
    return engine.files().runBetween(from, to, FileLanes::LastLink::follow, WorkPriority::interactive,
                                     [from, to, names = std::move(names)] { return findNow(from, to, names); });
}

} // namespace tw
