#include "TWEngine/Platform/PrivateFolder.h"

#include <sys/stat.h>

namespace tw::PrivateFolder {

namespace {

/// For anybody but the owner.
constexpr mode_t foreignRights = S_IRWXG | S_IRWXO;

} // namespace

bool isPrivateTo(uid_t user, std::string const &folder)
{
    struct stat status{};
    return ::lstat(folder.c_str(), &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == user &&
           (status.st_mode & foreignRights) == 0;
}

bool make(uid_t user, std::string const &folder)
{
    // Private from the first moment on. If it exists already, or cannot be made, the check finds out.
    ::mkdir(folder.c_str(), S_IRWXU);
    return isPrivateTo(user, folder);
}

} // namespace tw::PrivateFolder
