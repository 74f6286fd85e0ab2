#include "TWCore/Model/FileOperationError.h"

namespace tw {

FileOperationError::Failed::Failed(std::string attempted, std::string target, std::string reason)
    : FileOperationError(attempted + " failed on " + target + ": " + reason),
      operation(std::move(attempted)),
      path(std::move(target)),
      detail(std::move(reason))
{
}

FileOperationError::Unsupported::Unsupported(std::string const &what) : FileOperationError("not supported: " + what) {}

FileOperationError::Cancelled::Cancelled() : FileOperationError("cancelled") {}

} // namespace tw
