#include "Tarnwick/Connections/SSHConfig.h"

#include "TWEngine/Runtime/WorkerPool.h"
#include "TWEngine/SSHConfig/SSHConfigHosts.h"

namespace tw::SSHConfig {

Task<std::vector<std::string>> hosts(WorkerPool const &pool, std::string path)
{
    // Interactive: a menu is open and waits for it.
    return pool.run(WorkPriority::interactive, [path = std::move(path)] {
        return SSHConfigHosts::all(path.empty() ? SSHConfigOnDisk::pathOfThisUser() : path);
    });
}

} // namespace tw::SSHConfig
