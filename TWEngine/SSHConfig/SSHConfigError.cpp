#include "TWEngine/SSHConfig/SSHConfigError.h"

namespace tw {

SSHConfigError::NotReadable::NotReadable(std::string where, std::string const &why)
    : SSHConfigError(where + ": " + why), path(std::move(where))
{
}

SSHConfigError::NotWritable::NotWritable(std::string where, std::string const &why)
    : SSHConfigError(where + ": " + why), path(std::move(where))
{
}

SSHConfigError::ChangedMeanwhile::ChangedMeanwhile(std::string where)
    : SSHConfigError(where + ": changed by another program meanwhile"), path(std::move(where))
{
}

} // namespace tw
