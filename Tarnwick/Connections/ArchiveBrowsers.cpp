#include "Tarnwick/Connections/ArchiveBrowsers.h"

#include "TWCore/Provider/CommandHost.h"
#include "TWEngine/Archives/ArchiveProvider.h"
#include "TWEngine/Runtime/EngineRuntime.h"

namespace tw {

ArchiveOpener archiveOpener(EngineRuntime &engine, std::string sshProgram)
{
    return [&engine, ssh = std::move(sshProgram)](ArchiveFile const &file) -> std::shared_ptr<Browser> {
        auto const &holder = file.holder->providerRef();
        if (std::dynamic_pointer_cast<ArchiveProvider>(holder))
            return nullptr;
        auto host = std::dynamic_pointer_cast<CommandHost>(holder);
        auto place =
            host ? TransferEndpoint::remote(std::move(host), file.folder()) : TransferEndpoint::local(file.folder());
        auto provider = std::make_shared<ArchiveProvider>(
            engine, ArchiveProvider::Archive{file.path, std::move(place), file.connection}, ssh);
        return std::make_shared<Browser>(
            std::move(provider),
            Browser::Collaborators{.strand = engine.makeStrand(), .clock = engine.clock(), .store = nullptr},
            Browser::Config());
    };
}

} // namespace tw
