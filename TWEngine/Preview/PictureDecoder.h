#pragma once

#include "TWEngine/Preview/DecoderProcess.h"

#include <expected>
#include <functional>
#include <memory>
#include <string>

namespace tw {

/// Decodes pictures, each in a process of its own: a file may come from anywhere, and what reads it may crash, hang or
/// be taken over. The process has the file as its input and nothing else.
///
/// Loading a decoder's libraries takes longer than decoding most pictures. A spare process has loaded them before there
/// is a file: it is started while the first picture is decoded, and a new one with each picture that takes it.
///
/// Threads: one executor, that of the tasks.
/// Lifetime: shared; the engine outlives it. The spare ends with it.
class PictureDecoder : public std::enable_shared_from_this<PictureDecoder> {
public:
    using Result = std::expected<Picture, PictureFailure>;
    using ShowDraft = std::function<void(Picture draft)>;

    enum class Spare { none, kept };

    PictureDecoder(EngineRuntime &runtime, Spare keeping, std::string program = DecoderProcess::installedProgram())
        : engine(runtime), spares(keeping), path(std::move(program))
    {
    }

    /// Decodes `file`, which must be a regular one, from its beginning. A picture that fits into the room keeps its
    /// size, unless it moves and has too many frames for that. `showDraft` gets the draft, if one was asked for and is
    /// sooner there than the picture.
    ///
    /// A process that takes too long ends itself. Cancellation: a stop ends it at once.
    Task<Result> decode(FileDescriptor file, PictureRequest request, ShowDraft showDraft = {});

    /// No picture is expected any more. A task that has been stopped before makes no new spare.
    void endSpare() { spare.reset(); }

    bool hasSpare() const noexcept { return spare != nullptr; }

private:
    static Task<Result> perform(std::shared_ptr<PictureDecoder> self, FileDescriptor file, PictureRequest request,
                                ShowDraft showDraft);
    static Task<void> renewSpare(std::shared_ptr<PictureDecoder> self);

    // Constant after construction.
    EngineRuntime &engine;
    Spare const spares;
    std::string const path;

    std::shared_ptr<DecoderProcess> spare; ///< null: there is none
};

} // namespace tw
