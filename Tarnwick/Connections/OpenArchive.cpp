#include "Tarnwick/Connections/OpenArchive.h"

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

Task<void> OpenArchive::forget(std::shared_ptr<OpenArchive const> self)
{
    co_await self->browser->providerRef()->disconnect();
    co_await self->browser->invalidateAll();
}

} // namespace tw
