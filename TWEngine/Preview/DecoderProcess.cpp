#include "TWEngine/Preview/DecoderProcess.h"

#include "TWEngine/Runtime/EngineRuntime.h"

#include <filesystem>

namespace tw {

namespace {

std::shared_ptr<DecoderProcess> startHere(IoThread &io, std::string const &program)
{
    auto handover = FileHandover::create();
    if (!handover)
        return nullptr;
    auto child = ChildProcess::start(io, {.program = program,
                                          .input = DescriptorEnd{handover->childEnd().get()},
                                          .output = PipeEnd{},
                                          // Of its own, so that a stop also reaches the program that it runs.
                                          .session = ChildCommand::Session::own});
    handover->closeChildEnd();
    return child ? std::make_shared<DecoderProcess>(*std::move(child), *std::move(handover)) : nullptr;
}

} // namespace

std::string const &DecoderProcess::installedProgram()
{
    static std::string const path = [] {
        std::error_code unknown;
        auto const own = std::filesystem::read_symlink("/proc/self/exe", unknown);
        return unknown ? std::string() : (own.parent_path() / TARNWICK_DECODER).lexically_normal().string();
    }();
    return path;
}

Task<std::shared_ptr<DecoderProcess>> DecoderProcess::start(EngineRuntime &engine, std::string program)
{
    return engine.workers().run(WorkPriority::interactive,
                                [&io = engine.io(), program = std::move(program)] { return startHere(io, program); });
}

} // namespace tw
