#include "TWEngine/Runtime/SpawnError.h"

#include <system_error>
#include <utility>

namespace tw {

SpawnError::SpawnError(int errorNumber, std::string subject)
    : number(errorNumber), failedAt(std::move(subject)), description(failedAt + ": " + reason())
{
}

std::string SpawnError::reason() const
{
    return std::generic_category().message(number);
}

} // namespace tw
