#include "Tarnwick/Clipboard/PastedFile.h"

#include "TWCore/Model/FileOperationError.h"
#include "TWEngine/Runtime/EngineRuntime.h"

#include <filesystem>
#include <fstream>

namespace tw::PastedFile {

namespace {

/// In a folder that only the user can enter, so the file has the mode of any new file of the user, and takes it along.
std::string write(Scratch::Place const &place, std::string const &name, std::string const &bytes)
{
    auto folder = Scratch::newFolder("paste", place);
    auto const path = folder + "/" + name;
    std::ofstream file(path, std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (!file)
        throw FileOperationError::Failed("write", path, "there is no room for it");
    return folder;
}

void removeLater(EngineRuntime &engine, std::string folder)
{
    engine.workers().executor(WorkPriority::background)->post([folder = std::move(folder)] {
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    });
}

} // namespace

Task<ScratchFile> make(EngineRuntime *engine, Scratch::Place place, std::string name, std::string bytes)
{
    auto folder = co_await engine->workers().run(WorkPriority::interactive,
                                                 [place = std::move(place), name = std::move(name),
                                                  bytes = std::move(bytes)] { return write(place, name, bytes); });
    std::shared_ptr<void> life(nullptr, [engine, folder](void *) { removeLater(*engine, folder); });
    co_return ScratchFile{.folder = std::move(folder), .life = std::move(life)};
}

} // namespace tw::PastedFile
