#include "TWEngine/Preview/PictureDecoder.h"

#include "TWEngine/Runtime/ChildProcess.h"
#include "TWEngine/Runtime/EngineRuntime.h"

#include <csignal>
#include <filesystem>

namespace tw::PictureDecoder {

namespace {

using Started = std::expected<std::shared_ptr<ChildProcess>, SpawnError>;

/// Empty if this program's own path is not known.
std::string const &program()
{
    static std::string const path = [] {
        std::error_code unknown;
        auto const own = std::filesystem::read_symlink("/proc/self/exe", unknown);
        return unknown ? std::string() : (own.parent_path() / TARNWICK_DECODER).lexically_normal().string();
    }();
    return path;
}

ChildCommand commandFor(FileDescriptor const &file, std::string const &format, PictureBounds room)
{
    return {.program = program(),
            .arguments = {format, std::to_string(room.width), std::to_string(room.height), std::to_string(room.frames)},
            .input = DescriptorEnd{file.get()},
            .output = PipeEnd{},
            // Of its own, so that a stop also reaches the program that it runs.
            .session = ChildCommand::Session::own};
}

Task<Result> read(std::shared_ptr<ChildProcess> child, PictureBounds room)
{
    PictureAnswer answer(room);
    std::string buffer;
    for (;;) {
        buffer = co_await child->read(ChildOutput::standard, std::move(buffer));
        if (buffer.empty())
            break;
        if (!answer.take(buffer)) {
            child->kill();
            co_return std::unexpected(PictureFailure::crashed);
        }
    }
    auto const status = co_await child->wait();
    auto const wasKilled = status.cause == ExitStatus::Cause::killed;
    if (wasKilled && (status.number == SIGALRM || status.number == SIGXCPU))
        co_return std::unexpected(PictureFailure::tooSlow);
    auto result = std::move(answer).finish();
    co_return result;
}

Task<Result> perform(EngineRuntime *engine, std::shared_ptr<FileDescriptor> file, std::string format,
                     PictureBounds room)
{
    auto command = commandFor(*file, format, room);
    auto started = co_await engine->workers().run(
        WorkPriority::interactive, [engine, file, command] { return ChildProcess::start(engine->io(), command); });
    file.reset();
    if (!started)
        co_return std::unexpected(PictureFailure::crashed);
    auto result = co_await read(*std::move(started), room);
    co_return result;
}

} // namespace

Task<Result> decode(EngineRuntime &engine, FileDescriptor file, std::string format, PictureBounds room)
{
    return perform(&engine, std::make_shared<FileDescriptor>(std::move(file)), std::move(format), room);
}

} // namespace tw::PictureDecoder
