#include "TWEngine/Browsing/MountPoint.h"

#include <fcntl.h>
#include <sys/stat.h>

namespace tw {

bool isMountPoint(int folder, std::string const &name)
{
    struct statx status;
    return ::statx(folder, name.c_str(), AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT, 0, &status) == 0 &&
           (status.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0;
}

} // namespace tw
