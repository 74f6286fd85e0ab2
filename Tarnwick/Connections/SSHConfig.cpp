#include "Tarnwick/Connections/SSHConfig.h"

#include "TWEngine/Runtime/WorkerPool.h"
#include "TWEngine/SSHConfig/SSHConfigError.h"
#include "TWEngine/SSHConfig/SSHConfigFile.h"

namespace tw::SSHConfig {

Task<std::vector<std::string>> hosts(WorkerPool const &pool, std::string path)
{
    // Interactive: a menu is open and waits for it.
    return pool.run(WorkPriority::interactive, [path = std::move(path)] {
        try {
            return SSHConfigFile::aliases(
                SSHConfigOnDisk::read(path.empty() ? SSHConfigOnDisk::pathOfThisUser() : path).value_or(""));
        } catch (SSHConfigError const &) {
            return std::vector<std::string>();
        }
    });
}

} // namespace tw::SSHConfig
