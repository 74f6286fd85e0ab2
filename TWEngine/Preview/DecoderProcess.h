#pragma once

#include "TWCore/Async/Task.h"
#include "TWEngine/Preview/PictureRequest.h"
#include "TWEngine/Runtime/ChildProcess.h"
#include "TWEngine/Runtime/FileHandover.h"

#include <memory>
#include <string>

namespace tw {

class EngineRuntime;

/// A process that decodes one picture and ends; Tarnwick/App/Decoder says what it may do.
///
/// Threads: one at a time.
/// Lifetime: the engine outlives it. Destroying it ends the process, which also ends by itself when this program ends
/// before there was a request.
class DecoderProcess {
public:
    /// That of this program. Empty if this program's own path is not known.
    static std::string const &installedProgram();

    /// Starts one, which loads what it needs and then waits for its request. Null if it cannot be started.
    static Task<std::shared_ptr<DecoderProcess>> start(EngineRuntime &engine, std::string program);

    DecoderProcess(std::shared_ptr<ChildProcess> started, FileHandover socket)
        : child(std::move(started)), handover(std::move(socket))
    {
    }

    /// To be called once. False: the process has ended, and another one has to be asked.
    bool ask(PictureRequest const &request, FileDescriptor const &file) const
    {
        return handover.send(request.line(), file);
    }

    /// Its answer comes through the standard output.
    ChildProcess const &process() const noexcept { return *child; }

private:
    std::shared_ptr<ChildProcess> const child;
    FileHandover const handover;
};

} // namespace tw
