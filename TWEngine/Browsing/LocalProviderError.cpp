#include "TWEngine/Browsing/LocalProviderError.h"

#include "TWCore/Model/FolderRefusal.h"

#include <system_error>

namespace tw {

std::string systemText(int errorNumber)
{
    return std::generic_category().message(errorNumber);
}

LocalProviderError::CannotOpen::CannotOpen(std::string where, int number)
    : path(std::move(where)), errorNumber(number), description(path + ": " + systemText(number))
{
}

std::string LocalProviderError::CannotOpen::reason() const
{
    return folderRefusal(systemText(errorNumber));
}

PlatformError::PlatformError(int number) : errorNumber(number), description(systemText(number)) {}

} // namespace tw
