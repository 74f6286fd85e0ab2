#include "TWEngine/Archives/ArchivePasswords.h"

namespace tw {

namespace {

std::string placeOf(TransferEndpoint const &archive)
{
    return (archive.host() ? archive.host()->host() : "") + ":" + archive.path();
}

} // namespace

Task<ArchivePasswords::Password> ArchivePasswords::answer(Shared self, TransferEndpoint archive, int attempt)
{
    auto const &path = archive.path();
    auto asking = self->ask({.archive = path.substr(path.rfind('/') + 1), .attempt = attempt});
    auto typed = co_await std::move(asking);
    if (!typed)
        throw FileOperationError::Cancelled();
    co_return typed;
}

ArchivePasswords::Password ArchivePasswords::known(TransferEndpoint const &archive) const
{
    std::lock_guard const lock(mutex);
    auto const found = kept.find(placeOf(archive));
    return found == kept.end() ? std::nullopt : std::optional(found->second);
}

void ArchivePasswords::keep(TransferEndpoint const &archive, std::string const &password)
{
    std::lock_guard const lock(mutex);
    if (kept.size() >= mostKept)
        kept.clear();
    kept.insert_or_assign(placeOf(archive), password);
}

} // namespace tw
