#include "TWCore/Model/ReadError.h"

namespace tw {

ReadError::NotReadable::NotReadable(std::string unreadable, std::string reason)
    : ReadError("cannot read " + unreadable + ": " + reason), path(std::move(unreadable)), detail(std::move(reason))
{
}

ReadError::TooLarge::TooLarge(std::string largePath, std::int64_t actual, std::int64_t allowed)
    : ReadError(largePath + " is " + std::to_string(actual) + " bytes, over the " + std::to_string(allowed) +
                " byte limit"),
      path(std::move(largePath)),
      bytes(actual),
      limit(allowed)
{
}

} // namespace tw
