#include "TWCore/Model/FileOperationError.h"

namespace tw {

FileOperationError::Failed::Failed(std::string attempted, std::string target, std::string reason)
    : FileOperationError(attempted + " failed on " + target + ": " + reason),
      operation(std::move(attempted)),
      path(std::move(target)),
      detail(std::move(reason))
{
}

FileOperationError::OtherFileSystem::OtherFileSystem(std::string from)
    : FileOperationError("rename failed on " + from + ": Invalid cross-device link"), path(std::move(from))
{
}

FileOperationError::NoTrash::NoTrash(std::string target, std::string reason)
    : FileOperationError("move to Trash failed on " + target + ": " + reason),
      path(std::move(target)),
      detail(std::move(reason))
{
}

FileOperationError::Unsupported::Unsupported(std::string wanted)
    : FileOperationError("not supported: " + wanted), detail(std::move(wanted))
{
}

FileOperationError::Cancelled::Cancelled() : FileOperationError("cancelled") {}

} // namespace tw
