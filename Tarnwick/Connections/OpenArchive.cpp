#include "Tarnwick/Connections/OpenArchive.h"

#include "TWCore/Async/Outcome.h"
#include "TWEngine/Archives/ArchiveProvider.h"

namespace tw {

namespace {

Task<void> shutDown(std::shared_ptr<Browser> browser)
{
    co_await browser->shutdown();
}

/// As an archive engine takes members: without the slash at the beginning.
std::vector<std::string> namesOf(std::vector<std::string> paths)
{
    for (auto &path : paths)
        path.erase(0, 1);
    return paths;
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

Task<Archives::Members> OpenArchive::members(std::shared_ptr<OpenArchive const> self, std::vector<std::string> paths)
{
    Archives::Members members;
    if (auto const provider = std::dynamic_pointer_cast<ArchiveProvider>(self->browser->providerRef())) {
        auto const bytes = co_await provider->bytesOf(paths);
        members.bytes = bytes;
        auto contents = co_await provider->contentsOutside(paths);
        members.contents = namesOf(std::move(contents));
    }
    members.paths = namesOf(std::move(paths));
    co_return members;
}

Task<void> OpenArchive::forget(std::shared_ptr<OpenArchive const> self)
{
    co_await self->browser->providerRef()->disconnect();
    co_await self->browser->invalidateAll();
    spawn({self->executor, {}}, noteFile(self));
}

Task<std::optional<OpenArchive::Stamp>> OpenArchive::stampOf(ArchiveFile file)
{
    std::vector<std::string> names{file.name()};
    auto const facts = co_await outcomeOf(file.holder->factsAbout(file.folder(), std::move(names)));
    if (!facts.value || facts.value->taken.empty())
        co_return std::nullopt;
    auto const &found = facts.value->taken.front();
    co_return Stamp{found.size, found.mtime};
}

Task<void> OpenArchive::noteFile(std::weak_ptr<OpenArchive const> weak)
{
    auto self = weak.lock();
    if (!self || self->around)
        co_return;
    auto asking = stampOf(self->archive);
    self.reset(); // the listing ends with the archive
    auto const now = co_await std::move(asking);
    self = weak.lock();
    if (self)
        self->listed = now;
}

Task<void> OpenArchive::forgetIfChanged(std::shared_ptr<OpenArchive const> self)
{
    if (self->around)
        co_return;
    auto const now = co_await stampOf(self->archive);
    // A host that cannot be asked says nothing about its file.
    if (!now || !self->listed || *now == *self->listed)
        co_return;
    self->listed = now;
    co_await self->browser->providerRef()->disconnect();
}

} // namespace tw
