#include "TWCore/Archives/ArchiveTooLarge.h"

#include "TWCore/Archives/UnpackRoom.h"

namespace tw {

namespace {

std::string textOf(std::int64_t bytes, std::optional<std::int64_t> freeBytes)
{
    auto text = "unpacked it takes " + UnpackRoom::inWords(bytes);
    return freeBytes ? text + ", and " + UnpackRoom::inWords(*freeBytes) + " are free" : text;
}

} // namespace

ArchiveTooLarge::ArchiveTooLarge(std::int64_t unpacked, std::optional<std::int64_t> freeBytes)
    : FileOperationError(textOf(unpacked, freeBytes)), bytes(unpacked), free(freeBytes)
{
}

} // namespace tw
