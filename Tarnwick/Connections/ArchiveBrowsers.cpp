#include "Tarnwick/Connections/ArchiveBrowsers.h"

#include "TWCore/Async/OnExecutor.h"
#include "TWCore/Provider/CommandHost.h"
#include "TWEngine/Archives/ArchiveProvider.h"
#include "TWEngine/Browsing/RemoteFiles.h"
#include "TWEngine/Runtime/EngineRuntime.h"

namespace tw {

namespace {

/// What a listing says of a member tells a copy of it from one of an earlier member of its name.
Task<std::string> copyMember(std::shared_ptr<RemoteFiles> copies, ArchiveFile member)
{
    auto const opened = co_await member.holder->open(member.folder());
    RemoteFiles::Source source{
        .provider = member.holder->providerRef(), .connection = member.connection, .path = member.path};
    for (auto const &entry : opened.snapshot.entries()) {
        if (opened.snapshot.nameBytes(entry) == member.name()) {
            source.size = entry.size;
            source.mtime = entry.mtime;
        }
    }
    auto path = co_await copies->localCopy(std::move(source));
    co_return path;
}

} // namespace

ArchiveBrowsers::CopyMember ArchiveBrowsers::copiesBy(std::shared_ptr<Executor> mainContext,
                                                      std::shared_ptr<RemoteFiles> copies)
{
    return [main = std::move(mainContext), from = std::move(copies)](ArchiveFile member) {
        return onExecutor(main, copyMember(from, std::move(member)));
    };
}

std::shared_ptr<Browser> ArchiveBrowsers::operator()(ArchiveFile const &file) const
{
    auto const &holder = file.holder->providerRef();
    auto host = std::dynamic_pointer_cast<CommandHost>(holder);
    ArchiveProvider::Archive archive{.file = host ? TransferEndpoint::remote(std::move(host), file.path)
                                                  : TransferEndpoint::local(file.path),
                                     .hostLabel = file.connection,
                                     .passwords = passwords};
    if (std::dynamic_pointer_cast<ArchiveProvider>(holder)) {
        if (!copyOf)
            return nullptr;
        archive.bring = [copy = copyOf, file] { return copy(file); };
    }
    Browser::Collaborators const with{.strand = engine.makeStrand(), .clock = engine.clock(), .store = nullptr};
    return std::make_shared<Browser>(std::make_shared<ArchiveProvider>(engine, std::move(archive), sshProgram), with,
                                     Browser::Config());
}

} // namespace tw
