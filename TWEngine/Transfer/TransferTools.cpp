#include "TWEngine/Transfer/TransferTools.h"

#include <cstdlib>

#include <sys/stat.h>
#include <unistd.h>

namespace tw {

namespace {

bool isProgram(std::string const &path)
{
    struct stat status;
    return ::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) && ::access(path.c_str(), X_OK) == 0;
}

std::string found(std::string_view searchPath, std::string usual)
{
    auto const name = usual.substr(usual.rfind('/'));
    while (!searchPath.empty()) {
        auto const folder = searchPath.substr(0, searchPath.find(':'));
        searchPath.remove_prefix(std::min(folder.size() + 1, searchPath.size()));
        // A relative folder would mean another program after each change of the folder of this process.
        auto path = std::string(folder) + name;
        if (folder.starts_with('/') && isProgram(path))
            return path;
    }
    return usual;
}

} // namespace

TransferTools TransferTools::find(std::string_view searchPath)
{
    TransferTools const usual;
    return {
        .cp = found(searchPath, usual.cp), .tar = found(searchPath, usual.tar), .ssh = found(searchPath, usual.ssh)};
}

TransferTools TransferTools::find()
{
    auto const *const path = std::getenv("PATH");
    return find(path ? path : "");
}

} // namespace tw
