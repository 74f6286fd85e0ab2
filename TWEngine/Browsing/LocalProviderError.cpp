#include "TWEngine/Browsing/LocalProviderError.h"

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

PlatformError::PlatformError(int number) : errorNumber(number), description(systemText(number)) {}

} // namespace tw
