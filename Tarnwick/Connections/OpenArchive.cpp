#include "Tarnwick/Connections/OpenArchive.h"

#include "TWEngine/Archives/ArchiveProvider.h"

namespace tw {

namespace {

Task<void> shutDown(std::shared_ptr<Browser> browser)
{
    co_await browser->shutdown();
}

} // namespace

OpenArchive::OpenArchive(std::shared_ptr<Executor> mainContext, ArchiveFile file, std::shared_ptr<Browser> inside,
                         std::shared_ptr<OpenArchive const> outer)
    : executor(std::move(mainContext)), archive(std::move(file)), browser(std::move(inside)), around(std::move(outer))
{
}

OpenArchive::~OpenArchive()
{
    spawn({executor, {}}, shutDown(browser));
}

std::string OpenArchive::title() const
{
    return (around ? around->title() : archive.connection) + ":" + archive.name();
}

Task<TransferEndpoint> OpenArchive::endpoint(std::shared_ptr<OpenArchive const> self)
{
    if (auto const members = std::dynamic_pointer_cast<ArchiveProvider>(self->browser->providerRef())) {
        auto file = co_await members->file();
        co_return file;
    }
    co_return TransferEndpoint::local(self->archive.path);
}

Task<void> OpenArchive::forget(std::shared_ptr<OpenArchive const> self)
{
    co_await self->browser->providerRef()->disconnect();
    co_await self->browser->invalidateAll();
}

} // namespace tw
